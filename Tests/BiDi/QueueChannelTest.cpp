// The channel on releases on which the printing system carries its jobs, with a scheduler of the test's own.
#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "Tests/BiDi/ChannelFixture.h"

#include <cups/ipp.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using State = OrvanBiDi::State;
using Names = std::vector<std::string>;

const testing::Environment* const kSettings =
    testing::AddGlobalTestEnvironment(new ChannelEnvironment("10.9.0"));

class QueueChannelTest : public ChannelTest {
protected:
    void SetUp() override {
        if (SchedulerProcess::findProgram().empty()) GTEST_SKIP() << "cupsd is not installed";
        start({});
    }

    void TearDown() override { ::unsetenv("TMPDIR"); }

    void start(const std::map<std::string, std::string>& filterEnvironment) {
        PrintingSystemOptions options;
        options.folder.extraFilters = {ORVAN_TEST_FILTER};
        options.folder.programEnvironment = filterEnvironment;
        Failure failure;
        system_ = PrintingSystem::start(options, &failure);
        ASSERT_TRUE(system_) << failure.value_or("");
        system_->adoptEnvironment();
        // Temporary files are counted.
        ::setenv("TMPDIR", system_->folder().home().c_str(), 1);
        ppd_ = writeFile(
            "queue.ppd", ppdText("*cupsCommands: \"A B\"\n*cupsFilter2: \"application/vnd.cups-command "
                                 "application/vnd.cups-raw 0 bidi-test-filter\"\n"));
        ASSERT_EQ(system_->addQueue({"orvan", ppd_, "file:///dev/null"}), std::nullopt);
    }

    std::vector<PrintJob> jobs() const {
        std::vector<PrintJob> all;
        EXPECT_EQ(system_->jobs("orvan", &all), std::nullopt);
        return all;
    }
    std::ptrdiff_t temporaryFiles() const {
        return std::distance(std::filesystem::directory_iterator(system_->folder().home()),
            std::filesystem::directory_iterator());
    }
    static bool runUntilSpent(const OrvanBiDi& channel) {
        return runLoopUntil([&channel] { return channel.state() == State::spent; });
    }

    std::unique_ptr<PrintingSystem> system_;
    std::filesystem::path ppd_;
};

TEST_F(QueueChannelTest, WaitsForTheJobAndDeliversFromThePPD) {
    auto channel = channelFor(ppd_);
    channel->dispatchCommands(CommandList{"B", "A"});
    ASSERT_TRUE(runUntilSpent(*channel));
    EXPECT_EQ(delegate_->commands(), (Names{"A", "B"})) << system_->folder().errorLogTail(30);
    EXPECT_EQ(delegate_->text(0, "job"), channel->commandJobWithCommands(CommandList{"B", "A"}));
    ASSERT_EQ(jobs().size(), 1U);
    EXPECT_EQ(channel->delegate(), nullptr);
    EXPECT_EQ(delegate_.use_count(), 1);
    EXPECT_EQ(temporaryFiles(), 0);
    // The scheduler found nothing wrong with any request.
    EXPECT_EQ(system_->folder().errorLogTail(1000).find("[Client"), std::string::npos);
    const std::weak_ptr<OrvanBiDi> watched = channel;
    channel.reset();
    EXPECT_TRUE(watched.expired());

    // What an earlier job left in the PPD is delivered, too.
    delegate_->responses.clear();
    channel = channelFor(ppd_);
    channel->dispatchCommands(CommandList{"B"});
    ASSERT_TRUE(runUntilSpent(*channel));
    EXPECT_EQ(delegate_->commands(), (Names{"A", "B"}));
    EXPECT_NE(delegate_->text(0, "job"), delegate_->text(1, "job"));

    // A spent channel submits, and that is all.
    delegate_->responses.clear();
    channel->setDelegate(delegate_);
    channel->dispatchCommands(CommandList{"B"});
    EXPECT_EQ(channel->state(), State::spent);
    EXPECT_EQ(jobs().size(), 3U);
    EXPECT_TRUE(delegate_->responses.empty());

    // A queue that takes no job: the first look finds none, within the dispatch.
    ASSERT_TRUE(system_->waitForJob(jobs().back().id, 100s)->isSettled());
    ASSERT_EQ(system_->rejectJobs("orvan"), std::nullopt);
    channel = channelFor(ppd_);
    channel->dispatchCommands(CommandList{"A"});
    EXPECT_EQ(channel->state(), State::spent);
    EXPECT_EQ(delegate_->commands(), (Names{"A", "B"}));
}

TEST_F(QueueChannelTest, GoesOnWaitingWhileTheJobIsThere) {
    ASSERT_EQ(system_->holdNewJobs("orvan"), std::nullopt);
    auto channel = channelFor(ppd_);
    EXPECT_FALSE(channel->isCommandJobRunning());
    channel->dispatchCommands(CommandList{"A"});
    EXPECT_EQ(channel->state(), State::waiting);
    EXPECT_TRUE(channel->isCommandJobRunning());
    channel->dispatchCommands(CommandList{"B"});

    // Another channel waits for the same job; the run loop alone keeps it.
    std::weak_ptr<OrvanBiDi> other;
    const auto otherDelegate = std::make_shared<RememberingDelegate>();
    {
        const auto temporary = channelFor(ppd_);
        temporary->setDelegate(otherDelegate);
        temporary->dispatchCommands(CommandList{"A"});
        other = temporary;
    }
    // And one whose wait ends with the next tick, and one that is invalidated at once.
    const auto marked = channelFor(ppd_);
    marked->dispatchCommands(CommandList{"A"});
    marked->setIsInvalidated(true);
    EXPECT_EQ(marked->state(), State::waiting);
    const auto invalidated = channelFor(ppd_);
    invalidated->dispatchCommands(CommandList{"A"});
    invalidated->invalidate();
    EXPECT_EQ(invalidated->state(), State::spent);
    EXPECT_EQ(invalidated->delegate(), nullptr);

    EXPECT_TRUE(runUntilSpent(*marked));
    EXPECT_EQ(marked->delegate(), nullptr);
    EXPECT_FALSE(runLoopUntil([&] { return channel->state() != State::waiting; }, 0.7));
    EXPECT_TRUE(delegate_->responses.empty());
    ASSERT_EQ(jobs().size(), 1U);
    EXPECT_EQ(jobs()[0].name, "Printer Status");
    EXPECT_FALSE(other.expired());

    ASSERT_EQ(system_->releaseJob(jobs()[0].id), std::nullopt);
    EXPECT_TRUE(runLoopUntil([&] { return channel->state() == State::spent && other.expired(); }));
    EXPECT_EQ(delegate_->commands(), Names{"A"});
    EXPECT_EQ(otherDelegate->commands(), Names{"A"});
    EXPECT_EQ(temporaryFiles(), 0);
}

TEST_F(QueueChannelTest, TheDelegateMayEndTheChannelWhileItIsTold) {
    auto channel = channelFor(ppd_);
    const std::weak_ptr<OrvanBiDi> watched = channel;
    delegate_->onResponse = [&] {
        if (channel == nullptr) return;
        channel->dispatchCommands(CommandList{"A"});
        channel->invalidate();
        channel.reset();
    };
    channel->dispatchCommands(CommandList{"A", "B"});
    EXPECT_TRUE(runLoopUntil([&] { return watched.expired(); }));
    EXPECT_EQ(delegate_->commands(), Names{"A"});
    EXPECT_EQ(temporaryFiles(), 0);
}

TEST_F(QueueChannelTest, AStoppedJobKeepsTheWaitGoing) {
    system_.reset();
    start({{"ORVAN_TEST_FILTER_FAILS", "1"}});
    const auto channel = channelFor(ppd_);
    channel->dispatchCommands(CommandList{"A"});
    ASSERT_TRUE(runLoopUntil([&] { return jobs()[0].state == IPP_JSTATE_STOPPED; }));
    EXPECT_FALSE(runLoopUntil([&] { return channel->state() != State::waiting; }, 0.7));
    channel->invalidate();
    EXPECT_EQ(channel->state(), State::spent);
}

TEST_F(QueueChannelTest, AFrozenSchedulerHoldsNobodyUp) {
    // While a wait goes on.
    ASSERT_EQ(system_->holdNewJobs("orvan"), std::nullopt);
    auto channel = channelFor(ppd_);
    channel->dispatchCommands(CommandList{"A"});
    system_->scheduler().suspend();
    EXPECT_TRUE(runUntilSpent(*channel));

    // From the beginning, and for a printer object with each of its requests.
    channel = channelFor(ppd_);
    channel->dispatchCommands(CommandList{"A"});
    EXPECT_EQ(channel->state(), State::spent);
    platform::PMPrinter printer("orvan");
    std::string text;
    EXPECT_NE(platform::PMPrinterSendCommand(printer, "#CUPS-COMMAND", "Printer Status", nullptr), 0);
    EXPECT_NE(platform::PMPrinterCopyDeviceURI(printer, &text), 0);
    EXPECT_NE(platform::PMPrinterSendCommand(printer, "#CUPS-COMMAND", "Printer Status", nullptr), 0);
    EXPECT_NE(platform::PMPrinterCopyDeviceURI(printer, &text), 0);
    EXPECT_TRUE(printer.patience().isUsedUp()); // it is one for all of them
    system_->scheduler().resume();
    EXPECT_EQ(platform::PMPrinterCopyDeviceURI(printer, &text), 0);
    EXPECT_FALSE(printer.patience().isUsedUp());
}

} // namespace
} // namespace orvan
