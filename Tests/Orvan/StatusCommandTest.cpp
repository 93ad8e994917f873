// `orvan status` about many printers, again and again, on a terminal, and interrupted.
#include "Tests/Orvan/Program.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/SimulatedPrinter.h"
#include "Tests/Support/Terminal.h"

#include <nlohmann/json.hpp>

#include <string>
#include <tuple>

namespace orvan {
namespace {

using Json = nlohmann::json;

class StatusCommand : public CommandQueue {
protected:
    // The queue's jobs in a state.
    long count(const std::string& queue, ipp_jstate_t state) const {
        std::vector<PrintJob> jobs;
        EXPECT_EQ(system_->jobs(queue, &jobs), std::nullopt);
        return std::ranges::count(jobs, state, &PrintJob::state);
    }

    // A line of a shell in which $ORVAN is the program, on a terminal of its own. Its gated queues wait until
    // the terminal has shown `waiting`; "" for no wait.
    std::string onTerminal(
        const std::string& line, const Environment& variables, const std::string& waiting) const {
        if (!waiting.empty()) shutGate();
        Environment all = variables;
        all.insert({{"ORVAN", ORVAN_PROGRAM}, {"TERM", "xterm"}, {"NO_COLOR", std::nullopt}});
        all.merge(environment());
        Terminal terminal({"/bin/sh", "-c", line}, all);
        const std::string shown = waiting.empty() ? "" : terminal.shownUntil(waiting);
        openGate();
        return shown + terminal.shownUntilEnd();
    }
};

TEST_F(StatusCommand, AsksAllPrintersAtOnce) {
    const SimulatedPrinter printer;
    const SimulatedPrinter silent({"--misbehave", "silent"});
    for (const char* const name : {"Office1", "Office2"})
        addGatedQueue(name, printer);
    addGatedQueue("Silent", silent);
    DerivedPPD other;
    other.replace("*Manufacturer: \"Orvan\"", "*Manufacturer: \"Other\"");
    ASSERT_EQ(system_->addQueue({.name = "Other", .ppdFile = other.file()}), std::nullopt);

    const TempFolder folder;
    const std::string all = "Waiting for printer Office1 and 2 more";
    const std::string shown = onTerminal("$ORVAN status --all --json --timeout 100 >$OUT; echo exit $?",
        {{"OUT", folder.path() / "out"}}, all);
    EXPECT_NE(shown.find(all), std::string::npos) << shown;
    EXPECT_NE(shown.find("orvan: printer Silent did not answer: "), std::string::npos) << shown;
    EXPECT_TRUE(shown.ends_with("exit 1\r\n")) << shown;
    const Json answer = Json::parse(contents(folder.path() / "out"), nullptr, false);
    ASSERT_EQ(answer["printers"].size(), 3U) << answer;
    for (const Json& one : answer["printers"]) // the silent one's agent answers
        EXPECT_EQ(one["responses"].size(), one["queue"] == "Silent" ? 1U : 6U) << one;
    EXPECT_EQ(answer["printers"][0]["queue"], "Office1");
    EXPECT_NE(answer["printers"][2]["problem"], "");

    const std::string text = orvan({"status", "--all", "-v"}).output;
    EXPECT_TRUE(text.starts_with("Office1, answers of ")) << text;
    EXPECT_NE(text.find("\n  Trays\n    Tray 1         90 %  "), std::string::npos) << text;
    EXPECT_NE(text.find("\nOffice2, answers of "), std::string::npos) << text;
    EXPECT_EQ(text.find("\n\n"), std::string::npos) << text;
}

TEST_F(StatusCommand, TakesItsJobBackWhenInterrupted) {
    const TempFolder folder;
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    const std::string filter = folder.write("filter", "#!/bin/sh\nexec sleep 100000\n");
    std::filesystem::permissions(filter, std::filesystem::perms(0755));
    addQueue("Silent", filter, "/status.xml");
    long round = 0;
    for (const char* const command : {"status", "papers", "panel", "doctor"}) {
        SCOPED_TRACE(command);
        BackgroundProcess program({ORVAN_PROGRAM, command, "-q", "Silent", "--timeout", "100"}, [this] {
            changeEnvironment(environment());
            static_cast<void>(!std::freopen("/dev/null", "w", stdout));
            static_cast<void>(!std::freopen("/dev/null", "w", stderr));
        });
        EXPECT_TRUE(eventually([this] { return count("Silent", IPP_JSTATE_PROCESSING) > 0; }));
        EXPECT_EQ(program.end(SIGINT), 128 + SIGINT);
        EXPECT_EQ(count("Silent", IPP_JSTATE_PROCESSING), 0);
        EXPECT_EQ(count("Silent", IPP_JSTATE_CANCELED), ++round);
    }
}

TEST_F(StatusCommand, DecoratesForATerminalAlone) {
    const SimulatedPrinter printer;
    addGatedQueue("Office", printer);
    const std::string line = "$ORVAN status -q Office --timeout 100";
    const std::string bar = "[\033[33m##\033[m------------------] \033[33m 10 %\033[m";
    const std::string progress = "\rWaiting for printer Office (";
    const struct {
        std::string line;
        Environment variables;
        bool hasBars;
        bool hasProgress;
    } cases[] = {
        {line, {}, true, true},
        {line, {{"NO_COLOR", "1"}}, false, true},
        {line, {{"TERM", "dumb"}}, false, false},
        {line + " 2>/dev/null", {}, true, false},
        {line + " | cat", {}, false, true},
    };
    for (const auto& [typed, variables, hasBars, hasProgress] : cases) {
        const std::string said = onTerminal(typed, variables, hasProgress ? progress : "");
        EXPECT_EQ(said.find(bar) != std::string::npos, hasBars) << said;
        EXPECT_EQ(said.find('\033') != std::string::npos, hasBars) << said;
        EXPECT_EQ(said.find(progress) != std::string::npos, hasProgress) << said;
        EXPECT_NE(said.find("Trays\r\n  Tray 1"), std::string::npos) << said;
    }
}

TEST_F(StatusCommand, AsksAgainAndAgain) {
    const SimulatedPrinter printer;
    addQueue("Office", printer);
    const std::string line = R"("$ORVAN" status -q Office --watch 0.01 --timeout 100 )";
    const Environment variables{{"ORVAN", ORVAN_PROGRAM}};
    // The reader ends it.
    const ProgramEnd lines = run({"/bin/sh", "-c", line + "--json | head -n 2"}, variables);
    EXPECT_EQ(std::ranges::count(lines.output, '\n'), 2) << lines.output << lines.errors;
    EXPECT_TRUE(Json::parse(lines.output.substr(0, lines.output.find('\n')), nullptr, false).is_object());
    const ProgramEnd text = run({"/bin/sh", "-c", line + "| grep -m 2 '^20..-..-.. ..:..:..$'"}, variables);
    EXPECT_EQ(std::ranges::count(text.output, '\n'), 2) << text.output << text.errors;
}

TEST_F(StatusCommand, AsksTheSchedulerThatIsNamed) {
    const SimulatedPrinter printer;
    addQueue("Office", printer);
    const std::string here = environment()["CUPS_SERVER"].value_or("");
    const Environment elsewhere{{"CUPS_SERVER", "/no/such/socket"}};
    for (const char* const command : {"status", "papers", "panel"}) {
        EXPECT_EQ(orvan({command, "-q", "Office"}, elsewhere).exitCode, 1);
        EXPECT_EQ(orvan({command, "-q", "Office", "-H", here}, elsewhere).exitCode, 0);
    }
    const Refusal cases[] = {
        {{"status", "--all", "-H", "localhost:1"}, 1, "cannot reach the print scheduler at localhost:1: "},
    };
    for (const auto& [arguments, exitCode, words] : cases)
        expectRefusal(orvan(arguments), words, exitCode);
    ASSERT_EQ(system_->deleteQueue("Office"), std::nullopt);
    expectRefusal(orvan({"status", "--all"}), "no queue of an Orvan printer");
}

// Nobody is asked for a password, and nothing takes longer than the time-out.
TEST(StatusOfSchedulers, IsARefusalThatSaysWhy) {
    constexpr const char* kWantsPassword =
        "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"CUPS\"\r\nContent-Length: 0\r\n\r\n";
    const std::tuple<ScriptedAnswer, const char*, const char*> cases[] = {
        {{"/", kWantsPassword}, "100", "wants a password for Get-Printer-Attributes from user "},
        {{"/", "", ScriptedAnswer::Then::silence}, "1", "does not answer"},
    };
    for (const auto& [answer, timeout, words] : cases) {
        const ScriptedServer server({answer});
        expectRefusal(orvan({"status", "-q", "Office", "-H", "127.0.0.1:" + std::to_string(server.port()),
                          "--timeout", timeout}),
            words);
    }
}

} // namespace
} // namespace orvan
