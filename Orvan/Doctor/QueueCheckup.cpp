#include "Orvan/Doctor/QueueCheckup.h"

#include "BiDi/Common/CommandFilterPath.h"
#include "BiDi/Common/SupportedCommands.h"
#include "BiDi/ResponseEntries.h"
#include "BiDi/StoredAnswers.h"
#include "Common/CommandJob.h"
#include "Common/Utilities/DeviceChecks.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Orvan/Doctor/CommandFilterFile.h"
#include "Orvan/Interruption.h"
#include "Orvan/PrinterQuery.h"
#include "Orvan/StatusJobs.h"
#include "Orvan/StatusReport.h"
#include "Orvan/Waiting.h"
#include "PrintDialog/Host/QueuePPD.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

// Commands of this printer family; CUPS's own are not answered in chunks.
constexpr std::string_view kCommandPrefix = "com.orvan.";

constexpr const char* kErrorLog = "The scheduler's error log (/var/log/cups/error_log) says more.";
constexpr const char* kNeedsQueue = "there has to be a queue first";
constexpr const char* kNeedsPPD = "the PPD has to be right first";

std::string driverAdvice(const std::string& queue) {
    return "Give the queue the printer's driver: \"lpadmin -p " + queue +
           " -P /usr/share/ppd/Orvan/Orvan-4500.ppd\", or in the system's printer settings.";
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

} // namespace

QueueCheckup::QueueCheckup(const std::string& name, std::optional<SchedulerQueue> queue,
    std::chrono::duration<double> timeout, Checkup& checkup)
    : name_(name), queue_(std::move(queue)), timeout_(timeout), patience_(timeout), checkup_(checkup) {}

QueueCheckup::~QueueCheckup() = default;

void QueueCheckup::run() {
    const char* const whyNoQueue = queue_ && queue_->isOnePrinter() ? nullptr : kNeedsQueue;
    checkup_.look("queue", [this] { return examineQueue(); });
    checkup_.look("PPD", [&] { return whyNoQueue ? notChecked(whyNoQueue) : examinePPD(); });
    const char* const whyNot = whyNoQueue ? whyNoQueue : ppd_ == nullptr ? kNeedsPPD : nullptr;
    struct Station {
        const char* name;
        Finding (*examine)(QueueCheckup&);
    };
    static constexpr std::array<Station, 7> kStations{{
        {"command filter", [](QueueCheckup& queue) { return queue.examineFilter(); }},
        {"earlier job", [](QueueCheckup& queue) { return queue.examineEarlierJob(); }},
        {"command job", [](QueueCheckup& queue) { return queue.examineCommandJob(); }},
        {"answers", [](QueueCheckup& queue) { return queue.examineAnswers(); }},
        {"address", [](QueueCheckup& queue) { return queue.examineAddress(); }},
        {"ping", [](QueueCheckup& queue) { return queue.examineContact(); }},
        {"document", [](QueueCheckup& queue) { return queue.examineDocument(); }},
    }};
    for (const Station& station : kStations) {
        if (wasInterrupted()) return;
        checkup_.look(station.name, [&] { return whyNot ? notChecked(whyNot) : station.examine(*this); });
    }
}

Finding QueueCheckup::examineQueue() const {
    if (!queue_)
        return problem("there is no queue " + name_ + " at " + schedulerName(),
            "\"lpstat -v\" lists the queues; add one in the system's printer settings.");
    if (queue_->isClass)
        return problem(name_ +
                           " is a class of printers, which has no paper options of its own: a job goes to "
                           "whichever is free",
            "Name one of its printers (\"lpstat -c " + name_ + "\" lists them).");
    if (!queue_->isOnePrinter())
        return problem(name_ + " stands for several printers of other schedulers, so it has no paper options",
            "Add a queue for the one printer, with its own address.");
    if (queue_->isPaused)
        return problem("printer " + name_ + " is stopped", "\"cupsenable " + name_ + "\" starts it.");
    if (!queue_->takesJobs)
        return problem("queue " + name_ + " takes no jobs", "\"cupsaccept " + name_ + "\" changes that.");
    return ok(name_ + " takes jobs and prints them");
}

Finding QueueCheckup::examinePPD() {
    platform::Failure error;
    const std::unique_ptr<FetchedPPD> file = fetchQueuePPDFile(name_, patience_.time(), error);
    if (file == nullptr) return problem(*error, driverAdvice(name_));
    std::unique_ptr<DialogPPD> ppd = DialogPPD::open(file->file(), error);
    if (ppd == nullptr)
        return problem(
            "the queue's PPD is damaged: " + withoutFile(*error, file->file()), driverAdvice(name_));
    ppd_file_t* const record = ppd->record();
    if (MyCheckPDEContextCUPS(record) != kPDEContextValid)
        return problem(
            "the queue's PPD is for another printer: " + queue_->makeAndModel, driverAdvice(name_));
    if (!supportedCommandsInPPD(record))
        return problem("the queue's PPD lists no commands (\"cupsCommands\")", driverAdvice(name_));
    const std::string model = getDeviceModelNumber(record);
    ppd_ = std::move(ppd);
    return ok("whole, and for an Orvan printer, model " + model);
}

Finding QueueCheckup::examineFilter() {
    const auto filter = pathForCommandFilterInPPD(ppd_->record());
    if (!filter || filter->empty())
        return problem(std::string("the queue's PPD names no command filter (\"cupsFilter2\" for ") +
                           platform::kCommandFileType + ")",
            driverAdvice(name_));
    Finding finding = examineCommandFilter(*filter, *queue_);
    isFilterRight_ = finding.verdict != Verdict::problem;
    return finding;
}

Finding QueueCheckup::examineEarlierJob() const {
    const auto job = findStatusJob(name_, patience_.time());
    if (job && isInTrouble(*job))
        return problem("an earlier command job " +
                           std::string(job->state == IPP_JSTATE_HELD
                                           ? "is held"
                                           : "was stopped, because the command filter failed") +
                           ", and every later question waits for it" + lastWordOn(*job),
            "\"cancel " + name_ + "-" + std::to_string(job->id) + "\" removes it.");
    return ok(std::string("no \"") + kStatusJobTitle + "\" job of yours is held or stopped");
}

Finding QueueCheckup::examineCommandJob() {
    if (!RunningOn107OrLater() || RunningOn1010OrLater())
        return notChecked("on release " + currentRelease() + " no command job is submitted");
    if (const auto job = findStatusJob(name_, patience_.time()); job && isInTrouble(*job))
        return notChecked("it would wait for the earlier job");
    if (!isFilterRight_) return notChecked("the command filter has to be right first");
    if (queue_->isPaused || !queue_->takesJobs)
        return notChecked("the queue has to take and print jobs first");
    const InterruptionGuard guard;
    PrinterQuestion question(name_, patience_);
    waitForPrinters([&question] { return !question.isWaiting(); }, timeout_,
        [this] { return "Waiting for printer " + name_; });
    const auto job = findStatusJob(name_, patience_.time());
    // A job that does not end would be in the way of every later one.
    question.withdraw();
    if (wasInterrupted()) return notChecked("interrupted; the job is taken back");
    if (const platform::Failure refusal = question.refusal()) return whyNoJob(*refusal);
    if (job) return whyNoEnd(*job);
    complaint_ = complaintOfLastJob(name_, patience_.time());
    hasJobEnded_ = true;
    return ok("the scheduler took it, and it went through");
}

Finding QueueCheckup::whyNoEnd(const QueueJob& job) const {
    const std::string said = lastWordOn(job);
    if (job.state == IPP_JSTATE_STOPPED)
        return problem("the command filter failed, so the scheduler stopped its job" + said, kErrorLog);
    return problem(job.state == IPP_JSTATE_HELD ? "the queue holds new jobs" + said
                                                : "the command job did not end in time" + said,
        job.state == IPP_JSTATE_HELD ? "\"cupsenable --release " + name_ + "\" lets them go."
                                     : "See what the next stations say, or wait longer (--timeout).");
}

Finding QueueCheckup::whyNoJob(const std::string& refusal) {
    platform::Failure error;
    return wouldTakeCommand(name_, patience_.time(), error)
               ? problem("the scheduler did not take the command job: " + refusal, kErrorLog)
               : problem("the scheduler does not take the command job: " + *error,
                     "Permit this user to print to " + name_ + ", and the queue to take jobs.");
}

Finding QueueCheckup::examineAnswers() const {
    platform::Failure error;
    const std::unique_ptr<DialogPPD> ppd = fetchQueuePPD(name_, patience_.time(), error);
    if (ppd == nullptr) return problem(*error, kErrorLog);
    const CommandList commands = supportedCommandsInPPD(ppd->record()).value_or(CommandList{});
    std::vector<std::string> missing;
    std::vector<std::string> unreadable;
    const std::vector<StoredAnswer> answers = storedAnswers(ppd->record());
    for (const std::string& command : commands) {
        if (!command.starts_with(kCommandPrefix)) continue;
        if (std::ranges::find(answers, command, &StoredAnswer::command) != answers.end()) continue;
        const bool hasChunks = ppdx_get_chunk_ppd(ppd->record(), (command + "0000").c_str()) != nullptr;
        (hasChunks ? unreadable : missing).push_back(command);
    }
    const std::string how =
        "See what the next stations say; the scheduler's error log has the filter's messages.";
    if (!isOnNetwork(queue_->deviceURI, ppd->record()))
        return notChecked("this queue's device has no network address");
    if (!complaint_.empty())
        return problem("the command filter complains: " + complaint_ +
                           (!answers.empty() ? " (earlier answers are kept)" : ""),
            how);
    if (!unreadable.empty())
        return problem("the answers to " + joined(unreadable) + " cannot be decoded", how);
    if (!missing.empty())
        return hasJobEnded_ ? problem("there are no answers to " + joined(missing), how)
                            : notChecked("there are no answers yet to " + joined(missing));
    if (const StoredAnswer* const papers = answerWithPapers(answers)) {
        std::vector<std::string> unknown;
        for (const CustomPaper& paper : papersUnknownTo(*ppd, customPapers({papers->list})))
            unknown.push_back(paper.name);
        if (!unknown.empty())
            return problem("the queue's PPD cannot name these papers to the printer: " + joined(unknown),
                "Give them types that the PPD has as CustomType1 and so on, or the queue a driver that has "
                "theirs.");
    }
    return ok(std::to_string(answers.size()) + " answers are stored and can be decoded");
}

} // namespace orvan
