#include "Orvan/Doctor/QueueCheckup.h"

#include "BiDi/Common/CommandFilterPath.h"
#include "BiDi/Common/SupportedCommands.h"
#include "BiDi/ResponseEntries.h"
#include "BiDi/StoredAnswers.h"
#include "Common/CommandJob.h"
#include "Common/Utilities/DeviceChecks.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Orvan/Doctor/CommandFilterFile.h"
#include "Orvan/Doctor/OtherQueues.h"
#include "Orvan/Doctor/SchedulerFiles.h"
#include "Orvan/Interruption.h"
#include "Orvan/PrinterQuery.h"
#include "Orvan/StatusReport.h"
#include "Orvan/Waiting.h"
#include "PrintDialog/Host/QueuePPD.h"
#include "PrintDialog/Host/StatusJobs.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

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

// Whether a dialog shows paper options for a queue with this PPD.
bool givesPaperOptions(DialogPPD& ppd) {
    return MyCheckPDEContextCUPS(ppd.record()) == kPDEContextValid && supportedCommandsInPPD(ppd.record());
}

} // namespace

std::vector<QueueCheckup::Station> QueueCheckup::notLookedAt(const std::string& why) {
    std::vector<Station> stations;
    for (const char* const name : {"queue", "PPD", "command filter", "earlier job", "command job", "answers",
             "address", "ping", "document"})
        stations.push_back({name, notChecked(why)});
    return stations;
}

QueueCheckup::QueueCheckup(std::string name, std::optional<SchedulerQueue> queue,
    const std::vector<SchedulerQueue>& all, SchedulerPatience& patience)
    : name_(std::move(name)),
      queue_(std::move(queue)),
      others_(queue_ ? queuesOfSamePrinter(*queue_, all) : std::vector<SchedulerQueue>()),
      patience_(patience),
      stations_(notLookedAt(queue_ && queue_->isOnePrinter() ? kNeedsPPD : kNeedsQueue)) {}

QueueCheckup::~QueueCheckup() = default;

const Finding& QueueCheckup::at(std::string_view station) const {
    return std::ranges::find(stations_, station, &Station::name)->finding;
}

Finding& QueueCheckup::at(std::string_view station) {
    return std::ranges::find(stations_, station, &Station::name)->finding;
}

void QueueCheckup::begin() {
    at("queue") = examineQueue();
    if (!queue_ || !queue_->isOnePrinter()) return;
    at("PPD") = examinePPD();
    if (at("queue").verdict == Verdict::ok) compareOtherQueues();
    if (ppd_ == nullptr) return;
    at("command filter") = examineFilter();
    at("earlier job") = examineEarlierJob();
    const std::string why = whyNoJob();
    wantsAnswers_ = why.empty();
    at("command job") = notChecked(why);
    PrinterAnswers stored;
    stored.queue = name_;
    for (const StoredAnswer& answer : storedAnswers(ppd_->record()))
        stored.commands.push_back({.command = answer.command,
            .state = answer.list ? CommandAnswer::State::stored : CommandAnswer::State::never,
            .list = answer.list,
            .reason = {AnswerCode::askingForbidden}});
    at("answers") = examineAnswers(stored);
}

void QueueCheckup::answered(const PrinterAnswers& answers) {
    at("command job") = examineCommandJob(answers.problem);
    at("answers") = examineAnswers(answers);
    using Code = AnswerCode;
    static constexpr std::array<Code, 6> kPrinters{Code::noAddress, Code::printerOffline,
        Code::passwordWanted, Code::otherPrinter, Code::noStatusDocument, Code::filterComplains};
    isAnswersFaultAtPrinter_ = std::ranges::find(kPrinters, answers.problem.code) != kPrinters.end();
    isAgentSilent_ = std::ranges::any_of(answers.commands,
        [](const CommandAnswer& answer) { return answer.reason.code == Code::agentSilent; });
}

void QueueCheckup::lookAtPrinter() {
    if (ppd_ == nullptr) return;
    at("address") = examineAddress();
    at("ping") = examineContact();
    at("document") = examineDocument();
    Finding& answers = at("answers");
    const bool isFetched = at("document").verdict == Verdict::ok;
    if (!isFetched && isAnswersFaultAtPrinter_ && answers.verdict == Verdict::problem)
        answers = notChecked(answers.found);
    if (!isFetched) return;
    if (auto wait = examineWaitForAgent()) at("address") = *std::move(wait);
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
    const std::unique_ptr<FetchedPPD> file =
        patience_.ask([&](auto time) { return fetchQueuePPDFile(name_, time, error); });
    if (file == nullptr && patience_.isUsedUp()) return notChecked(schedulerSilence().text);
    if (file == nullptr) return problem(*error, driverAdvice(name_));
    std::unique_ptr<DialogPPD> ppd = DialogPPD::open(file->file(), error);
    if (ppd == nullptr)
        return problem(
            "the queue's PPD is damaged: " + withoutFile(*error, file->file()), driverAdvice(name_));
    ppd_file_t* const record = ppd->record();
    hasOtherDriver_ = !givesPaperOptions(*ppd);
    if (MyCheckPDEContextCUPS(record) != kPDEContextValid)
        return problem(
            "the queue's PPD is for another printer: " + queue_->makeAndModel, driverAdvice(name_));
    if (!supportedCommandsInPPD(record))
        return problem("the queue's PPD lists no commands (\"cupsCommands\")", driverAdvice(name_));
    const std::string model = getDeviceModelNumber(record);
    ppd_ = std::move(ppd);
    if (auto unreadable = examineFileOfPPD(name_)) return *std::move(unreadable);
    return ok("whole, and for an Orvan printer, model " + model);
}

// Who picks a driverless queue of the printer in a dialog sees no paper options.
void QueueCheckup::compareOtherQueues() {
    if (ppd_ == nullptr && !hasOtherDriver_) return;
    std::vector<std::string> found;
    for (const SchedulerQueue& other : others_) {
        const std::unique_ptr<DialogPPD> ppd = patience_.ask(
            [&other](auto time) { return fetchQueuePPD(other.name, time, platform::ignoredFailure()); });
        if (ppd != nullptr && givesPaperOptions(*ppd) == hasOtherDriver_) found.push_back(other.name);
    }
    if (found.empty()) return;
    Finding& queue = at("queue");
    if (hasOtherDriver_) {
        queue = problem(name_ + " prints to the printer of queue " + found.front() +
                            ", but without its driver, and so without paper options",
            "Choose " + found.front() + " in print dialogs; \"lpadmin -x " + name_ + "\" removes this one.");
        at("PPD") = notChecked(at("PPD").found);
        return;
    }
    queue.found +=
        "; it has paper options, and not " + joined(found) + ", which is the same printer without its driver";
    queue.mend =
        "Choose " + name_ + " in print dialogs; \"lpadmin -x " + found.front() + "\" removes the other.";
}

Finding QueueCheckup::examineFilter() {
    const auto filter = pathForCommandFilterInPPD(ppd_->record());
    if (!filter || filter->empty())
        return problem(std::string("the queue's PPD names no command filter (\"cupsFilter2\" for ") +
                           platform::kCommandFileType + ")",
            driverAdvice(name_));
    return examineCommandFilter(*filter, *queue_);
}

Finding QueueCheckup::examineEarlierJob() {
    const auto job = patience_.ask([this](auto time) { return findStatusJob(name_, time); });
    if (!job && patience_.isUsedUp()) return notChecked(schedulerSilence().text);
    isEarlierJobInTheWay_ = job && isInTrouble(*job);
    if (isEarlierJobInTheWay_)
        return problem("an earlier command job " +
                           std::string(job->state == IPP_JSTATE_HELD
                                           ? "is held"
                                           : "was stopped, because the command filter failed") +
                           ", and every later question waits for it" + lastWordOn(*job),
            "\"cancel " + name_ + "-" + std::to_string(job->id) + "\" removes it.");
    return ok(std::string("no \"") + kStatusJobTitle + "\" job of yours is held or stopped");
}

// "" when one may be submitted.
std::string QueueCheckup::whyNoJob() const {
    if (!RunningOn107OrLater() || RunningOn1010OrLater())
        return "on release " + currentRelease() + " no command job is submitted";
    if (isEarlierJobInTheWay_) return "it would wait for the earlier job";
    if (at("PPD").verdict == Verdict::problem)
        return "the command filter has to be able to read the PPD first";
    if (at("command filter").verdict == Verdict::problem) return "the command filter has to be right first";
    if (queue_->isPaused || !queue_->takesJobs) return "the queue has to take and print jobs first";
    return {};
}

Finding QueueCheckup::examineCommandJob(const AnswerReason& reason) const {
    switch (reason.code) {
    case AnswerCode::interrupted:
        return notChecked("interrupted; the job is taken back");
    case AnswerCode::filterFailed:
        return problem("the command filter failed, so the scheduler stopped its job", kErrorLog);
    case AnswerCode::jobHeld:
        return problem(reason.text, "\"cupsenable --release " + name_ + "\" lets them go.");
    case AnswerCode::jobCancelled:
        return problem("the command job was cancelled", "Try again, and see who cancels jobs.");
    case AnswerCode::printerBusy:
    case AnswerCode::noAnswerYet:
        return problem("the command job did not end in time: " + reason.text,
            "See what the next stations say, or wait longer (--timeout).");
    case AnswerCode::notPermitted:
        return problem("the scheduler does not take the command job: " + reason.text,
            "Permit this user to print to " + name_ + ".");
    case AnswerCode::noRoom:
        return examineSpool();
    default:
        return reason.wasNotAsked() && reason.code != AnswerCode::noAddress
                   ? problem("the scheduler did not take the command job: " + reason.text, kErrorLog)
                   : ok("the scheduler took it, and it went through");
    }
}

Finding QueueCheckup::examineAnswers(const PrinterAnswers& answers) const {
    using State = CommandAnswer::State;
    if (!isOnNetwork(queue_->deviceURI, ppd_->record()))
        return notChecked("this queue's device has no network address");
    if (at("command job").verdict != Verdict::ok) {
        const auto never = std::ranges::count(answers.commands, State::never, &CommandAnswer::state);
        return notChecked(never == 0 ? "the command job has to go through first; earlier answers are stored"
                                     : "the command job has to go through first");
    }
    const std::string how =
        "See what the next stations say; the scheduler's error log has the filter's messages.";
    const auto those = [&answers](AnswerCode code) {
        std::vector<std::string> commands;
        for (const CommandAnswer& answer : answers.commands)
            if (answer.reason.code == code) commands.push_back(answer.command);
        return joined(commands);
    };
    if (const std::string damaged = those(AnswerCode::notDecodable); !damaged.empty())
        return problem("the answers to " + damaged + " cannot be decoded", how);
    if (answers.problem.code == AnswerCode::noAnswer)
        return problem("there are no answers to " + those(AnswerCode::noAnswer), how);
    const bool hasEarlier =
        std::ranges::find(answers.commands, State::stored, &CommandAnswer::state) != answers.commands.end();
    if (!answers.problem.isNone())
        return problem("the command filter complains: " + answers.problem.text +
                           (hasEarlier ? " (earlier answers are kept)" : ""),
            how);
    std::vector<std::string> unknown;
    for (const CustomPaper& paper : answers.unknownPapers)
        unknown.push_back(paper.name);
    if (!unknown.empty())
        return problem("the queue's PPD cannot name these papers to the printer: " + joined(unknown),
            "Give them types that the PPD has as CustomType1 and so on, or the queue a driver that has "
            "theirs.");
    if (!answers.outdatedTitles.empty())
        return problem("these names of papers in the queue's PPD are not the printer's any more: " +
                           joined(answers.outdatedTitles),
            "\"sudo orvan papers -q " + answers.queue +
                " --publish\" writes the printer's; --unpublish takes all out.");
    const std::string remark = answers.remark();
    const auto now = std::ranges::count(answers.commands, State::now, &CommandAnswer::state);
    Finding finding =
        ok(std::to_string(now) + " commands are answered" + (remark.empty() ? "" : ", " + remark));
    if (!remark.empty()) finding.mend = "Switch SNMP on if the printer's job accounting is wanted.";
    return finding;
}

} // namespace orvan
