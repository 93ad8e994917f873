// Which queue is meant when nobody names one.
#include "Tests/Orvan/Program.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/ScriptedServer.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>

namespace orvan {
namespace {

class DefaultQueue : public CommandQueue {
protected:
    static constexpr const char* kQueues[]{
        "Of-scheduler", "Of-system", "Of-person", "Of-printer", "Of-lpdest"};

    void SetUp() override {
        CommandQueue::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        const DerivedPPD ppd;
        for (const std::string queue : kQueues)
            ASSERT_EQ(system_->addQueue({queue, ppd.file(), "socket://" + queue + ".example"}), std::nullopt);
    }

    ProgramEnd ask(const Words& arguments, Environment more = {}) const {
        more.insert({{"LPDEST", std::nullopt}, {"PRINTER", std::nullopt}});
        return orvan(arguments, more);
    }
};

// Each case adds what comes before the earlier ones.
TEST_F(DefaultQueue, IsTheOneOfLpstat) {
    const std::string none = "no queue is named, and there is no default queue at the print scheduler at ";
    for (const char* const command : {"status", "papers", "url", "panel"}) {
        expectRefusal(ask({command}), none);
        expectRefusal(ask({command}), "name one with -q (\"lpstat -v\" lists them)");
    }
    Environment variables;
    const struct {
        const char* queue;
        std::function<void()> set;
    } cases[] = {
        {"Of-scheduler", [this] { EXPECT_EQ(system_->setDefaultQueue("Of-scheduler"), std::nullopt); }},
        {"Of-scheduler", [&] { variables["PRINTER"] = "lp"; }}, // which is everybody's
        {"Of-system",
            [this] {
                std::ofstream(system_->folder().configurationFolder() / "lpoptions")
                    << "Dest Of-person a=b\nDefault Of-system a=b\n";
            }},
        {"Of-person",
            [this] {
                const std::filesystem::path folder = system_->folder().home() / ".cups";
                std::filesystem::create_directories(folder);
                std::ofstream(folder / "lpoptions") << "Default Of-person/draft media=a4\n";
            }},
        {"Of-printer", [&] { variables["PRINTER"] = "Of-printer"; }},
        {"Of-lpdest", [&] { variables["LPDEST"] = "Of-lpdest"; }},
    };
    for (const auto& [queue, set] : cases) {
        SCOPED_TRACE(queue);
        set();
        expectEnd(ask({"url"}, variables), 0, std::string("http://") + queue + ".example\n");
        Environment lpstat = variables;
        lpstat.insert({{"LPDEST", std::nullopt}, {"PRINTER", std::nullopt}});
        const ProgramEnd said = run({"/bin/sh", "-c", "lpstat -d"}, lpstat);
        EXPECT_TRUE(said.output.starts_with(std::string("system default destination: ") + queue))
            << said.output;
    }
    for (const char* const command : {"status", "papers"})
        expectRefusal(
            ask({command}, variables), "printer Of-lpdest was not asked: the queue's PPD lists no commands");
    const ProgramEnd panel = ask({"panel", "--release", "10.10", "--json"}, variables);
    EXPECT_EQ(panel.exitCode, 0) << panel.errors;
    expectEnd(ask({"url", "-q", "Of-person"}, variables), 0, "http://Of-person.example\n");
    variables["LPDEST"] = "Gone";
    expectRefusal(ask({"papers"}, variables), "there is no queue Gone");
    EXPECT_NE(ask({"status", "--all"}, variables).output.find("Of-lpdest "), std::string::npos);
}

TEST_F(DefaultQueue, IsAskedForWithAnEnd) {
    const ScriptedServer silent({{"/", "", ScriptedAnswer::Then::silence}});
    for (const char* const command : {"status", "papers", "panel"})
        expectRefusal(run({ORVAN_PROGRAM, command, "--timeout", "1", "-H",
                              "127.0.0.1:" + std::to_string(silent.port())},
                          {{"LPDEST", std::nullopt}, {"PRINTER", std::nullopt}}),
            "does not answer");
}

} // namespace
} // namespace orvan
