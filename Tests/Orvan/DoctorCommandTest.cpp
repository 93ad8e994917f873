// `orvan doctor`: a way that is well, and one fault at a time on it.
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/SimulatedPrinter.h"
#include "Tests/Support/WebServer.h"

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

// What it answers, in a desktop session that loads the module.
Json examine(Environment environment, std::vector<std::string> arguments, int exitCode,
    const fs::path& program = ORVAN_PROGRAM) {
    environment.insert({{"GTK3_MODULES", "canberra:orvan-paper-options-module"}, {"DISPLAY", ":0"},
        {"ORVAN_PAPER_OPTIONS", std::nullopt}});
    arguments.insert(arguments.begin(), {program, "doctor", "--json", "--timeout", "100"});
    const ProgramEnd end = runProgram(arguments, environment);
    EXPECT_EQ(end.exitCode, exitCode) << end.output;
    EXPECT_EQ(end.errors, "");
    return Json::parse(end.output, nullptr, false);
}

using Problems = std::vector<std::pair<std::string, std::string>>; // stations, and words of what it says

// It has these problems and no others, and says of each how to mend it.
void expectProblems(const Json& answer, const Problems& expected) {
    std::size_t count = 0;
    for (const Json& one : answer["stations"]) {
        if (one["state"] != "problem") continue;
        ASSERT_LT(count, expected.size()) << answer;
        const auto& [station, words] = expected[count++];
        const std::string mend = one["mend"];
        const std::string said = one["found"].get<std::string>().append(" | ").append(mend);
        EXPECT_EQ(one["station"], station) << answer;
        EXPECT_FALSE(mend.empty()) << answer;
        EXPECT_NE(said.find(words), std::string::npos) << answer;
    }
    EXPECT_EQ(count, expected.size()) << answer;
}

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

    Json examine(const std::vector<std::string>& arguments, int exitCode) const {
        return orvan::examine(environment(), arguments, exitCode);
    }

    SimulatedPrinter printer_;
};

TEST_F(DoctorCommand, FindsNothingWhereAllIsWell) {
    const Json answer = examine({}, 0);
    EXPECT_EQ(answer["schemaVersion"], 2);
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
            "answers", "address", "ping", "document", "password", "bundle", "module", "session"}));
    EXPECT_EQ(answer["stations"][1]["queue"], "Office");
    EXPECT_EQ(answer["stations"][9]["found"],
        "fetched and read: 4 trays, 4 supplies, 5 custom papers, 3 stored jobs");

    const ProgramEnd text = CommandQueue::orvan({"doctor", "-q", "Office"},
        {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}, {"GTK3_MODULES", std::nullopt}});
    EXPECT_EQ(text.exitCode, 0) << text.output;
    EXPECT_EQ(text.errors, "");
    EXPECT_EQ(std::ranges::count(text.output, '\n'), 15) << text.output;
    EXPECT_NE(text.output.find("\nok           Office  command job     "), std::string::npos) << text.output;
    EXPECT_TRUE(text.output.find(" not checked.\n") != std::string::npos &&
                text.output.find("\nNo problem; ") != std::string::npos)
        << text.output;
    EXPECT_NE(text.output.find("\nnot checked          session         this is no desktop session. Ask "),
        std::string::npos)
        << text.output;
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
    EXPECT_EQ(run({"/usr/sbin/lpadmin", "-p", "Holding", "-c", "Class"}).exitCode, 0);
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
    run({"/bin/sh", "-c",
        "printf '#CUPS-COMMAND\\ncom.orvan.Permissions' | lp -s -d Stopped -t 'Printer Status' -"});
    EXPECT_TRUE(eventually([this] {
        std::vector<PrintJob> stopped;
        return !system_->jobs("Stopped", &stopped) && stopped.size() == 1 &&
               stopped.front().state == IPP_JSTATE_STOPPED;
    }));
    addQueue("Mute", withFilter("/bin/true"));
    addQueue("Damaged", [&](std::string& ppd) {
        withFilter("/bin/true")(ppd);
        ppd += "*com.orvan.DeviceStatus0000: \"!!!!\"\n*com.orvan.DeviceStatus0001: \"\"\n";
    });
    const std::pair<const char*, Problems> cases[] = {
        {"Nowhere", {{"queue", "there is no queue Nowhere"}}},
        {"Paused", {{"queue", "\"cupsenable Paused\""}}},
        {"Rejecting", {{"queue", "\"cupsaccept Rejecting\""}}},
        {"Holding", {{"command job", "holds new jobs | \"cupsenable --release Holding\""}}},
        {"Class", {{"queue", "is a class of printers"}}},
        {"Other", {{"PPD", "is for another printer"}}},
        {"NoCommands",
            {{"PPD", "(\"cupsCommands\") | Give the queue the printer's driver: \"lpadmin -p NoCommands"}}},
        {"Long", {{"PPD", "damaged: Line longer than the maximum allowed (255 characters)"}}},
        {"NoFilter", {{"command filter", "names no command filter"}}},
        {"Missing", {{"command filter", "/no/such/filter is not there: No such file"}}},
        {"MissingName", {{"command filter", "the scheduler misses a filter"}}},
        {"Insecure", {{"command filter", "\"sudo chmod 755 " + insecure + "\""}}},
        {"Failing", {{"command job", "the command filter failed"}}},
        {"Stopped", {{"earlier job", "| \"cancel Stopped-"}}},
        {"Mute", {{"answers", "there are no answers to com.orvan.CustomPaperTypes, com.orvan.DeviceStatus"}}},
        {"Damaged", {{"answers", "the answers to com.orvan.DeviceStatus cannot be decoded"}}},
    };
    // One fault is one problem, whatever follows from it.
    for (const auto& [queue, problems] : cases)
        expectProblems(examine({"-q", queue}, 1), problems);
    // It leaves nothing in anybody's way.
    std::vector<PrintJob> jobs;
    ASSERT_EQ(system_->jobs("Failing", &jobs), std::nullopt);
    ASSERT_EQ(jobs.size(), 1U);
    EXPECT_EQ(jobs.front().state, IPP_JSTATE_CANCELED);
}

TEST_F(DoctorCommand, FindsFaultsOfThePrinter) {
    const SimulatedPrinter wrong({"--misbehave", "wrong"});
    const SimulatedPrinter closed({"--user", "admin"}, std::nullopt, {{"ORVAN_PASSWORD", "secret"}});
    const SimulatedPrinter odd({},
        "<s><customPaperTypes><printer><customPaperType><name>Gold</name><type>17</type></customPaperType>"
        "</printer></customPaperTypes></s>");
    SimulatedPrinter off;
    addQueue("Odd", odd);
    addQueue("NoAddress", [this](std::string& ppd) { replace(ppd, printer_.url(), "/status.xml"); });
    addQueue("Wrong", wrong);
    addQueue("Closed", closed);
    addQueue("Off", off);
    off.end();
    const std::pair<const char*, Problems> cases[] = {
        {"NoAddress",
            {{"address", "leads to no printer | This queue's device has no network address: it is file:"}}},
        {"Odd", {{"answers", "the queue's PPD cannot name these papers to the printer: Gold |"}}},
        {"Wrong", {{"document", "something that is no status document"}}},
        {"Closed", {{"document", "wants a user name and a password"}}},
        {"Off", {{"ping", "127.0.0.1 is not there"}}},
    };
    for (const auto& [queue, problems] : cases)
        expectProblems(examine({"-q", queue}, 1), problems);
    const ProgramEnd papers = orvan({"papers", "-q", "Odd"});
    EXPECT_EQ(papers.output, "Gold\t17\t\n");
    EXPECT_EQ(papers.errors, "orvan: the driver of queue Odd cannot name Gold to the printer\n");
}

TEST_F(DoctorCommand, NamesTheQueueOfEachProblem) {
    const SimulatedPrinter silent({"--misbehave", "silent"});
    for (const char* const name : {"Silent1", "Silent2", "Silent3", "Silent4"})
        addQueue(name, silent);
    const Json answer = examine({"--problems"}, 1);
    ASSERT_EQ(answer["stations"].size(), 4U) << answer;
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(answer["stations"][i]["queue"], "Silent" + std::to_string(i + 1));
        EXPECT_EQ(answer["stations"][i]["station"], "document");
    }
    EXPECT_EQ(answer["problems"], 4);
}

TEST_F(DoctorCommand, FindsAnotherCertificate) {
    if (!WebServer::isInstalled()) GTEST_SKIP() << "nginx is not installed";
    WebServer server("<status><storedJobs/></status>");
    const TempFolder cache;
    addQueue("Office2", "commandtoorvan", server.old("/status.xml"), printer_.snmpAgent());
    Environment variables = environment();
    variables["CUPS_CACHEDIR"] = cache.path();
    const auto certificates = [&variables](bool isAnother) {
        Json answer = orvan::examine(variables, {"-q", "Office2"}, isAnother ? 1 : 0);
        std::vector<std::string> said;
        for (const Json& one : answer["stations"])
            if (std::string text = one.dump(); text.find("certificate") != std::string::npos)
                said.push_back(text);
        return said;
    };
    EXPECT_EQ(certificates(false), std::vector<std::string>());
    server.becomeAnother();
    const auto said = certificates(true);
    ASSERT_EQ(said.size(), 2U); // the filter's complaint, and the doctor's own look
    for (const std::string& one : said) {
        const std::size_t first = one.find("fingerprint is ");
        ASSERT_NE(first, std::string::npos) << one;
        EXPECT_EQ(one.find(" now and was "), first + 15 + 95) << one;
    }
    EXPECT_NE(said.back().find("the printer shows another certificate than before"), std::string::npos);
}

// Without a scheduler the desktop is looked at all the same.
TEST(Doctor, FindsFaultsOfTheDesktop) {
    const struct {
        std::function<void(const Tree&)> plant;
        Environment environment;
        Problems problems; // behind the scheduler's
    } cases[] = {
        {[](const Tree& tree) {
             fs::remove_all(tree.at(Tree::bundle()));
             fs::remove(tree.at(Tree::module()));
         },
            {{"GTK3_MODULES", "canberra"}},
            {{"bundle", "OrvanPaperOptions.plugin"}, {"module", "is not there"},
                {"session", "log out and in again"}}},
        {[](const Tree& tree) {
             fs::remove(tree.at(Tree::bundle()) / "Contents/Resources/PaperOptions.view");
             fs::resize_file(tree.at(Tree::module()), 1000);
         },
            {{"ORVAN_PAPER_OPTIONS", "Off"}},
            {{"bundle", "PaperOptions.view"}, {"module", "GTK cannot load the module: "},
                {"session", "ORVAN_PAPER_OPTIONS=off"}}},
        {[](const Tree& tree) { fs::remove(tree.at("lib/orvan/liborvan-print-dialog.so")); }, {},
            {{"module", "liborvan-print-dialog.so"}}},
    };
    for (const auto& [plant, environment, problems] : cases) {
        const Tree tree;
        plant(tree);
        Environment variables = environment;
        variables.insert({{"CUPS_SERVER", "/no/such/socket"}, {"LC_ALL", "C.UTF-8"}, {"LANGUAGE", ""}});
        const Json answer = examine(variables, {"-q", "Office"}, 1, tree.at("bin/orvan"));
        EXPECT_EQ(answer["stations"].size(), 14U);
        EXPECT_EQ(answer["stations"][1]["queue"], "Office");
        EXPECT_EQ(answer["stations"][1]["found"], "the scheduler has to answer first");
        Problems all{{"scheduler", "cannot reach the print scheduler at /no/such/socket"}};
        all.insert(all.end(), problems.begin(), problems.end());
        expectProblems(answer, all);
    }
}

} // namespace
} // namespace orvan
