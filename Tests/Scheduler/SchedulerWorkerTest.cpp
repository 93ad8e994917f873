// Requests to schedulers that answer, do not, or misbehave.
#include "Platform/RunLoop.h"
#include "Scheduler/PrintScheduler.h"
#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

// A forked process's leaks are those of threads that did not come along.
static bool isForked = false;
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizer's name
extern "C" int __lsan_is_turned_off();
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off() {
    return isForked ? 1 : 0;
}
// NOLINTEND(bugprone-reserved-identifier)

namespace orvan {
namespace {

using namespace std::chrono_literals;
using Kind = SchedulerProblem::Kind;
using Then = ScriptedAnswer::Then;

void talkTo(const ScriptedServer& server) {
    cupsSetServer(("127.0.0.1:" + std::to_string(server.port())).c_str());
}

SchedulerProblem problemOfListing(SchedulerWorker::Duration time) {
    SchedulerProblem problem;
    EXPECT_FALSE(listQueues(time, problem));
    return problem;
}

TEST(SchedulerWorkerTest, TellsApartWhyThereIsNoAnswer) {
    constexpr const char* kWantsPassword =
        "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"CUPS\"\r\nContent-Length: 0\r\n\r\n";
    struct Case {
        ScriptedAnswer answer;
        SchedulerWorker::Duration time;
        Kind kind;
        const char* words;
    };
    for (const Case& test :
        {Case{{"/", kWantsPassword}, 100s, Kind::wantsPassword, "wants a password for CUPS-Get-Printers"},
            {{"/", "", Then::silence}, 0.3s, Kind::silent, "does not answer"},
            {{"/", wholeAnswer(std::string(9000, 'x')), Then::close, 2000}, 0.3s, Kind::silent,
                "does not answer"},
            {{"/", "HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\n\r\n"}, 100s, Kind::notPermitted,
                "refuses: "}}) {
        const ScriptedServer server({test.answer});
        talkTo(server);
        const SchedulerProblem problem = problemOfListing(test.time);
        EXPECT_EQ(problem.kind, test.kind) << problem.text;
        EXPECT_NE(problem.text.find(test.words), std::string::npos) << problem.text;
    }
    cupsSetServer("/no/such/socket");
    EXPECT_EQ(problemOfListing(100s).kind, Kind::notThere);
}

// A request holds one of four connections, and its asker may go.
TEST(SchedulerWorkerTest, LetsGoOfWhatNobodyWaitsFor) {
    const ScriptedServer server({{"/", "", Then::silence}});
    talkTo(server);
    using Nothing = bool;
    const auto question = [](SchedulerConnection& connection) {
        SchedulerProblem ignored;
        return scheduler::queues(connection, ignored).has_value();
    };
    bool isTold = false;
    {
        std::array<SchedulerRequest, SchedulerWorker::kMostConnections + 2> requests;
        for (std::size_t i = 0; i < requests.size(); ++i)
            requests.at(i) = SchedulerWorker::shared().start<Nothing>("queue" + std::to_string(i), 100s,
                question, [&isTold](std::optional<Nothing>) { isTold = true; });
        EXPECT_TRUE(eventually([&] { return server.requestCount() >= SchedulerWorker::kMostConnections; }));
    }
    // What follows about one of the queues would otherwise wait for the deadline.
    EXPECT_EQ(SchedulerWorker::shared().wait<int>("queue0", 50s, [](SchedulerConnection&) { return 7; }), 7);
    EXPECT_FALSE(isTold);

    // Who waits is told at the deadline, on the main loop: that there is no answer, or by the connection that
    // it has given up.
    std::optional<Nothing> answer = true;
    const SchedulerRequest late = SchedulerWorker::shared().start<Nothing>(
        "", 0.2s, question, [&](std::optional<Nothing> told) { answer = told; });
    EXPECT_TRUE(platform::runMainLoopUntil([&] { return !answer.value_or(false); }, 100s));
}

TEST(SchedulerWorkerTest, HoldsUpNeitherTheEndOfAProcessNorAFork) {
    const ScriptedServer server({{"/", "", Then::silence}});
    talkTo(server);
    const auto question = [](SchedulerConnection& connection) {
        SchedulerProblem ignored;
        return scheduler::queues(connection, ignored).has_value();
    };
    const SchedulerRequest before = SchedulerWorker::shared().start<bool>("", 100s, question, [](auto) {});
    EXPECT_TRUE(eventually([&] { return server.requestCount() > 0; }));
    for (int i = 1; i <= 10; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            isForked = true;
            // Threads do not come along, so the child has a worker of its own.
            const SchedulerRequest request =
                SchedulerWorker::shared().start<bool>("", 100s, question, [](auto) {});
            SchedulerWorker::shared().wait<bool>("", 100s, [](SchedulerConnection&) { return true; });
            std::exit(7);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : status, 7);
    }
}

TEST(SchedulerWorkerTest, TakesNoSignals) {
    SchedulerWorker::shared().wait<bool>("", 100s, [](SchedulerConnection&) {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        for (const int signal : {SIGINT, SIGTERM, SIGCHLD, SIGPIPE, SIGALRM, SIGUSR1})
            EXPECT_EQ(sigismember(&blocked, signal), 1) << signal;
        return true;
    });
}

class QueueQuestions : public ::testing::Test {
protected:
    void SetUp() override {
        if (SchedulerProcess::findProgram().empty()) GTEST_SKIP() << "cupsd is not installed";
        Failure failure;
        system_ = PrintingSystem::start({}, &failure);
        ASSERT_TRUE(system_) << failure.value_or("");
        system_->adoptEnvironment();
        ASSERT_EQ(system_->addQueue({"Office", ORVAN_DRIVER_PPD}), std::nullopt);
    }

    std::unique_ptr<PrintingSystem> system_;
};

TEST_F(QueueQuestions, AreAskedAgainOnANewConnectionWhenTheSchedulerWasRestarted) {
    SchedulerProblem problem;
    EXPECT_TRUE(listQueues(100s, problem)) << problem.text;
    ASSERT_EQ(system_->restartScheduler(), std::nullopt);
    platform::Failure error;
    EXPECT_TRUE(listQueues(100s, problem)) << problem.text;
    EXPECT_TRUE(fetchQueuePPDFile("Office", 100s, error)) << error.value_or("");
}

TEST_F(QueueQuestions, HaveAnswersForNamesThatAreNoQueues) {
    for (const std::string name : {"", "Nowhere", "../admin", "Office?x", "a/b"}) {
        platform::Failure error;
        EXPECT_FALSE(fetchQueuePPDFile(name, 100s, error)) << name;
        EXPECT_NE(error.value_or("").find("there is no queue"), std::string::npos) << error.value_or("");
    }
}

} // namespace
} // namespace orvan
