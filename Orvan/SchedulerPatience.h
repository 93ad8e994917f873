// How long a command waits for a scheduler that does not answer.
#pragma once

#include "Scheduler/SchedulerWorker.h"

#include <algorithm>
#include <chrono>

namespace orvan {

// The patience of one round of questions with the scheduler (Scheduler/PrintScheduler.h). A request that
// took all of it was the last one of the round: a frozen scheduler costs a command this once, however many
// printers it asks of. One thread.
class SchedulerPatience {
public:
    // Of a command without a time-out of its own.
    static constexpr std::chrono::seconds kAll{10};
    // Of one that does not wait for the printer.
    static constexpr std::chrono::seconds kLeast{1};

    // The patience of a command with this time-out.
    explicit SchedulerPatience(SchedulerWorker::Duration timeout)
        : time_(std::max(timeout, SchedulerWorker::Duration(kLeast))) {}

    // For one request.
    SchedulerWorker::Duration time() const { return time_; }

    // Calls `request` with the patience and answers what it answers; an answer of the type's own default, and
    // no call, once the patience is used up.
    template <class Request>
    auto ask(const Request& request) -> decltype(request(SchedulerWorker::Duration())) {
        if (isUsedUp_) return {};
        const auto start = std::chrono::steady_clock::now();
        auto answer = request(time_);
        isUsedUp_ = std::chrono::steady_clock::now() - start >= time_;
        return answer;
    }
    bool isUsedUp() const { return isUsedUp_; }

private:
    SchedulerWorker::Duration time_;
    bool isUsedUp_ = false;
};

} // namespace orvan
