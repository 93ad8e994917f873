// `orvan` where printers answer: by a scheduler's queue, by a command filter, and from files.
#include "Tests/Orvan/Program.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/Terminal.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace orvan {
namespace {

using Json = nlohmann::json;

constexpr const char* kPapersCommand = "com.orvan.CustomPaperTypes";
constexpr const char* kStatusCommand = "com.orvan.DeviceStatus";

// A line of a shell, in which $ORVAN is the program.
ProgramEnd shell(const std::string& line) {
    return runProgram({"/bin/sh", "-c", line}, {{"ORVAN", ORVAN_PROGRAM}});
}

class QueryCommands : public CommandQueue {
protected:
    void SetUp() override {
        // Where the scheduler's user can read.
        std::filesystem::permissions(answers_.path(), std::filesystem::perms(0755));
        for (const auto& answer : std::filesystem::directory_iterator(ORVAN_ANSWERS_FOLDER))
            std::filesystem::copy(answer.path(), answers_.path());
        failing_ = answers_.write("failing-filter", "#!/bin/sh\nexit 1\n");
        std::filesystem::permissions(failing_, std::filesystem::perms(0755));
        CommandQueue::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        // The scheduler looks for a filter in its folder; who runs it himself needs its path.
        addQueue("Queue", kFilter.filename());
        addQueue("Filter", kFilter);
    }

    SchedulerFolderOptions folderOptions() const override {
        SchedulerFolderOptions options;
        options.extraFilters = {kFilter, failing_};
        options.programEnvironment = {{"ORVAN_ANSWERS", answers_.path()}};
        return options;
    }

    void addQueue(const std::string& name, const std::string& filter) const {
        DerivedPPD ppd;
        ppd.append("*cupsCommands: \"" + std::string(kPapersCommand) + " " + kStatusCommand + "\"\n" +
                   "*cupsFilter2: \"application/vnd.cups-command application/vnd.cups-raw 0 " + filter +
                   "\"\n");
        ASSERT_EQ(
            system_->addQueue({.name = name, .ppdFile = ppd.file(), .deviceURI = "socket://127.0.0.1:9"}),
            std::nullopt);
    }

    ProgramEnd ask(const Words& arguments) const {
        return CommandQueue::orvan(arguments, {{"ORVAN_ANSWERS", answers_.path()}});
    }

    Json answer(const Words& arguments) const {
        const ProgramEnd end = ask(arguments);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        EXPECT_EQ(end.errors, "");
        return Json::parse(end.output, nullptr, false);
    }

    const std::filesystem::path kFilter = ORVAN_ANSWER_FILTER;
    TempFolder answers_;
    std::filesystem::path failing_;
};

TEST_F(QueryCommands, ShowWhatThePrinterAnswersByBothWays) {
    const std::string papers = "Letterhead Zürich\t1\tPlain\nCertificates (ivory, 160 g)\t17\tCardstock\n"
                               "Delivery notes\t4\tRecycled\n";
    for (const std::string release : {"10.9.0", "10.6.8"}) {
        SCOPED_TRACE(release);
        const std::string queue = release == "10.9.0" ? "Queue" : "Filter";
        Words where{"-q", queue};
        if (queue == "Filter") where.insert(where.end(), {"--release", release}); // the other is the default
        const auto with = [&where](Words words) { return joined(std::move(words), where); };
        EXPECT_EQ(ask(with({"papers"})).output, papers);
        EXPECT_EQ(ask(with({"status"})).output,
            "Trays\n"
            "  Tray 1         90 %    Plain, A4\n"
            "  Tray 2        unknown  paper unknown, size unknown\n"
            "Supplies\n"
            "  Cyan toner     40 %\n"
            "  Black toner   100 %\n"
            "Custom papers\n"
            "  Letterhead Zürich  type 1, base class Plain\n"
            "  Certificates (ivory, 160 g)  type 17, base class Cardstock\n"
            "  Delivery notes  type 4, base class Recycled\n");
        const Json status = answer(with({"status", "--json"}));
        EXPECT_EQ(status.size(), 10U);
        EXPECT_TRUE(status["answeredAt"].is_null()); // this filter does not tell
        EXPECT_EQ(status["schemaVersion"], 2);
        EXPECT_EQ(status["fresh"], true);
        EXPECT_EQ(status["commands"][1],
            Json::parse(R"({"command": "com.orvan.DeviceStatus", "state": "now", "answeredAt": null,
                "problem": "", "code": ""})"));
        EXPECT_EQ(status["queue"], queue);
        EXPECT_EQ(status["release"], release);
        ASSERT_EQ(status["responses"].size(), 2U);
        EXPECT_EQ(status["responses"][0]["customPaperTypes"][2],
            Json::parse(R"({"name": "Delivery notes", "type": "4", "baseClass": "Recycled"})"));
        EXPECT_EQ(status["responses"][1]["input-trays-col"][1],
            Json::parse(R"({"tray-name": "Tray2", "tray-level": -1})"));
        const Json panel = answer(with({"panel", "--json", "--set", "MediaType=CustomType17"}));
        EXPECT_EQ(panel["rows"][0]["items"].size(), 16U);
        EXPECT_EQ(panel["rows"][0]["items"][0],
            Json::parse(R"({"title": "Letterhead Zürich", "keyword": "CustomType1"})"));
        EXPECT_EQ(panel["rows"][0]["selected"], 1);
        EXPECT_EQ(panel["summary"]["Paper Type"], "Certificates (ivory, 160 g)");
    }
}

TEST_F(QueryCommands, KeepControlCharactersFromTheTerminal) {
    const std::string name = "a\tb\nc\033[2J\u202Ed\u009Be\177é";
    answers_.write(
        kPapersCommand, "{customPaperTypes = ({name = \"" + name + "\"; type = 1; }); \"k\n\" = 1; }");
    std::filesystem::remove(answers_.path() / kStatusCommand);
    const Words where{"-q", "Filter", "--release", "10.6.8"};
    const auto with = [&where](Words words) { return joined(std::move(words), where); };
    EXPECT_EQ(ask(with({"papers"})).output, "a b c [2J d e é\t1\t\n");
    EXPECT_EQ(ask(with({"status"})).output,
        "Custom papers\n  a b c [2J d e é  type 1, base class unknown\nk \n  \"1\"\n");
    const ProgramEnd panel = ask(with({"panel", "--set", "MediaType=CustomType1"}));
    EXPECT_NE(panel.output.find("Paper Type: [a b c [2J d e é]  of 14\n"), std::string::npos) << panel.output;
    EXPECT_NE(panel.output.find("Paper Type: a b c [2J d e é\n"), std::string::npos) << panel.output;
    const Json papers = answer(with({"papers", "--json"}));
    EXPECT_EQ(
        papers, (Json{{"schemaVersion", 2}, {"queue", "Filter"}, {"fresh", true}, {"answeredAt", nullptr},
                    {"problem", ""}, {"code", ""},
                    {"papers", {{{"name", name}, {"type", "1"}, {"baseClass", ""}, {"inDriver", true}}}}}));
}

TEST_F(QueryCommands, SayWhyThereIsNoAnswer) {
    addQueue("Failing", "failing-filter");
    addQueue("Held", kFilter.filename());
    addQueue("Silent", kFilter.filename());
    ASSERT_EQ(system_->holdNewJobs("Held"), std::nullopt);
    ASSERT_EQ(system_->addQueue({.name = "Mute", .ppdFile = DerivedPPD().file()}), std::nullopt);
    addQueue("Gone", answers_.path() / "no-such-filter");
    const ProgramEnd stopped = ask({"status", "-q", "Failing"});
    expectRefusal(stopped, "command filter failed");
    std::vector<PrintJob> jobs;
    ASSERT_EQ(system_->jobs("Failing", &jobs), std::nullopt);
    ASSERT_EQ(jobs.size(), 1U);
    EXPECT_EQ(jobs.front().state, IPP_JSTATE_CANCELED); // it is in nobody's way

    answers_.write(kPapersCommand, "<plist><dict>");
    answers_.write(kStatusCommand, "bplist00");
    const std::pair<Words, const char*> cases[] = {
        {{"papers", "-q", "Held"}, "the queue holds new jobs"},
        {{"status", "-q", "Nowhere"}, "Nowhere"},
        {{"status", "-q", "Mute"}, "the queue's PPD lists no commands (\"cupsCommands\")"},
        {{"papers", "-q", "Queue"}, "what the printer's command filter answered cannot be decoded"},
        {{"papers", "-q", "Filter", "--release", "10.6.8"}, "answered nothing that can be decoded"},
        {{"status", "-q", "Gone", "--release", "10.6.8"}, "names no command filter"},
        {{"status", "-q", "Queue", "--release", "10.10"}, "on release 10.10 and later"},
    };
    for (const auto& [arguments, words] : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        expectRefusal(ask(arguments), words);
    }
    std::filesystem::remove(answers_.path() / kPapersCommand);
    std::filesystem::remove(answers_.path() / kStatusCommand);
    expectRefusal(ask({"papers", "-q", "Silent"}), "answered nothing; the scheduler's error log says why");
}

TEST(FileCommands, AnswerInWholeJSONWhateverBytesArrive) {
    const ProgramEnd end = orvan({"ping", "--json", "no\377host"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(Json::parse(end.output, nullptr, false)["host"], "no\uFFFDhost") << end.output;
}

TEST(FileCommands, CarryBlocksInChunks) {
    const TempFolder folder;
    std::mt19937 random; // always the same
    const std::string in = folder.path() / "in";
    const std::string name(36, 'N');
    const std::string roundTrip = "\"$ORVAN\" chunks encode " + name + " <" + in +
                                  " | \"$ORVAN\" chunks decode " + name + " | cmp - " + in;
    // Random bytes do not get smaller: with 147 of them the stream fills its first piece.
    for (const std::size_t size : {0U, 147U, 5000U, 300000U}) {
        SCOPED_TRACE(size);
        std::string block(size, '\0');
        std::ranges::generate(block, [&random] { return static_cast<char>(random()); });
        folder.write("in", block);
        const ProgramEnd piped = shell(roundTrip);
        EXPECT_EQ(piped.exitCode, 0) << piped.output << piped.errors;
        if (size > 5000) continue; // more than a PPD takes
        const ProgramEnd lines = shell("\"$ORVAN\" chunks encode N <" + in);
        DerivedPPD ppd;
        ppd.addEntries(lines.output);
        const ProgramEnd read = orvan({"chunks", "decode", "N", "--ppd", ppd.file()});
        EXPECT_EQ(read.exitCode, 0) << read.errors;
        EXPECT_TRUE(read.output == block);
        expectRefusal(orvan({"chunks", "decode", "M", "--ppd", ppd.file()}), "there are no chunks of M in ");
    }
    expectRefusal(shell("head -c 16777217 /dev/zero | \"$ORVAN\" chunks encode N"), "larger than 16 MiB");
    expectRefusal(orvan({"chunks", "decode", "N", "--ppd", "/no/such.ppd"}), "/no/such.ppd: ");
}

TEST(FileCommands, ConvertPropertyLists) {
    const TempFolder folder;
    const std::string text =
        folder.write("text", "{ text = \"a b\"; data = <00ff>; list = (1, (), {}); \"Ü\" = \"é\"; }");
    const std::string xml = folder.write("xml",
        "<plist version='1.0'><dict><key>n</key><integer>-7</integer><key>t</key><true/>"
        "<key>d</key><date>2013-07-09T10:00:00Z</date><key>r</key><real>1.5</real></dict></plist>");
    const std::pair<std::string, Json> cases[] = {
        {text, Json::parse(R"({"text": "a b", "data": {"data": "AP8="}, "list": ["1", [], {}], "Ü": "é"})")},
        {xml, Json::parse(R"({"n": -7, "t": true, "d": {"date": "2013-07-09T10:00:00Z"}, "r": 1.5})")},
    };
    for (const auto& [file, expected] : cases) {
        SCOPED_TRACE(file);
        EXPECT_EQ(Json::parse(orvan({"plist", file}).output, nullptr, false), expected);
        EXPECT_EQ(orvan({"plist", file}).output, orvan({"plist", "--json", file}).output);
        for (const auto& [form, start] : {std::pair{"--xml", "<?xml"}, std::pair{"--binary", "bplist00"}}) {
            const ProgramEnd end = orvan({"plist", form, file});
            EXPECT_TRUE(end.output.starts_with(start)) << end.output << end.errors;
            const std::string again = folder.write("again", end.output);
            EXPECT_EQ(Json::parse(orvan({"plist", again}).output, nullptr, false), expected);
        }
    }
    const std::string broken = folder.write("broken", "{ a = b");
    expectRefusal(orvan({"plist", broken}), broken + " is no property list: ");
    expectRefusal(orvan({"plist", folder.path() / "none"}), "none: No such file");
    expectRefusal(orvan({"plist", folder.path()}), "Is a directory");
}

TEST(FileCommands, ShowThePanelWithAnswersFromFiles) {
    const TempFolder folder;
    const std::string one = folder.write("one", "{customPaperTypes=({name=One;type=1;});}");
    const std::string two = folder.write("two", "{customPaperTypes=({name=Two;type=22;});}");
    const Words panel{"panel", "--json", "--ppd", ORVAN_DRIVER_PPD};
    const auto with = [&panel](const Words& more) { return orvan(joined(panel, more)); };
    const auto customPapers = [&with](const Words& more) {
        const Json answer = Json::parse(with(more).output, nullptr, false);
        std::string papers;
        for (const Json& item : answer["rows"][0]["items"])
            if (const std::string type = item["keyword"]; type.starts_with("CustomType"))
                papers += item["title"].get<std::string>() + " " + type + " ";
        return papers;
    };
    EXPECT_EQ(customPapers({}), "");
    EXPECT_EQ(customPapers({"--response", one}), "One CustomType1 ");
    EXPECT_EQ(customPapers({"--response", two, "--response", one}),
        "Two (not known to this queue’s driver) CustomType22 One CustomType1 ");
    EXPECT_EQ(customPapers({"--response",
                  folder.write("umlaut", "{customPaperTypes=({name=\"B\u00FCtten\";type=1;});}")}),
        "B\u00FCtten CustomType1 ");
    EXPECT_TRUE(
        customPapers({"--response", one, "--release", "10.10"}).starts_with("Custom Type 1 CustomType1 "));
    expectRefusal(with({"--response", folder.path() / "none"}), "none: No such file");
    expectRefusal(with({"--response", folder.write("broken", "(")}), "broken is no property list: ");
    expectRefusal(with({"--response", one, "--set", "MediaType=CustomType2"}), "no choice CustomType2");
    // Labels and edge-to-edge printing contradict each other, so the second pick takes the first one back.
    const ProgramEnd undone = with({"--set", "OVNEdgeToEdge=On", "--set", "MediaType=Labels"});
    EXPECT_EQ(undone.exitCode, 1);
    EXPECT_EQ(undone.errors,
        "orvan: Edge to Edge changed from “On” to “Off”.\n"
        "orvan: OVNEdgeToEdge=On was undone by another pick: it is OVNEdgeToEdge=Off now\n");
}

// The program's own files are where it was built or installed, whatever lies on the way there.
TEST(FileCommands, TakeThePlugInFromNowhereElse) {
    namespace fs = std::filesystem;
    const TempFolder folder;
    const fs::path build = fs::path(ORVAN_PROGRAM).parent_path().parent_path();
    for (const char* const decoy : {"lib", "a/lib", "a/b/bin/lib", "cwd/lib"}) {
        fs::create_directories(folder.path() / decoy);
        fs::copy(build / "lib/orvan", folder.path() / decoy / "orvan", fs::copy_options::recursive);
    }
    fs::create_directories(folder.path() / "a/b/bin");
    const fs::path program = folder.path() / "a/b/bin/orvan";
    fs::copy(ORVAN_PROGRAM, program);
    const std::string there = "cd " + (folder.path() / "cwd").string() + " && exec -a lib/orvan/x.so " +
                              program.string() + " panel --ppd " + ORVAN_DRIVER_PPD;
    const ProgramEnd end = runProgram({"/bin/bash", "-c", there});
    expectRefusal(end, "cannot open the bundle: " + (folder.path() / "a/b/lib/orvan").string());
}

TEST(FileCommands, SpeakTheTerminalsEncoding) {
    const TempFolder folder;
    const std::string answer = folder.write("one", "{customPaperTypes=({name=\"B\u00FCtten\";type=1;});}");
    const Words command{ORVAN_PROGRAM, "panel", "--ppd", ORVAN_DRIVER_PPD, "--response", answer, "--set",
        "MediaType=CustomType1"};
    const std::pair<const char*, const char*> cases[] = {{"C", "[B?tten]"}, {"C.UTF-8", "[B\u00FCtten]"}};
    for (const auto& [locale, shown] : cases) {
        Terminal terminal(command, {{"LC_ALL", locale}});
        const std::string text = terminal.shownUntilEnd();
        EXPECT_NE(text.find(shown), std::string::npos) << text;
    }
    const ProgramEnd piped = runProgram(command, {{"LC_ALL", "C"}});
    EXPECT_NE(piped.output.find("[B\u00FCtten]"), std::string::npos) << piped.output;
}

} // namespace
} // namespace orvan
