// How far this process's jobs are in the scheduler's queues.
#pragma once

#include "Platform/RunLoop.h"
#include "Scheduler/PrintScheduler.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace orvan {

// This person's active jobs in all queues. Without an answer there are none, and `problem` says why.
struct SeenJobs {
    std::vector<QueueJob> jobs;
    SchedulerProblem problem;
};

// Looks at this person's active jobs in all queues, for everybody who waits for one: every 100 ms for
// somebody who has waited less than 5 s, every 0.5 s within the first minute, every 5 s from then on. Main
// thread.
class JobWatch {
public:
    class Watcher {
    public:
        virtual ~Watcher() = default;
        // What a look that began after watch() has seen.
        virtual void seen(const SeenJobs& jobs) = 0;
    };

    // The process's one; never destroyed.
    static JobWatch& shared();
    JobWatch(const JobWatch&) = delete;
    JobWatch& operator=(const JobWatch&) = delete;

    // The watcher is told each look until it goes, or is watched no more.
    void watch(const std::shared_ptr<Watcher>& watcher, SchedulerWorker::Duration deadline);
    void unwatch(const Watcher& watcher);

private:
    using Clock = std::chrono::steady_clock;
    struct Entry {
        std::weak_ptr<Watcher> watcher;
        Clock::time_point since;
        SchedulerWorker::Duration deadline; // of a look
    };

    JobWatch() = default;
    void schedule();
    void look();
    void tell(Clock::time_point begin, const SeenJobs& seen);
    bool dropGone();

    std::vector<Entry> entries_;
    std::shared_ptr<platform::RepeatingTimer> timer_;
    std::optional<SchedulerRequest> request_; // the look that is under way
};

} // namespace orvan
