// A queue of the print scheduler as the printer of a dialog or a command.
#pragma once

#include "Platform/PMPrinter.h"
#include "Scheduler/JobWatch.h"
#include "Scheduler/PrintScheduler.h"
#include "Scheduler/SchedulerWorker.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvan {

struct SchedulerPrinterOptions {
    SchedulerWorker::Duration deadline = SchedulerWorker::kDialogDeadline; // of each request
    std::size_t answerBudget = std::size_t{16} * 1024 * 1024;              // as PMPrinter says
    // Whether command files are submitted. When not, whoever hands one over gets the queue's PPD as it is.
    bool asksPrinter = true;
};

// Begins with what was fetched of the queue before, so that nothing has to be asked when a channel
// dispatches: only a job that was known then, or was handed over since, counts as active. What it does in the
// scheduler ends with it. Main thread.
class SchedulerPrinter final : public platform::PMPrinter {
public:
    SchedulerPrinter(FetchedQueue fetched, SchedulerPrinterOptions options);
    ~SchedulerPrinter() override;

    const std::string& queueName() const override { return fetched_.queue.name; }
    std::string deviceURI() const override { return fetched_.queue.deviceURI; }
    std::string descriptionPath() const override { return fetched_.ppd->file().string(); }
    bool sendCommand(std::string_view text, const std::string& title, const Options& options) override;
    std::vector<std::string> activeJobTitles() override;
    platform::PPDRecord takeFreshPPD() override { return std::move(freshPPD_); }
    std::size_t answerBudget() const override { return options_.answerBudget; }

    // The number of the last job that the scheduler took; 0 for none.
    int submittedJob() const { return submittedJob_; }
    // Whether it has not said yet whether it takes one.
    bool isSubmitting() const { return state_ == State::sending; }
    // Why it did not take the last one that was handed over, or does not tell what became of it; of kind none
    // when all went well so far.
    const SchedulerProblem& refusal() const { return refusal_; }
    // Told the same as soon as it is known.
    void setRefusalHandler(std::function<void(const std::string&)> handler) {
        onRefusal_ = std::move(handler);
    }
    // Cancels the last job that was handed over, also when the scheduler has not said yet whether it takes
    // it. Runs the main loop for at most `time`, and waits as long again: for a program that has no loop
    // running.
    void takeBack(SchedulerWorker::Duration time);
    // This person's active jobs in the queue, as they were seen last.
    const std::vector<QueueJob>& activeJobs() const { return fetched_.activeJobs; }
    // Those whose end was waited for and has come, as they ended, oldest first.
    const std::vector<QueueJob>& endedJobs() const { return endedJobs_; }
    // The queue, as it was before the panel.
    const SchedulerQueue& queue() const { return fetched_.queue; }

private:
    enum class State {
        idle,     // nothing is under way
        sending,  // a job is handed over, and the scheduler has not answered yet
        watching, // for a job to go, the one that was handed over or another
        fetching, // one has gone, and the queue's new PPD is on its way
    };
    class Watcher;

    void watch();
    void seen(const SeenJobs& seen);
    void refused(const SchedulerProblem& why);
    void fetchPPD(std::vector<QueueJob> goneJobs);

    bool isJobGone() const;
    std::vector<QueueJob> jobsGoneSince(const std::vector<QueueJob>& before) const;

    FetchedQueue fetched_;
    SchedulerPrinterOptions options_;
    State state_ = State::idle;
    std::vector<std::string> titles_; // of the jobs that were there when there was last something to tell
    std::string sentTitle_;           // of the job that was handed over and has not gone; "" for none
    std::chrono::steady_clock::time_point lastAsked_;
    int submittedJob_ = 0;
    SchedulerProblem refusal_;
    std::vector<QueueJob> endedJobs_;
    std::function<void(const std::string&)> onRefusal_;
    platform::PPDRecord freshPPD_;
    SchedulerRequest request_;
    std::shared_ptr<Watcher> watcher_;
};

} // namespace orvan
