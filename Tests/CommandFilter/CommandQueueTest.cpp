// The command filter in a real scheduler's queue, with all that is around it: `orvan` asks, a simulated
// printer answers, and other clients of the scheduler see what it said.
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/SimulatedPrinter.h"
#include "Tests/Support/WebServer.h"

#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <sstream>

namespace orvan {
namespace {

// The effective user of a process, from its status as proc(5) has it.
std::string userOf(const std::string& status) {
    std::istringstream words(status.substr(std::min(status.find("Uid:"), status.size())));
    std::string user;
    words >> user >> user >> user;
    return user;
}

class FilterQueue : public CommandQueue {
protected:
    std::string papers(
        const std::string& queue, const std::string& release = "10.9.0", const Environment& more = {}) const {
        const ProgramEnd end = orvan({"papers", "-q", queue, "--release", release}, more);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        return end.output;
    }
    // What a client that knows nothing of us says of the queue.
    std::string attributes(const std::string& queue) const {
        return run({"/usr/bin/lpoptions", "-p", queue}).output;
    }
};

TEST_F(FilterQueue, CarriesThePrintersAnswersBothWaysAndItsLevelsToOtherClients) {
    const std::string document = contents(ORVAN_STATUS_DOCUMENT);
    SimulatedPrinter printer({"--log"}, document);
    addQueue("Office", printer);
    addQueue("Direct", ORVAN_COMMAND_FILTER, printer.url(), printer.snmpAgent());
    const std::string before = papers("Office");
    EXPECT_NE(before.find("Delivery notes\t7\tRecycled\n"), std::string::npos) << before;
    EXPECT_EQ(papers("Direct", "10.6.8"), before);
    const ProgramEnd status = orvan({"status", "-q", "Office"});
    EXPECT_NE(status.output.find("Job accounting\n  counts 1\n"), std::string::npos)
        << status.output << status.errors;
    const std::string low = attributes("Office");
    for (const char* const words : {"Yellow\\ toner,Black\\ toner", "marker-levels=100,64,7,38",
             "#00FFFF,#FF00FF,#FFFF00,#000000", "media-low-report", "toner-low-report"})
        EXPECT_NE(low.find(words), std::string::npos) << words << " in\n" << low;

    std::string renamed = document;
    replace(renamed, "Delivery notes", "Lieferscheine grün");
    replace(renamed, "<status>Low</status>", "<status>Full</status>");
    replace(renamed, "<status>7</status>", "<status>OK</status>");
    printer.replaceDocument(renamed);
    std::string expected = before;
    replace(expected, "Delivery notes", "Lieferscheine grün");
    EXPECT_EQ(papers("Office"), expected);
    EXPECT_EQ(papers("Direct", "10.6.8"), expected);
    const std::string well = attributes("Office");
    EXPECT_NE(well.find("marker-levels=100,64,100,38"), std::string::npos) << well;
    EXPECT_NE(well.find("printer-state-reasons=none"), std::string::npos) << well;

    // A printer that is off leaves what is known, and no job in the way.
    printer.end();
    const ProgramEnd off = orvan({"papers", "-q", "Office"});
    EXPECT_EQ(off.output, expected);
    EXPECT_NE(
        off.errors.find("printer Office did not answer: The printer at http://127.0.0.1:"), std::string::npos)
        << off.errors;
    std::vector<PrintJob> jobs;
    ASSERT_EQ(system_->jobs("Office", &jobs), std::nullopt);
    for (const PrintJob& job : jobs)
        EXPECT_EQ(job.state, IPP_JSTATE_COMPLETED);
}

// A question prints nothing and is not held, whatever the queue's defaults are.
TEST_F(FilterQueue, IsAskedWithoutCoverSheets) {
    SimulatedPrinter printer({}, contents(ORVAN_STATUS_DOCUMENT));
    const TempFolder folder;
    const auto ppd =
        folder.write("queue.ppd", queuePPD("commandtoorvan", printer.url(), printer.snmpAgent()));
    ASSERT_EQ(system_->addQueue({"Covered", ppd, system_->fileDevice("Covered")}), std::nullopt);
    const auto setDefaults = [this](const std::string& sheets, const std::string& hold) {
        EXPECT_EQ(run({"/usr/sbin/lpadmin", "-p", "Covered", "-o", "job-sheets-default=" + sheets, "-o",
                          "job-hold-until-default=" + hold})
                      .exitCode,
            0);
    };
    const auto printed = [this] { return contents(system_->outputFile("Covered")); };
    setDefaults("standard,standard", "indefinite");
    EXPECT_NE(papers("Covered").find("Delivery notes"), std::string::npos);
    EXPECT_EQ(printed(), "");

    // Which a document does not escape.
    setDefaults("standard,none", "no-hold");
    const auto document =
        folder.write("document.ps", "%!PS-Adobe-3.0\n%%Pages: 1\n%%Page: 1 1\nshowpage\n%%EOF\n");
    int job = 0;
    ASSERT_EQ(system_->print("Covered", document, {}, &job), std::nullopt);
    EXPECT_TRUE(system_->waitForJob(job, std::chrono::seconds(100))->isSettled());
    EXPECT_NE(printed(), "");
}

TEST_F(FilterQueue, RunsItsFilterAsTheSchedulersUser) {
    if (geteuid() != 0) GTEST_SKIP() << "only root's scheduler runs its filters as another user";
    const SimulatedPrinter printer({"--misbehave", "slow"}); // slower than the filter's patience
    addQueue("Office", "commandtoorvan", printer.url());
    const TempFolder folder;
    int job = 0;
    ASSERT_EQ(
        system_->print("Office", folder.write("job", "#CUPS-COMMAND\ncom.orvan.DeviceStatus\n"), {}, &job),
        std::nullopt);
    std::string user;
    eventually([&] {
        for (const auto& process : std::filesystem::directory_iterator("/proc"))
            if (contents(process.path() / "comm") == "commandtoorvan\n" &&
                contents(process.path() / "environ").find(system_->folder().path()) != std::string::npos)
                user = userOf(contents(process.path() / "status"));
        return !user.empty();
    });
    EXPECT_EQ(user, std::to_string(getpwnam("lp")->pw_uid)) << system_->folder().errorLogTail(20);
}

TEST_F(FilterQueue, ReachesAPrinterBehindTLSAndAPassword) {
    if (!WebServer::isInstalled()) GTEST_SKIP() << "nginx is not installed";
    const WebServer server(contents(ORVAN_STATUS_DOCUMENT));
    const SimulatedPrinter accounting;
    addQueue("Modern", "commandtoorvan", server.modern(), accounting.snmpAgent());
    addQueue("Old", "commandtoorvan", server.old("/status.xml"), accounting.snmpAgent());
    EXPECT_NE(papers("Old").find("Delivery notes\t7\tRecycled\n"), std::string::npos);
    const ProgramEnd refused = orvan({"papers", "-q", "Modern"});
    EXPECT_EQ(refused.output, "");
    EXPECT_NE(refused.errors.find("wants a user name and a password"), std::string::npos) << refused.errors;
    const ProgramEnd job = run({"/bin/sh", "-c",
        "printf '#CUPS-COMMAND\\ncom.orvan.CustomPaperTypes username=user password=secret' | lp -s -d Modern "
        "-t 'Printer Status' -"});
    ASSERT_EQ(job.exitCode, 0) << job.errors;
    std::vector<PrintJob> jobs;
    ASSERT_EQ(system_->jobs("Modern", &jobs), std::nullopt);
    system_->waitForJob(jobs.back().id, std::chrono::seconds(100));
    EXPECT_NE(
        contents(system_->folder().path() / "etc/ppd/Modern.ppd").find("com.orvan.CustomPaperTypes0000"),
        std::string::npos);
    EXPECT_EQ(system_->folder().errorLogTail(1000).find("secret"), std::string::npos);
}

} // namespace
} // namespace orvan
