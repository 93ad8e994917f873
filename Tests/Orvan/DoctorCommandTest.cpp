// `orvan doctor`: a way that is well, and one fault at a time on it.
#include "Common/Utilities/URIParts.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/OwnNetwork.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/SimulatedPrinter.h"
#include "Tests/Support/WebServer.h"

#include <nlohmann/json.hpp>

#include <elf.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
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
        for (const fs::path& part : {fs::path("bin/orvan"), fs::path("lib/orvan"), module(), gtk4Module()}) {
            fs::create_directories(at(part).parent_path());
            fs::copy(build / part, at(part), fs::copy_options::recursive);
        }
    }
    // Of what lies in it.
    fs::path at(const fs::path& part) const { return folder_.path() / part; }
    static fs::path module() { return ORVAN_MODULE_PART; }
    static fs::path gtk4Module() { return ORVAN_GTK4_MODULE_PART; }
    static fs::path bundle() { return "lib/orvan/OrvanPaperOptions.plugin"; }
    // The file of the stored password, when the folder is XDG_CONFIG_HOME.
    static fs::path password() { return "orvan/com.orvan.qbv.print.pde.cocoa.OrvanJobType.plist"; }

private:
    TempFolder folder_;
};

// As a user who is nobody.
std::vector<std::string> asNobody(std::vector<std::string> command) {
    command.insert(command.begin(), {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"});
    return command;
}

// What it answers, in a desktop session that loads the module.
Json examine(Environment environment, std::vector<std::string> arguments, int exitCode,
    const fs::path& program = ORVAN_PROGRAM, bool isNobody = false) {
    environment.insert({{"GTK3_MODULES", "canberra:orvan-paper-options-module"}, {"DISPLAY", ":0"},
        {"ORVAN_PAPER_OPTIONS", std::nullopt}, {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus"}});
    arguments.insert(arguments.begin(), {program, "doctor", "--json", "--timeout", "100"});
    const ProgramEnd end = runProgram(isNobody ? asNobody(arguments) : arguments, environment);
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
    EXPECT_EQ(stations, (std::vector<std::string>{"scheduler", "queue", "PPD", "command filter",
                            "earlier job", "command job", "answers", "address", "ping", "document",
                            "password", "bundle", "module", "GTK 4 module", "session", "portal"}));
    EXPECT_EQ(answer["stations"][1]["queue"], "Office");
    EXPECT_EQ(answer["stations"][9]["found"],
        "fetched and read: 4 trays, 4 supplies, 5 custom papers, 3 stored jobs");

    const ProgramEnd text = CommandQueue::orvan({"doctor", "-q", "Office"},
        {{"DISPLAY", std::nullopt}, {"WAYLAND_DISPLAY", std::nullopt}, {"GTK3_MODULES", std::nullopt}});
    EXPECT_EQ(text.exitCode, 0) << text.output;
    EXPECT_EQ(text.errors, "");
    EXPECT_EQ(std::ranges::count(text.output, '\n'), 17) << text.output;
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
    addQueue("Missing", withFilter("/no/such/filter"));
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
    addQueue("Unreadable", unchanged);
    const fs::path unreadable = system_->folder().path() / "etc/ppd/Unreadable.ppd";
    fs::permissions(unreadable, fs::perms::owner_read);
    const std::string port = std::to_string(separateURI(printer_.url())->port);
    addQueue("Driven", unchanged, "socket://127.0.0.1:" + port + "/?snmp=false");
    addQueue("Driverless", replacing("*Manufacturer: \"Orvan\"", "*Manufacturer: \"Other\""),
        "ipp://127.0.0.1:1/ipp/print");
    const std::pair<const char*, Problems> cases[] = {
        {"Nowhere", {{"queue", "there is no queue Nowhere"}}},
        {"Paused", {{"queue", "\"cupsenable Paused\""}}},
        {"Rejecting", {{"queue", "\"cupsaccept Rejecting\""}}},
        {"Holding", {{"command job", "holds new jobs | \"cupsenable --release Holding\""}}},
        {"Class", {{"queue", "is a class of printers"}}},
        {"Other", {{"PPD", "is for another printer"}}},
        {"NoCommands",
            {{"PPD", "(\"cupsCommands\") | Give the queue the printer's driver: \"lpadmin -p NoCommands"}}},
        {"Long", {{"PPD", "damaged: a line is longer than 255 characters"}}},
        {"Missing", {{"command filter", "/no/such/filter is not there: No such file"}}},
        {"Insecure", {{"command filter", "\"sudo chmod 755 " + insecure + "\""}}},
        {"Failing", {{"command job", "the command filter failed"}}},
        {"Stopped", {{"earlier job", "| \"cancel Stopped-"}}},
        {"Mute", {{"answers", "there are no answers to com.orvan.CustomPaperTypes, com.orvan.DeviceStatus"}}},
        {"Unreadable",
            {{"PPD", "may not read the queue's PPD " + unreadable.string() + " | \"sudo chmod 644"}}},
        {"Driverless", {{"queue", "| Choose Driven in print dialogs; \"lpadmin -x Driverless\""}}},
        {"Damaged", {{"answers", "the answers to com.orvan.DeviceStatus cannot be decoded"}}},
    };
    // One fault is one problem, whatever follows from it.
    for (const auto& [queue, problems] : cases)
        if (geteuid() == 0 || queue != std::string("Unreadable")) // an ordinary scheduler's own filters may
            expectProblems(examine({"-q", queue}, 1), problems);
    EXPECT_EQ(examine({"-q", "Driven"}, 0)["stations"][1]["mend"],
        "Choose Driven in print dialogs; \"lpadmin -x Driverless\" removes the other.");
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
    const ScriptedServer starting(
        std::vector<ScriptedAnswer>{{"/status.xml", "HTTP/1.1 503 Service Unavailable\r\n\r\n"}});
    const TempFolder open;
    fs::permissions(open.write(Tree::password(),
                        "<plist><dict><key>defaultPassword</key><string>secret</string></dict></plist>"),
        fs::perms(0644));
    addQueue("NoURL", [this](std::string& ppd) { replace(ppd, printer_.url(), "http:/printer"); });
    addQueue("Starting", "commandtoorvan", starting.url("/status.xml"));
    addQueue("Wrong", wrong);
    addQueue("Closed", closed);
    addQueue("Off", off);
    off.end();
    const struct {
        const char* queue;
        Problems problems;
        Environment environment = {};
    } cases[] = {
        {"NoURL", {{"address", "names no web address as OVNStatusDocument (\"http:/printer\")"}}},
        {"Starting", {{"document", "is starting or busy (HTTP 503)"}}},
        {"Odd", {{"answers", "the queue's PPD cannot name these papers to the printer: Gold |"}}},
        {"Wrong", {{"document", "a web page, and no status document. Check the path"}}},
        {"Closed", {{"document", "wants a user name and a password"}}},
        {"Closed", {{"password", "| \"chmod 600 "}}, {{"XDG_CONFIG_HOME", open.path()}}},
        {"Off", {{"ping", "127.0.0.1 is not there"}}},
    };
    for (const auto& [queue, problems, more] : cases) {
        Environment all = more;
        all.merge(environment());
        expectProblems(orvan::examine(all, {"-q", queue}, 1), problems);
    }
    const ProgramEnd papers = orvan({"papers", "-q", "Odd"});
    EXPECT_EQ(papers.output, "Gold\t17\t\n");
    EXPECT_EQ(papers.errors, "orvan: the driver of queue Odd cannot name Gold to the printer\n");
}

TEST_F(DoctorCommand, NamesTheQueueOfEachProblem) {
    const ScriptedServer faulty(
        std::vector<ScriptedAnswer>{{"/status.xml", "HTTP/1.1 500 Internal Server Error\r\n\r\n"}});
    for (const char* const name : {"Faulty1", "Faulty2", "Faulty3", "Faulty4"})
        addQueue(name, "commandtoorvan", faulty.url("/status.xml"));
    const Json answer = examine({"--problems"}, 1);
    ASSERT_EQ(answer["stations"].size(), 4U) << answer;
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(answer["stations"][i]["queue"], "Faulty" + std::to_string(i + 1));
        EXPECT_EQ(answer["stations"][i]["station"], "document");
        EXPECT_NE(answer["stations"][i]["mend"].dump().find("has an error of its own (HTTP 500)"),
            std::string::npos);
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

// Where nobody listens at the port of agents, and the scheduler's disk is full.
TEST_F(DoctorCommand, FindsASilentAgentAndAFullDisk) {
    const std::string said = inOwnNetwork({}, [this]() -> std::string {
        static_cast<void>(system_.release()); // the other process's
        SetUp();
        const SimulatedPrinter printer;
        const std::string port = std::to_string(separateURI(printer.url())->port);
        addQueue(
            "Slow",
            [&](std::string& ppd) {
                replace(ppd, printer_.url(), printer.url());
                replace(ppd, "*OVNSNMPAgent", "*OVNNoAgent");
            },
            "socket://127.0.0.1:" + port);
        Json answers{examine({"-q", "Slow"}, 1)};
        const fs::path spool = system_->folder().spool();
        if (mount("tmpfs", spool.c_str(), "tmpfs", 0, "size=4k,mode=0710") != 0)
            return "skip: no file system";
        std::ofstream(spool / "full") << std::string(4096, 'x');
        answers.push_back(examine({"-q", "Slow"}, 1));
        answers.push_back(spool.string());
        umount2(spool.c_str(), MNT_DETACH);
        system_.reset();
        return answers.dump();
    });
    ORVAN_SKIP_WITHOUT_NETWORK(said);
    const Json answers = Json::parse(said, nullptr, false);
    ASSERT_EQ(answers.size(), 3U) << said;
    expectProblems(answers[0], {{"address", "/?snmp=false'\" ends that."}});
    expectProblems(answers[1], {{"command job", "has 0 KiB left | Make room on the disk at " +
                                                    answers[2].get<std::string>() + ","}});
}

TEST(Doctor, FindsASchedulerThatIsClosedToTheUser) {
    const ScriptedServer strict(std::vector<ScriptedAnswer>{{"/",
        "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"CUPS\"\r\nContent-Length: 0\r\n\r\n"}});
    const Environment variables{{"LC_ALL", "C.UTF-8"}, {"LANGUAGE", ""}, {"HOME", "/nonexistent"},
        {"CUPS_SERVER", "127.0.0.1:" + std::to_string(strict.port())}};
    expectProblems(examine(variables, {"-q", "Office"}, 1), {{"scheduler", " wants a password for "}});

    const TempFolder folder;
    fs::permissions(folder.path(), fs::perms(0755));
    const fs::path socket = folder.write("socket", ""); // whose rights count before what it is
    fs::permissions(socket, fs::perms(0600));
    if (geteuid() != 0 || runProgram(asNobody({ORVAN_PROGRAM, "--version"})).exitCode != 0)
        GTEST_SKIP() << "another user cannot run " << ORVAN_PROGRAM << " from here";
    Environment others = variables;
    others["CUPS_SERVER"] = socket;
    expectProblems(examine(others, {"-q", "Office"}, 1, ORVAN_PROGRAM, true),
        {{"scheduler", "may not open the socket of the print scheduler at " + socket.string()}});
}

// Changes the machine that the shared object is for.
void becomeForeign(const fs::path& file) {
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(offsetof(Elf32_Ehdr, e_machine));
    stream.put(EM_68K).put(0);
}

// The file of the stored password, with that in it.
fs::path store(const Tree& tree, const std::string& text) {
    fs::path file = tree.at(Tree::password());
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
    fs::permissions(file, fs::perms(0600));
    return file;
}

// Without a scheduler the desktop is looked at all the same.
TEST(Doctor, FindsFaultsOfTheDesktop) {
    const struct {
        std::function<void(const Tree&)> plant;
        Environment environment;
        Problems problems; // behind the scheduler's
        bool isForRoot = false;
    } cases[] = {
        {[](const Tree& tree) { fs::remove_all(tree.at(Tree::bundle())); },
            {{"GTK3_MODULES", "canberra:orvan-paper-options-module2"}},
            {{"bundle", "OrvanPaperOptions.plugin"}, {"session", "names \"orvan-paper-options-module2\""}}},
        {[](const Tree& tree) { becomeForeign(tree.at(Tree::module())); }, {{"ORVAN_PAPER_OPTIONS", "Off"}},
            {{"module", "is for another kind of computer ("}, {"session", "ORVAN_PAPER_OPTIONS=off"}}},
        {[](const Tree& tree) { fs::remove(tree.at("lib/orvan/liborvan-print-dialog-gtk3.so")); },
            {{"GTK3_MODULES", "canberra"}, {"GTK_MODULES", "orvan-paper-options-module"}},
            {{"module", "liborvan-print-dialog-gtk3.so"}}},
        {[](const Tree& tree) { fs::remove(tree.at("lib/orvan/liborvan-print-dialog-gtk4.so")); }, {},
            {{"GTK 4 module", "liborvan-print-dialog-gtk4.so"}}},
        {[](const Tree&) {}, {{"GTK3_MODULES", "canberra;orvan-paper-options-module"}},
            {{"session", "has \";\" between its modules"}}},
        {[](const Tree& tree) { store(tree, "<plist><dict>"); },
            {{"GTK3_MODULES", "/no/such/liborvan-paper-options-module.so"}},
            {{"password", "it is no property list with a dictionary | Write it anew"},
                {"session", "names /no/such/liborvan-paper-options-module.so, which is not there"}}},
        {[](const Tree& tree) { EXPECT_EQ(chown(store(tree, "").c_str(), 65534, 65534), 0); },
            {{"GTK3_MODULES", "canberra"}},
            {{"password", "it belongs to somebody else | \"sudo chown "},
                {"session", "log out and in again"}},
            true},
    };
    for (const auto& [plant, environment, problems, isForRoot] : cases) {
        if (isForRoot && geteuid() != 0) continue;
        const Tree tree;
        plant(tree);
        Environment variables = environment;
        variables.insert({{"CUPS_SERVER", "/no/such/socket"}, {"LC_ALL", "C.UTF-8"}, {"LANGUAGE", ""},
            {"XDG_CONFIG_HOME", tree.at("")}});
        const Json answer = examine(variables, {"-q", "Office"}, 1, tree.at("bin/orvan"));
        EXPECT_EQ(answer["stations"].size(), 16U);
        EXPECT_EQ(answer["stations"][1]["queue"], "Office");
        EXPECT_EQ(answer["stations"][1]["found"], "the scheduler has to answer first");
        Problems all{{"scheduler", "cannot reach the print scheduler at /no/such/socket"}};
        all.insert(all.end(), problems.begin(), problems.end());
        expectProblems(answer, all);
    }
}

// Programs of the portals' names stand for the portals: what counts is which files are in their memory.
TEST(Doctor, TellsPortalsThatWereStartedBeforeTheInstallation) {
    const Tree tree;
    const TempFolder folder;
    fs::create_directory(folder.path() / "printbackends");
    const std::string backEnd = folder.write("printbackends/libprintbackend-cups.so", "an ELF file");
    const std::string gtk3Module = tree.at(Tree::module());
    const std::string gtk4Module = tree.at(Tree::gtk4Module());
    const std::string older = " was started before the paper options were installed";
    const struct {
        const char* program;
        std::vector<std::string> files;
        std::string found;
    } cases[] = {
        {"some-other-program", {}, "none runs; "},
        {"xdg-desktop-portal-gtk", {backEnd}, "xdg-desktop-portal-gtk" + older},
        {"xdg-desktop-portal-gtk", {gtk3Module}, "of xdg-desktop-portal-gtk have the paper options"},
        {"xdg-desktop-portal-gnome", {}, "of xdg-desktop-portal-gnome have the paper options"},
        {"xdg-desktop-portal-gnome", {backEnd}, "xdg-desktop-portal-gnome" + older},
        {"xdg-desktop-portal-gnome", {backEnd, gtk4Module},
            "of xdg-desktop-portal-gnome have the paper options"},
    };
    for (const auto& [name, files, found] : cases) {
        SCOPED_TRACE(found);
        const fs::path program = folder.path() / name;
        fs::copy_file("/usr/bin/python3", program, fs::copy_options::overwrite_existing);
        std::vector<std::string> command{program, "-c",
            "import mmap, os, sys, time\n"
            "maps = [mmap.mmap(os.open(f, 0), 0, access=mmap.ACCESS_READ) for f in sys.argv[1:]]\n"
            "time.sleep(1000)\n"};
        command.insert(command.end(), files.begin(), files.end());
        const std::string bus = "unix:path=" + program.string();
        const BackgroundProcess portal(command, [&bus] {
            setenv("DBUS_SESSION_BUS_ADDRESS", (bus + ",guid=1").c_str(), 1);
            setenv("PYTHONHOME", "/usr", 1);
        });
        std::string said;
        EXPECT_TRUE(eventually([&, &found = found] {
            const Json answer =
                examine({{"DBUS_SESSION_BUS_ADDRESS", bus}, {"CUPS_SERVER", "/no/such/socket"},
                            {"LC_ALL", "C.UTF-8"}, {"LANGUAGE", ""}},
                    {"-q", "Office"}, 1, tree.at("bin/orvan"));
            const Json& station = answer["stations"].back();
            EXPECT_EQ(station["station"], "portal");
            said = station["found"];
            return said.find(found) != std::string::npos;
        })) << said;
    }
}

} // namespace
} // namespace orvan
