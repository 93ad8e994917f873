// How long a command waits for a scheduler that does not answer.
#pragma once

#include <chrono>

namespace orvan {

// The patience of one round of questions with the scheduler (Scheduler/PrintScheduler.h). A request that
// took all of it was the last one of the round: a frozen scheduler costs a command this once, however many
// printers it asks of. One thread.
class SchedulerPatience {
public:
    // For one request.
    static constexpr std::chrono::seconds kAll{5};

    // Calls `request` with the patience and answers what it answers; an answer of the type's own default, and
    // no call, once the patience is used up.
    template <class Request>
    auto ask(const Request& request) -> decltype(request(kAll)) {
        if (isUsedUp_) return {};
        const auto start = std::chrono::steady_clock::now();
        auto answer = request(kAll);
        isUsedUp_ = std::chrono::steady_clock::now() - start >= kAll;
        return answer;
    }
    bool isUsedUp() const { return isUsedUp_; }

private:
    bool isUsedUp_ = false;
};

} // namespace orvan
