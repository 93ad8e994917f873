// `orvan status` about many printers, again and again, on a terminal, and interrupted.
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/SimulatedPrinter.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <string>
#include <thread>

namespace orvan {
namespace {

using Json = nlohmann::json;
using Clock = std::chrono::steady_clock;

class StatusCommand : public CommandQueue {
protected:
    // The queue's jobs in a state.
    long count(const std::string& queue, ipp_jstate_t state) const {
        std::vector<PrintJob> jobs;
        EXPECT_EQ(system_->jobs(queue, &jobs), std::nullopt);
        return std::ranges::count(jobs, state, &PrintJob::state);
    }

    // A line of a shell in which $ORVAN is the program, on a terminal of its own.
    std::string onTerminal(const std::string& line, Environment variables = {}) const {
        variables.insert({{"ORVAN", ORVAN_PROGRAM}, {"TERM", "xterm"}, {"NO_COLOR", std::nullopt}});
        return run({"/usr/bin/script", "-qec", line, "/dev/null"}, variables).output;
    }
};

TEST_F(StatusCommand, AsksAllPrintersAtOnce) {
    const SimulatedPrinter printer;
    const SimulatedPrinter silent({"--misbehave", "silent"});
    constexpr int kPrinters = 8;
    for (int i = 1; i <= kPrinters; ++i)
        addQueue("Office" + std::to_string(i), printer);
    addQueue("Silent", silent);
    DerivedPPD other;
    other.replace("*Manufacturer: \"Orvan\"", "*Manufacturer: \"Other\"");
    ASSERT_EQ(system_->addQueue({.name = "Other", .ppdFile = other.file()}), std::nullopt);

    const auto start = Clock::now();
    const ProgramEnd end = orvan({"status", "--all", "--json"});
    const auto taken = Clock::now() - start;
    const Json answer = Json::parse(end.output, nullptr, false);
    EXPECT_EQ(end.exitCode, 1); // one did not answer
    EXPECT_EQ(end.errors.find("orvan: printer Silent gave no answer: "), 0U) << end.errors;
    ASSERT_EQ(answer["printers"].size(), kPrinters + 1U) << answer;
    for (const Json& one : answer["printers"])
        EXPECT_EQ(one["responses"].size(), one["queue"] == "Silent" ? 0U : 6U) << one;
    EXPECT_EQ(answer["printers"][0]["queue"], "Office1");
    EXPECT_NE(answer["printers"][kPrinters]["problem"], "");
    // One after the other they would take half a second each, and the silent one two.
    EXPECT_LT(taken, std::chrono::seconds(5));

    const std::string text = orvan({"status", "--all"}).output;
    EXPECT_TRUE(text.starts_with("Office1\n  Trays\n    Tray1          90 %  ")) << text;
    EXPECT_NE(text.find("\n\nOffice8\n  Trays\n"), std::string::npos) << text;
}

TEST_F(StatusCommand, TakesItsJobBackWhenInterrupted) {
    const SimulatedPrinter silent({"--misbehave", "silent"});
    addQueue("Silent", silent);
    long round = 0;
    for (const char* const command : {"status", "papers", "panel", "doctor"}) {
        SCOPED_TRACE(command);
        BackgroundProcess program({ORVAN_PROGRAM, command, "-q", "Silent"}, [this] {
            changeEnvironment(environment());
            std::freopen("/dev/null", "w", stdout);
            std::freopen("/dev/null", "w", stderr);
        });
        const auto deadline = Clock::now() + std::chrono::seconds(10);
        while (count("Silent", IPP_JSTATE_PROCESSING) == 0 && Clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_EQ(program.end(SIGINT), 128 + SIGINT);
        EXPECT_EQ(count("Silent", IPP_JSTATE_PROCESSING), 0);
        EXPECT_EQ(count("Silent", IPP_JSTATE_CANCELED), ++round);
    }
}

TEST_F(StatusCommand, DecoratesForATerminalAlone) {
    const SimulatedPrinter printer;
    addQueue("Office", printer);
    const std::string line = "$ORVAN status -q Office";
    const std::string bar = "[\033[33m##\033[m------------------] \033[33m 10 %\033[m";
    const struct {
        std::string said;
        bool hasBars;
        bool hasProgress;
    } cases[] = {
        {onTerminal(line), true, true},
        {onTerminal(line, {{"NO_COLOR", "1"}}), false, true},
        {onTerminal(line, {{"TERM", "dumb"}}), false, false},
        {onTerminal(line + " 2>/dev/null"), true, false},
        {onTerminal(line + " | cat"), false, true},
    };
    for (const auto& [said, hasBars, hasProgress] : cases) {
        EXPECT_EQ(said.find(bar) != std::string::npos, hasBars) << said;
        EXPECT_EQ(said.find('\033') != std::string::npos, hasBars) << said;
        EXPECT_EQ(said.find("\rWaiting for printer Office (0 s)") != std::string::npos, hasProgress) << said;
        EXPECT_NE(said.find("Trays\r\n  Tray1"), std::string::npos) << said;
    }
}

TEST_F(StatusCommand, AsksAgainAndAgain) {
    const SimulatedPrinter printer;
    addQueue("Office", printer);
    const std::string three = R"("$ORVAN" status -q Office --watch 0.01 )";
    const Environment variables{{"ORVAN", ORVAN_PROGRAM}};
    // The reader ends it.
    const ProgramEnd lines = run({"/bin/sh", "-c", three + "--json | head -n 3"}, variables);
    EXPECT_EQ(std::ranges::count(lines.output, '\n'), 3) << lines.output << lines.errors;
    EXPECT_TRUE(Json::parse(lines.output.substr(0, lines.output.find('\n')), nullptr, false).is_object());
    const ProgramEnd text = run({"/bin/sh", "-c", three + "| grep -m 3 '^20..-..-.. ..:..:..$'"}, variables);
    EXPECT_EQ(std::ranges::count(text.output, '\n'), 3) << text.output << text.errors;
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
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        const char* words;
    } cases[] = {
        {{"status", "--all", "-H", "localhost:1"}, 1, "cannot reach the print scheduler at localhost:1: "},
        {{"status", "--all", "-q", "Office"}, 2, "--all"},
        {{"status"}, 2, "--all"},
        {{"status", "--all", "--watch", "0"}, 2, "\"0\" is not a number above 0"},
        {{"status", "-q", "Office", "-H", ""}, 2, "a host is missing"},
    };
    for (const auto& [arguments, exitCode, words] : cases) {
        const ProgramEnd end = orvan(arguments);
        EXPECT_EQ(end.exitCode, exitCode) << words;
        EXPECT_NE(end.errors.find(words), std::string::npos) << end.errors;
    }
    ASSERT_EQ(system_->deleteQueue("Office"), std::nullopt);
    EXPECT_NE(orvan({"status", "--all"}).errors.find("no queue of an Orvan printer"), std::string::npos);
}

} // namespace
} // namespace orvan
