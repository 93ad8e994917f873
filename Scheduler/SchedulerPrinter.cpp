#include "Scheduler/SchedulerPrinter.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvan {
namespace {

// Whoever waits for a job asks more often than that.
constexpr std::chrono::seconds kUnaskedTime{5};

std::vector<std::string> titlesOf(const std::vector<QueueJob>& jobs) {
    std::vector<std::string> titles;
    titles.reserve(jobs.size());
    for (const QueueJob& job : jobs)
        titles.push_back(job.title);
    return titles;
}

} // namespace

class SchedulerPrinter::Watcher final : public JobWatch::Watcher {
public:
    explicit Watcher(SchedulerPrinter& printer) : printer_(&printer) {}
    void seen(const SeenJobs& jobs) override { printer_->seen(jobs); }

private:
    SchedulerPrinter* printer_; // which owns this
};

SchedulerPrinter::SchedulerPrinter(FetchedQueue fetched, SchedulerPrinterOptions options)
    : fetched_(std::move(fetched)),
      options_(options),
      titles_(titlesOf(fetched_.activeJobs)),
      watcher_(std::make_shared<Watcher>(*this)) {}

SchedulerPrinter::~SchedulerPrinter() {
    JobWatch::shared().unwatch(*watcher_);
}

bool SchedulerPrinter::sendCommand(std::string_view text, const std::string& title, const Options& options) {
    sentTitle_ = title;
    submittedJob_ = 0;
    refusal_ = {};
    JobWatch::shared().unwatch(*watcher_);
    if (!options_.asksPrinter) {
        fetchPPD({});
        return true;
    }
    state_ = State::sending;
    using Sent = std::pair<std::optional<int>, SchedulerProblem>;
    const auto send = [queue = queueName(), text = std::string(text), title, options](
                          SchedulerConnection& connection) {
        Sent sent;
        sent.first = scheduler::sendCommand(connection, queue, text, title, options, sent.second);
        return sent;
    };
    request_ = SchedulerWorker::shared().start<Sent>(
        queueName(), options_.deadline, send, [this](const std::optional<Sent>& sent) {
            submittedJob_ = sent ? sent->first.value_or(0) : 0;
            if (submittedJob_ != 0) return watch();
            refused(sent ? sent->second : schedulerSilence());
            fetchPPD({});
        });
    return true;
}

void SchedulerPrinter::takeBack(SchedulerWorker::Duration time) {
    platform::runMainLoopUntil([this] { return !isSubmitting(); }, time);
    if (submittedJob_ != 0) cancelJob(queueName(), submittedJob_, time);
}

void SchedulerPrinter::watch() {
    state_ = State::watching;
    JobWatch::shared().watch(watcher_, options_.deadline);
}

std::vector<std::string> SchedulerPrinter::activeJobTitles() {
    lastAsked_ = std::chrono::steady_clock::now();
    // Other jobs, of which nobody here is told the end.
    if (state_ == State::idle && !titles_.empty()) watch();
    std::vector<std::string> titles = titles_;
    if (!sentTitle_.empty()) titles.push_back(sentTitle_);
    return titles;
}

// Whether the job that was handed over has gone or, when none was, one of the others.
bool SchedulerPrinter::isJobGone() const {
    const auto isHere = [this](const std::string& title) {
        return std::ranges::find(fetched_.activeJobs, title, &QueueJob::title) != fetched_.activeJobs.end();
    };
    return sentTitle_.empty() ? !std::ranges::all_of(titles_, isHere) : !isHere(sentTitle_);
}

// The job that was handed over, and those of before that are not among the active ones any more.
std::vector<QueueJob> SchedulerPrinter::jobsGoneSince(const std::vector<QueueJob>& before) const {
    std::vector<QueueJob> gone = before;
    if (submittedJob_ != 0 && !sentTitle_.empty()) {
        std::erase_if(gone, [this](const QueueJob& job) { return job.id == submittedJob_; });
        QueueJob& sent = gone.emplace_back();
        sent.id = submittedJob_;
    }
    std::erase_if(gone, [this](const QueueJob& job) {
        return std::ranges::find(fetched_.activeJobs, job.id, &QueueJob::id) != fetched_.activeJobs.end();
    });
    return gone;
}

void SchedulerPrinter::refused(const SchedulerProblem& why) {
    refusal_ = why;
    if (onRefusal_) onRefusal_(why.text);
}

void SchedulerPrinter::seen(const SeenJobs& seen) {
    if (!seen.problem.text.empty() && !sentTitle_.empty()) refused(seen.problem);
    const std::vector<QueueJob> before = std::exchange(fetched_.activeJobs, seen.jobs);
    std::erase_if(fetched_.activeJobs, [this](const QueueJob& job) { return job.queue != queueName(); });
    if (isJobGone()) {
        JobWatch::shared().unwatch(*watcher_);
        fetchPPD(jobsGoneSince(before));
    } else if (sentTitle_.empty() && std::chrono::steady_clock::now() - lastAsked_ > kUnaskedTime) {
        JobWatch::shared().unwatch(*watcher_);
        state_ = State::idle;
    }
}

// With it comes what became of the jobs: the scheduler forgets them some time.
void SchedulerPrinter::fetchPPD(std::vector<QueueJob> goneJobs) {
    state_ = State::fetching;
    freshPPD_ = nullptr;
    struct Fetched {
        std::vector<QueueJob> ended;
        platform::PPDRecord ppd;
        SchedulerProblem problem;
    };
    const auto fetch = [queue = queueName(), gone = std::move(goneJobs)](SchedulerConnection& connection) {
        Fetched fetched;
        SchedulerProblem ignored;
        for (const QueueJob& job : gone)
            if (auto ended = scheduler::job(connection, job.id, ignored); ended && ended->id == job.id)
                fetched.ended.push_back(*std::move(ended));
        fetched.ppd = scheduler::ppdRecord(connection, queue, fetched.problem);
        return fetched;
    };
    request_ = SchedulerWorker::shared().start<Fetched>(
        queueName(), options_.deadline, fetch, [this](std::optional<Fetched> fetched) {
            state_ = State::idle;
            sentTitle_.clear();
            titles_ = titlesOf(fetched_.activeJobs);
            if (!fetched) {
                if (refusal_.kind == SchedulerProblem::Kind::none) refused(schedulerSilence());
                return;
            }
            std::ranges::move(fetched->ended, std::back_inserter(endedJobs_));
            freshPPD_ = std::move(fetched->ppd);
            const bool wasRefused = refusal_.kind != SchedulerProblem::Kind::none;
            if (freshPPD_ == nullptr && !wasRefused) refused(fetched->problem);
        });
}

} // namespace orvan
