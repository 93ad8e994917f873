// The channel on releases on which the printing system carries its jobs, with a scheduler of the test's own.
#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "Tests/BiDi/ChannelFixture.h"
#include "Tests/Support/QueuePrinter.h"

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
    std::shared_ptr<OrvanBiDi> channelForQueue() { return channelFor(ppd_, queuePrinter("orvan")); }
    static bool runUntilSpent(const OrvanBiDi& channel) {
        return runLoopUntil([&channel] { return channel.state() == State::spent; });
    }

    std::unique_ptr<PrintingSystem> system_;
    std::filesystem::path ppd_;
};

TEST_F(QueueChannelTest, WaitsForTheJobAndDeliversFromThePPD) {
    auto channel = channelForQueue();
    channel->dispatchCommands(CommandList{"B", "A"});
    ASSERT_TRUE(runUntilSpent(*channel));
    EXPECT_EQ(delegate_->commands(), (Names{"A", "B"})) << system_->folder().errorLogTail(30);
    EXPECT_EQ(delegate_->text(0, "job"), channel->commandJobWithCommands(CommandList{"B", "A"}));
    ASSERT_EQ(jobs().size(), 1U);
    EXPECT_EQ(channel->delegate(), nullptr);
    EXPECT_EQ(delegate_.use_count(), 1);
    // The scheduler found nothing wrong with any request.
    EXPECT_EQ(system_->folder().errorLogTail(1000).find("[Client"), std::string::npos);
    const std::weak_ptr<OrvanBiDi> watched = channel;
    channel.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(temporaryFiles(), 0);

    // What an earlier job left in the PPD is delivered, too.
    delegate_->responses.clear();
    channel = channelForQueue();
    channel->dispatchCommands(CommandList{"B"});
    ASSERT_TRUE(runUntilSpent(*channel));
    EXPECT_EQ(delegate_->commands(), (Names{"A", "B"}));
    EXPECT_NE(delegate_->text(0, "job"), delegate_->text(1, "job"));

    // A spent channel submits, and that is all.
    delegate_->responses.clear();
    channel->setDelegate(delegate_);
    channel->dispatchCommands(CommandList{"B"});
    EXPECT_EQ(channel->state(), State::spent);
    EXPECT_TRUE(runLoopUntil([this] { return jobs().size() == 3U; }));
    EXPECT_TRUE(delegate_->responses.empty());

    // A queue that takes no job still has the answers of earlier, and they are not told within the dispatch.
    ASSERT_TRUE(system_->waitForJob(jobs().back().id, 100s)->isSettled());
    ASSERT_EQ(system_->rejectJobs("orvan"), std::nullopt);
    const auto refused = queuePrinter("orvan");
    channel = channelFor(ppd_, refused);
    channel->dispatchCommands(CommandList{"A"});
    EXPECT_EQ(channel->state(), State::waiting);
    ASSERT_TRUE(runUntilSpent(*channel));
    EXPECT_EQ(delegate_->commands(), (Names{"A", "B"}));
    EXPECT_NE(refused->refusal().text.find("refuses: "), std::string::npos);
}

TEST_F(QueueChannelTest, GoesOnWaitingWhileTheJobIsThere) {
    ASSERT_EQ(system_->holdNewJobs("orvan"), std::nullopt);
    auto channel = channelForQueue();
    EXPECT_FALSE(channel->isCommandJobRunning());
    channel->dispatchCommands(CommandList{"A"});
    EXPECT_EQ(channel->state(), State::waiting);
    EXPECT_TRUE(channel->isCommandJobRunning());
    channel->dispatchCommands(CommandList{"B"});

    // Another channel waits for the same job; the run loop alone keeps it.
    std::weak_ptr<OrvanBiDi> other;
    const auto otherDelegate = std::make_shared<RememberingDelegate>();
    {
        const auto temporary = channelForQueue();
        temporary->setDelegate(otherDelegate);
        temporary->dispatchCommands(CommandList{"A"});
        other = temporary;
    }
    // And one whose wait ends with the next tick, and one that is invalidated at once.
    const auto marked = channelForQueue();
    marked->dispatchCommands(CommandList{"A"});
    marked->setIsInvalidated(true);
    EXPECT_EQ(marked->state(), State::waiting);
    const auto invalidated = channelForQueue();
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
}

TEST_F(QueueChannelTest, TheDelegateMayEndTheChannelWhileItIsTold) {
    auto channel = channelForQueue();
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
    const auto channel = channelForQueue();
    channel->dispatchCommands(CommandList{"A"});
    ASSERT_TRUE(runLoopUntil([&] { return !jobs().empty() && jobs()[0].state == IPP_JSTATE_STOPPED; }));
    EXPECT_FALSE(runLoopUntil([&] { return channel->state() != State::waiting; }, 0.7));
    channel->invalidate();
    EXPECT_EQ(channel->state(), State::spent);
}

TEST_F(QueueChannelTest, AFrozenSchedulerEndsTheWait) {
    ASSERT_EQ(system_->holdNewJobs("orvan"), std::nullopt);
    const auto printer = queuePrinter("orvan", {.deadline = 500ms});
    const auto channel = channelFor(ppd_, printer);
    channel->dispatchCommands(CommandList{"A"});
    EXPECT_TRUE(runLoopUntil([&] { return printer->submittedJob() != 0; }));
    system_->scheduler().suspend();
    EXPECT_TRUE(runUntilSpent(*channel));
    EXPECT_TRUE(delegate_->responses.empty());
    platform::Failure error;
    EXPECT_FALSE(fetchQueue("orvan", 100ms, error));
    EXPECT_NE(error.value_or("").find("does not answer"), std::string::npos);
    system_->scheduler().resume();
    EXPECT_TRUE(fetchQueue("orvan", 100s, error));
}

} // namespace
} // namespace orvan
