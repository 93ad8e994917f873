#include "Scheduler/JobWatch.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvan {
namespace {

using namespace std::chrono_literals;

// The pause between two looks, in seconds, for who has waited less than that.
struct Pace {
    std::chrono::seconds waited;
    double pause;
};
constexpr std::array<Pace, 2> kPaces{{{5s, 0.1}, {60s, 0.5}}};
constexpr double kLongestPause = 5;

} // namespace

JobWatch& JobWatch::shared() {
    static auto* const watch = new JobWatch;
    return *watch;
}

void JobWatch::watch(const std::shared_ptr<Watcher>& watcher, SchedulerWorker::Duration deadline) {
    unwatch(*watcher);
    entries_.push_back({watcher, Clock::now(), deadline});
    schedule();
}

void JobWatch::unwatch(const Watcher& watcher) {
    std::erase_if(
        entries_, [&watcher](const Entry& entry) { return entry.watcher.lock().get() == &watcher; });
    dropGone();
}

// False when nobody is left; then nothing goes on.
bool JobWatch::dropGone() {
    std::erase_if(entries_, [](const Entry& entry) { return entry.watcher.expired(); });
    if (!entries_.empty()) return true;
    if (const auto timer = std::exchange(timer_, nullptr)) timer->stop();
    request_.reset();
    return false;
}

// The next look, at the pace of who has come last.
void JobWatch::schedule() {
    if (!dropGone() || request_) return;
    const auto waited = Clock::now() - std::ranges::max(entries_, {}, &Entry::since).since;
    const auto pace = std::ranges::find_if(kPaces, [waited](const Pace& one) { return waited < one.waited; });
    if (timer_ != nullptr) timer_->stop();
    timer_ = platform::RepeatingTimer::schedule(pace != kPaces.end() ? pace->pause : kLongestPause,
        [this](platform::RepeatingTimer&) { look(); }, {});
}

void JobWatch::look() {
    if (const auto timer = std::exchange(timer_, nullptr)) timer->stop();
    if (!dropGone()) return;
    const auto question = [](SchedulerConnection& connection) {
        SeenJobs seen;
        seen.jobs = scheduler::jobs(connection, "", seen.problem).value_or(std::vector<QueueJob>());
        return seen;
    };
    request_ = SchedulerWorker::shared().start<SeenJobs>("",
        std::ranges::min(entries_, {}, &Entry::deadline).deadline, question,
        [this, begin = Clock::now()](const std::optional<SeenJobs>& seen) {
            request_.reset();
            tell(begin, seen.value_or(SeenJobs{{}, schedulerSilence()}));
            schedule();
        });
}

void JobWatch::tell(Clock::time_point begin, const SeenJobs& seen) {
    const std::vector<Entry> entries = entries_; // a watcher may go, or come again
    for (const Entry& entry : entries)
        if (const auto watcher = entry.watcher.lock(); watcher != nullptr && entry.since <= begin)
            watcher->seen(seen);
}

} // namespace orvan
