#include "Scheduler/SchedulerPrinter.h"

#include <algorithm>
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
        fetchPPD();
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
            refused(sent ? sent->second.text : schedulerSilence().text);
            fetchPPD();
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

void SchedulerPrinter::refused(const std::string& why) {
    refusal_ = why;
    if (onRefusal_) onRefusal_(why);
}

void SchedulerPrinter::seen(const SeenJobs& seen) {
    if (!seen.problem.text.empty() && !sentTitle_.empty()) refused(seen.problem.text);
    fetched_.activeJobs = seen.jobs;
    std::erase_if(fetched_.activeJobs, [this](const QueueJob& job) { return job.queue != queueName(); });
    if (isJobGone()) {
        JobWatch::shared().unwatch(*watcher_);
        fetchPPD();
    } else if (sentTitle_.empty() && std::chrono::steady_clock::now() - lastAsked_ > kUnaskedTime) {
        JobWatch::shared().unwatch(*watcher_);
        state_ = State::idle;
    }
}

void SchedulerPrinter::fetchPPD() {
    state_ = State::fetching;
    using PPD = platform::PPDRecord;
    const auto fetch = [queue = queueName()](SchedulerConnection& connection) {
        SchedulerProblem ignored;
        return scheduler::ppdRecord(connection, queue, ignored);
    };
    request_ = SchedulerWorker::shared().start<PPD>(
        queueName(), options_.deadline, fetch, [this](std::optional<PPD> ppd) {
            state_ = State::idle;
            sentTitle_.clear();
            titles_ = titlesOf(fetched_.activeJobs);
            freshPPD_ = ppd ? *std::move(ppd) : nullptr;
        });
}

} // namespace orvan
