// What `orvan` makes of its arguments: of wrong ones, of numbers, and of names of files.
#include "Tests/Orvan/Program.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/ScriptedServer.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <filesystem>
#include <string>
#include <tuple>

namespace orvan {
namespace {

// A line of a shell, in which $ORVAN is the program and $FILES the folder.
ProgramEnd shell(const std::string& line, const TempFolder& files, const Environment& more = {}) {
    Environment environment{{"ORVAN", ORVAN_PROGRAM}, {"FILES", files.path()}, {"LC_ALL", "C.UTF-8"},
        {"ORVAN_SYSTEM_RELEASE", "10.10.0"}};
    for (const auto& [name, value] : more)
        environment[name] = value;
    return runProgram({"/bin/sh", "-c", line}, environment);
}

TEST(Arguments, ThatAreWrongAreNamedWithTheHelpToRead) {
    const std::tuple<Words, const char*, const char*> cases[] = {
        {{}, "a command is missing: panel, check, status, ", "orvan"},
        {{"frobnicate"}, "there is no command frobnicate", "orvan"},
        {{"--bogus"}, "there is no option --bogus", "orvan"},
        {{"--json", "status"}, "there is no option --json", "orvan"},
        {{"chunks"}, "a command is missing: encode or decode", "orvan chunks"},
        {{"chunks", "frobnicate"}, "there is no command frobnicate", "orvan chunks"},
        {{"chunks", "decode"}, "NAME is missing", "orvan chunks decode"},
        {{"status", "--bogus=3"}, "there is no option --bogus", "orvan status"},
        {{"status", "-z"}, "there is no option -z", "orvan status"},
        {{"status", "--queue"}, "--queue needs a value: --queue QUEUE", "orvan status"},
        {{"papers", "-q"}, "-q needs a value: -q QUEUE", "orvan papers"},
        {{"papers", "-q", "a", "--queue", "b"}, "--queue was given more than once", "orvan papers"},
        {{"status", "--json=yes"}, "--json takes no value", "orvan status"},
        {{"status", "Office"}, "\"Office\" is one argument too many", "orvan status"},
        {{"check", "a.ppd", "status"}, "\"status\" is one argument too many", "orvan check"},
        {{"status", "--all", "-q", "a"}, "--queue and --all exclude each other", "orvan status"},
        {{"panel", "-q", "a", "--ppd", "b"}, "--ppd and --queue exclude each other", "orvan panel"},
        {{"url", "-q", "a", "--device-uri", "b:/"}, "--queue and --device-uri exclude", "orvan url"},
        {{"plist", "--binary", "--xml", "a"}, "--xml and --binary exclude each other", "orvan plist"},
        {{"ticket", "--plist", "a", "--json"}, "--json and --plist exclude each other", "orvan ticket"},
        {{"ticket"}, "FILE is missing", "orvan ticket"},
        {{"ticket", "--snmp", "a", "b"}, "--snmp: \"a\" has not the form OID=VALUE", "orvan ticket"},
        {{"panel", "--ppd=", "--json"}, "--ppd: the name of a file is missing", "orvan panel"},
        {{"panel", "--set", "MediaType"}, "--set: \"MediaType\" is not KEYWORD=CHOICE", "orvan panel"},
        {{"panel", "--set", "MediaType="}, "--set: \"MediaType=\" is not KEYWORD=CHOICE", "orvan panel"},
        {{"panel", "--release", "ten"}, "--release: \"ten\" is not a release", "orvan panel"},
        {{"status", "-H", ""}, "--server: a host is missing", "orvan status"},
        {{"status", "--watch", "0"}, "--watch: \"0\" is not a number above 0", "orvan status"},
        {{"status", "--timeout", "2,5"}, "--timeout: \"2,5\" is not a number", "orvan status"},
        {{"status", "--timeout", "inf"}, "--timeout: \"inf\" is not a number", "orvan status"},
        {{"doctor", "--timeout", "--json"}, "--timeout: \"--json\" is not a number", "orvan doctor"},
        {{"ping", "-c", "0", "localhost"}, "--count: \"0\" is not a whole number", "orvan ping"},
        {{"fetch", "http://a@b/"}, "URL: a user or password in the URL", "orvan fetch"},
    };
    for (const auto& [arguments, words, command] : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const ProgramEnd end = orvan(arguments);
        expectRefusal(end, std::string("orvan: ") + words, 2);
        const std::string pointer = std::string(" (\"") + command + " --help\" says more)\n";
        EXPECT_TRUE(end.errors.ends_with(pointer)) << end.errors;
    }
}

TEST(Arguments, StandInAnyOrder) {
    const TempFolder files;
    const std::string document = files.write("status.xml", "<status/>");
    const Words orders[] = {{"--snmp", "1.2=3", document, "--json"}, {"--json", "--snmp", "1.2=3", document},
        {document, "--json", "--snmp=1.2=3"},
        {"--snmp", "1.2=3", "--snmp", "1.3=4", "--json", "--", document}};
    for (const Words& order : orders) {
        SCOPED_TRACE(testing::PrintToString(order));
        expectEnd(orvan(joined({"ticket"}, order)), 0, "{\n  \"schemaVersion\": 1\n}\n");
    }
}

// In German a comma stands where programs have the point.
TEST(Arguments, HaveTheNumbersOfNoLocale) {
    const TempFolder files;
    const ProgramEnd made = runProgram(
        {"/bin/sh", "-c", "localedef -i de_DE -f UTF-8 " + (files.path() / "de_DE.UTF-8").string()});
    const Environment german{{"LOCPATH", files.path()}, {"LC_ALL", "de_DE.UTF-8"}};
    if (runProgram({"/bin/sh", "-c", "locale decimal_point"}, german).output != ",\n")
        GTEST_SKIP() << "no German locale, and none can be made (localedef): " << made.errors;
    files.write("real", "<plist version='1.0'><array><real>1.5</real></array></plist>");
    EXPECT_EQ(shell("\"$ORVAN\" plist $FILES/real", files, german).output, "[\n  1.5\n]\n");
    const ProgramEnd xml = shell("\"$ORVAN\" plist --xml $FILES/real", files, german);
    EXPECT_NE(xml.output.find("<real>1.5</real>"), std::string::npos) << xml.output;

    const ScriptedServer silent({{"/", "", ScriptedAnswer::Then::silence}});
    const std::string server = "127.0.0.1:" + std::to_string(silent.port());
    const auto start = std::chrono::steady_clock::now();
    const ProgramEnd end = shell("\"$ORVAN\" papers -q a --timeout 1.5 -H " + server, files, german);
    const auto time = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(end.exitCode, 1) << end.errors;
    EXPECT_NE(end.errors.find("does not answer"), std::string::npos) << end.errors;
    EXPECT_GE(time, std::chrono::milliseconds(1500));
}

TEST(Arguments, NameStandardInputAndPipes) {
    const TempFolder files;
    files.write("one", "{customPaperTypes=({name=One;type=1;});}");
    files.write("status.xml", "<status/>");
    DerivedPPD ppd;
    ppd.addEntries("PPD: N0000=\"\"\n");
    std::filesystem::copy(ppd.file(), files.path() / "a.ppd");
    const std::pair<const char*, const char*> commands[] = {
        {"plist", "one"},
        {"ticket --json", "status.xml"},
        {"check", "a.ppd"},
        {"panel --json --ppd", "a.ppd"},
        {"chunks decode N --ppd", "a.ppd"},
        {"panel --release 10.9 --json --ppd $FILES/a.ppd --response", "one"},
    };
    const char* const ways[] = {
        R"(run - <"$FILES/$FILE")",
        R"(cat "$FILES/$FILE" | run -)",
        R"(cat "$FILES/$FILE" | run /dev/stdin)",
        R"(run /dev/stdin <"$FILES/$FILE")",
        R"(rm -f $FILES/pipe; mkfifo $FILES/pipe; cat "$FILES/$FILE" >$FILES/pipe & until [ -p $FILES/pipe ]
           do :; done; run $FILES/pipe; code=$?; wait; exit $code)",
    };
    for (const auto& [command, file] : commands) {
        SCOPED_TRACE(command);
        const Environment variables{{"COMMAND", command}, {"FILE", file}};
        const auto run = [&](const char* way) {
            return shell(
                std::string(R"(run() { eval "\"\$ORVAN\" $COMMAND \"\$1\""; }; )") + way, files, variables);
        };
        const ProgramEnd whole = run(R"(run "$FILES/$FILE")");
        EXPECT_EQ(whole.exitCode, 0) << whole.errors;
        for (const char* const way : ways)
            expectEnd(run(way), 0, whole.output);
        expectRefusal(run("echo '(' | run -"), "standard input");
        expectRefusal(run("run - <$FILES"), "standard input");
    }
}

} // namespace
} // namespace orvan
