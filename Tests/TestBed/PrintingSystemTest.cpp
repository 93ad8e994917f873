#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr const char* kDocument = "%!PS-Adobe-3.0\n%%Pages: 1\n%%EndComments\n%%Page: 1 1\nshowpage\n%%EOF\n";

class PrintingSystemTest : public testing::Test {
protected:
    void SetUp() override {
        if (SchedulerProcess::findProgram().empty()) GTEST_SKIP() << "cupsd is not installed";
        Failure failure;
        system_ = PrintingSystem::start({}, &failure);
        ASSERT_TRUE(system_) << failure.value_or("");
        document_ = writeFile("document.ps", kDocument);
    }

    fs::path writeFile(const std::string& name, const std::string& text) const {
        fs::path path = system_->folder().home() / name;
        std::ofstream(path) << text;
        return path;
    }

    // Adds the queue and checks that this went well.
    void addQueue(const std::string& name, const std::string& device) const {
        EXPECT_EQ(system_->addQueue({name, ORVAN_DRIVER_PPD, device}), std::nullopt);
    }

    int print(const std::string& queue, const std::map<std::string, std::string>& options) const {
        int job = 0;
        EXPECT_EQ(system_->print(queue, document_, options, &job), std::nullopt);
        return job;
    }

    std::unique_ptr<PrintingSystem> system_;
    fs::path document_;
};

TEST_F(PrintingSystemTest, CarriesAJobAndItsPicksToTheDevice) {
    addQueue("orvan", system_->fileDevice("orvan"));
    const int number = print("orvan", {{"MediaType", "CustomType2"}, {"OVNMismatch", "Print"}});

    const std::optional<PrintJob> job = system_->waitForJob(number, 30s);
    ASSERT_TRUE(job);
    EXPECT_EQ(job->state, IPP_JSTATE_COMPLETED) << system_->folder().errorLogTail(20);
    EXPECT_EQ(job->queue, "orvan");
    EXPECT_EQ(job->name, "document.ps");
    EXPECT_EQ(job->attribute("MediaType"), "CustomType2");
    EXPECT_EQ(job->attribute("OVNMismatch"), "Print");
    EXPECT_EQ(job->attribute("Slipsheet"), std::nullopt);
    EXPECT_NE(contents(system_->outputFile("orvan")).find("%%BeginFeature: *MediaType CustomType2"),
        std::string::npos);
    EXPECT_EQ(contents(system_->spooledDocument(number)), kDocument);
}

TEST_F(PrintingSystemTest, QueuesAndJobsSurviveASchedulerThatFails) {
    addQueue("orvan", "file:///dev/null");
    ASSERT_EQ(system_->pauseQueue("orvan"), std::nullopt);
    const int number = print("orvan", {{"MediaType", "Bond"}});

    system_->scheduler().suspend();
    EXPECT_TRUE(system_->scheduler().isRunning());
    system_->scheduler().resume();
    EXPECT_TRUE(system_->waitForJob(number, 0s));
    system_->scheduler().kill();
    EXPECT_FALSE(system_->waitForJob(number, 0s));
    EXPECT_NE(system_->pauseQueue("orvan"), std::nullopt);
    ASSERT_EQ(system_->restartScheduler(), std::nullopt);

    ASSERT_EQ(system_->resumeQueue("orvan"), std::nullopt);
    const std::optional<PrintJob> job = system_->waitForJob(number, 30s);
    ASSERT_TRUE(job);
    EXPECT_EQ(job->state, IPP_JSTATE_COMPLETED);
    EXPECT_EQ(job->attribute("MediaType"), "Bond");
}

TEST_F(PrintingSystemTest, LeavesNothingBehindWhenItDoesNotComeUp) {
    const fs::path parent = system_->folder().home() / "p";
    fs::create_directory(parent);
    const fs::path silent = writeFile("silent", "#!/bin/sh\necho out of ink; exec sleep 60\n");
    fs::permissions(silent, fs::perms::owner_all);
    const fs::path longParent = parent / std::string(90, 'x');
    fs::create_directory(longParent);
    const struct {
        fs::path scheduler;
        fs::path parent;
        const char* reason;
    } cases[] = {
        {"/bin/false", parent, "ended at once"},
        {silent, parent, "does not answer. Its last messages:\nout of ink"},
        {{}, longParent, "too long a path"},
        {{}, "/nonexistent", "No such file or directory"},
    };
    for (const auto& [scheduler, place, reason] : cases) {
        PrintingSystemOptions options;
        options.scheduler = scheduler;
        options.folder.parent = place;
        if (scheduler == silent) options.patience = 3s;
        Failure failure;
        EXPECT_FALSE(PrintingSystem::start(options, &failure));
        EXPECT_NE(failure.value_or("").find(reason), std::string::npos) << failure.value_or("");
    }
    fs::remove(longParent);
    EXPECT_TRUE(fs::is_empty(parent));
}

} // namespace
} // namespace orvan
