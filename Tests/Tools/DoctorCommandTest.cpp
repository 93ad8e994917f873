// `orvan doctor`: a way that is well, and one fault at a time on it.
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/SimulatedPrinter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// A copy of the installed tree's parts that the doctor looks at.
class Tree {
public:
    Tree() {
        const fs::path build = fs::path(ORVAN_PROGRAM).parent_path().parent_path();
        for (const fs::path& part : {fs::path("bin/orvan"), fs::path("lib/orvan"), module()}) {
            fs::create_directories(at(part).parent_path());
            fs::copy(build / part, at(part), fs::copy_options::recursive);
        }
    }
    // Of what lies in it.
    fs::path at(const fs::path& part) const { return folder_.path() / part; }
    static fs::path module() { return ORVAN_MODULE_PART; }
    static fs::path bundle() { return "lib/orvan/OrvanPaperOptions.plugin"; }

private:
    TempFolder folder_;
};

class DoctorCommand : public CommandQueue {
protected:
    void SetUp() override {
        CommandQueue::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        addQueue("Office", printer_);
    }

    // A queue that is like Office but for its PPD.
    void addQueue(const std::string& name, const std::function<void(std::string& ppd)>& change,
        const std::string& device = "file:///dev/null") const {
        std::string ppd = queuePPD("commandtoorvan", printer_.url(), printer_.snmpAgent());
        change(ppd);
        const TempFolder folder;
        ASSERT_EQ(system_->addQueue({name, folder.write("queue.ppd", ppd), device}), std::nullopt);
    }
    using CommandQueue::addQueue;

    // What it answers, in a desktop session that loads the module.
    Json examine(std::vector<std::string> arguments, int exitCode, const Environment& more = {},
        const fs::path& program = ORVAN_PROGRAM) const {
        Environment environment = more;
        environment.insert({{"GTK3_MODULES", "canberra:orvan-paper-options-module"}, {"DISPLAY", ":0"},
            {"ORVAN_PAPER_OPTIONS", std::nullopt}});
        arguments.insert(arguments.begin(), {program, "doctor", "--json"});
        const ProgramEnd end = run(arguments, environment);
        EXPECT_EQ(end.exitCode, exitCode) << end.output;
        EXPECT_EQ(end.errors, "");
        return Json::parse(end.output, nullptr, false);
    }

    // That the first station with a problem is this one, and that it says these words.
    static void expectProblem(const Json& answer, const std::string& station, const std::string& words) {
        EXPECT_EQ(answer["ok"], false);
        const auto found =
            std::ranges::find(answer["stations"], "problem", [](const Json& one) { return one["state"]; });
        ASSERT_NE(found, answer["stations"].end()) << answer;
        EXPECT_EQ((*found)["station"], station) << answer;
        const std::string said =
            (*found)["found"].get<std::string>() + " | " + (*found)["mend"].get<std::string>();
        EXPECT_NE(said.find(words), std::string::npos) << said;
        EXPECT_NE((*found)["mend"], "") << said;
    }

    SimulatedPrinter printer_;
};

TEST_F(DoctorCommand, FindsNothingWhereAllIsWell) {
    const Json answer = examine({}, 0);
    EXPECT_EQ(answer["schemaVersion"], 1);
    EXPECT_EQ(answer["ok"], true);
    std::vector<std::string> stations;
    for (const Json& one : answer["stations"]) {
        stations.push_back(one["station"]);
        // Whether this user may ping is the machine's affair.
        EXPECT_TRUE(one["state"] == "ok" || one["station"] == "ping") << one;
        EXPECT_EQ(one.size(), 5U);
    }
    EXPECT_EQ(stations,
        (std::vector<std::string>{"scheduler", "queue", "PPD", "command filter", "earlier job", "command job",
            "answers", "address", "ping", "document", "bundle", "module", "session"}));
    EXPECT_EQ(answer["stations"][1]["queue"], "Office");
    EXPECT_EQ(answer["stations"][9]["found"],
        "fetched and read: 4 trays, 4 supplies, 5 custom papers, 3 stored jobs");

    const ProgramEnd text = orvan({"doctor", "-q", "Office"});
    EXPECT_EQ(text.exitCode, 0) << text.output;
    EXPECT_EQ(text.errors, "");
    EXPECT_EQ(std::ranges::count(text.output, '\n'), 13) << text.output;
    EXPECT_NE(text.output.find("\nok           command job     "), std::string::npos) << text.output;
}

TEST_F(DoctorCommand, FindsFaultsOfTheQueue) {
    const auto withFilter = [](const std::string& filter) {
        return [filter](std::string& ppd) { replace(ppd, "raw 0 commandtoorvan", "raw 0 " + filter); };
    };
    const auto replacing = [](const std::string& from, const std::string& to) {
        return [from, to](std::string& ppd) { replace(ppd, from, to); };
    };
    const auto unchanged = [](std::string&) {};
    const TempFolder folder;
    const std::string insecure = folder.write("filter", "#!/bin/sh\n");
    fs::permissions(insecure, fs::perms(0777));

    addQueue("Paused", unchanged);
    ASSERT_EQ(system_->pauseQueue("Paused"), std::nullopt);
    addQueue("Rejecting", unchanged);
    ASSERT_EQ(system_->rejectJobs("Rejecting"), std::nullopt);
    addQueue("Holding", unchanged);
    ASSERT_EQ(system_->holdNewJobs("Holding"), std::nullopt);
    addQueue("Other", replacing("*Manufacturer: \"Orvan\"", "*Manufacturer: \"Other\""));
    addQueue("NoCommands", replacing("*cupsCommands:", "*otherCommands:"));
    addQueue("Long", unchanged);
    std::ofstream(system_->folder().path() / "etc/ppd/Long.ppd", std::ios::app)
        << "*OVNNote: \"" << std::string(256, 'x') << "\"\n";
    addQueue(
        "NoFilter", replacing("*cupsFilter2: \"application/vnd.cups-command", "*cupsFilter2: \"text/plain"));
    addQueue("Missing", withFilter("/no/such/filter"));
    addQueue("MissingName", withFilter("no-such-filter"));
    addQueue("Insecure", withFilter(insecure));
    addQueue("Failing", withFilter("/bin/false"));
    addQueue("Stopped", withFilter("/bin/false"));
    orvan({"status", "-q", "Stopped", "--timeout", "2"});
    addQueue("Mute", withFilter("/bin/true"));
    addQueue("Damaged", [&](std::string& ppd) {
        withFilter("/bin/true")(ppd);
        ppd += "*com.orvan.DeviceStatus0000: \"!!!!\"\n*com.orvan.DeviceStatus0001: \"\"\n";
    });
    const struct {
        const char* queue;
        const char* station;
        std::string words;
    } cases[] = {
        {"Nowhere", "queue", "there is no queue Nowhere"},
        {"Paused", "queue", "\"cupsenable Paused\""},
        {"Rejecting", "queue", "\"cupsaccept Rejecting\""},
        {"Holding", "command job",
            "holds new jobs | \"lpadmin -p Holding -o job-hold-until-default=no-hold\""},
        {"Other", "PPD", "is for another printer"},
        {"NoCommands", "PPD",
            "(\"cupsCommands\") | Give the queue the printer's driver: \"lpadmin -p NoCommands"},
        {"Long", "PPD", "damaged: Line longer than the maximum allowed (255 characters)"},
        {"NoFilter", "command filter", "names no command filter"},
        {"Missing", "command filter", "/no/such/filter is not there: No such file"},
        {"MissingName", "command filter", "the scheduler misses a filter"},
        {"Insecure", "command filter", "\"sudo chmod 755 " + insecure + "\""},
        {"Failing", "command job", "the command filter failed"},
        {"Stopped", "earlier job", "| \"cancel Stopped-"},
        {"Mute", "answers", "there are no answers to com.orvan.CustomPaperTypes, com.orvan.DeviceStatus"},
        {"Damaged", "answers", "the answers to com.orvan.DeviceStatus cannot be decoded"},
    };
    for (const auto& [queue, station, words] : cases) {
        SCOPED_TRACE(queue);
        const Json answer = examine({"-q", queue, "--timeout", "3"}, 1);
        expectProblem(answer, station, words);
        // One fault is one problem, whatever follows from it.
        EXPECT_EQ(
            std::ranges::count(answer["stations"], "problem", [](const Json& one) { return one["state"]; }),
            1)
            << answer;
    }
    // It leaves nothing in anybody's way.
    std::vector<PrintJob> jobs;
    ASSERT_EQ(system_->jobs("Failing", &jobs), std::nullopt);
    ASSERT_EQ(jobs.size(), 1U);
    EXPECT_EQ(jobs.front().state, IPP_JSTATE_CANCELED);
    const Json gone = examine({}, 1, {{"CUPS_SERVER", "/no/such/socket"}});
    expectProblem(gone, "scheduler", "cannot reach the print scheduler at /no/such/socket");
    EXPECT_EQ(gone["stations"].size(), 4U);
}

TEST_F(DoctorCommand, FindsFaultsOfThePrinter) {
    const SimulatedPrinter wrong({"--misbehave", "wrong"});
    const SimulatedPrinter closed({"--user", "admin"}, std::nullopt, {{"ORVAN_PASSWORD", "secret"}});
    SimulatedPrinter off;
    addQueue("NoAddress", [this](std::string& ppd) { replace(ppd, printer_.url(), "/status.xml"); });
    addQueue("Wrong", wrong);
    addQueue("Closed", closed);
    addQueue("Off", off);
    off.end();
    const struct {
        const char* queue;
        const char* station;
        const char* words;
    } cases[] = {
        {"NoAddress", "address", "the device file:///dev/null leads to no printer | "},
        {"Wrong", "document", "something that is no status document"},
        {"Closed", "document", "wants a user name and a password"},
        {"Off", "ping", "127.0.0.1 is not there"},
    };
    for (const auto& [queue, station, words] : cases) {
        SCOPED_TRACE(queue);
        Json answer = examine({"-q", queue}, 1);
        const auto answers =
            std::ranges::find(answer["stations"], "answers", [](const Json& one) { return one["station"]; });
        ASSERT_NE(answers, answer["stations"].end());
        // What the filter complained of is the same fault, seen from the queue.
        EXPECT_NE(
            (*answers)["found"].get<std::string>().find("the command filter complains: "), std::string::npos);
        (*answers)["state"] = "ok";
        expectProblem(answer, station, words);
    }
}

TEST_F(DoctorCommand, FindsFaultsOfTheDesktop) {
    const struct {
        const char* station;
        std::string words;
        std::function<void(const Tree&)> plant;
        Environment environment = {};
    } cases[] = {
        {"bundle", "OrvanPaperOptions.plugin",
            [](const Tree& tree) { fs::remove_all(tree.at(Tree::bundle())); }},
        {"bundle", "PaperOptions.view",
            [](const Tree& tree) {
                fs::remove(tree.at(Tree::bundle()) / "Contents/Resources/PaperOptions.view");
            }},
        {"module", "is not there", [](const Tree& tree) { fs::remove(tree.at(Tree::module())); }},
        {"module", "GTK cannot load the module: ",
            [](const Tree& tree) { fs::resize_file(tree.at(Tree::module()), 1000); }},
        {"module", "liborvan-print-dialog.so",
            [](const Tree& tree) { fs::remove(tree.at("lib/orvan/liborvan-print-dialog.so")); }},
        {"session", "log out and in again", {}, {{"GTK3_MODULES", "canberra"}}},
        {"session", "ORVAN_PAPER_OPTIONS=off", {}, {{"ORVAN_PAPER_OPTIONS", "Off"}}},
    };
    for (const auto& [station, words, plant, environment] : cases) {
        SCOPED_TRACE(words);
        const Tree tree;
        if (plant) plant(tree);
        expectProblem(examine({"-q", "Office"}, 1, environment, tree.at("bin/orvan")), station, words);
    }
    const ProgramEnd away = orvan({"doctor", "-q", "Office"},
        {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}, {"GTK3_MODULES", std::nullopt}});
    EXPECT_EQ(away.exitCode, 0) << away.output;
    EXPECT_NE(away.output.find("\nnot checked  session         this is no desktop session. Ask "),
        std::string::npos)
        << away.output;
}

} // namespace
} // namespace orvan
