#include "Orvan/PrinterQuery.h"

#include "BiDi/ResponseEntries.h"
#include "CommandFilter/Program/PrinterAddress.h"
#include "Common/Utilities/DeviceChecks.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Orvan/Interruption.h"
#include "Orvan/StatusJobs.h"
#include "Orvan/Waiting.h"
#include "Platform/Gestalt.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

constexpr std::string_view kFamily = "Orvan";

bool isBusy(const OrvanBiDi& channel) {
    return channel.state() == OrvanBiDi::State::waiting || channel.state() == OrvanBiDi::State::filterRunning;
}

// Whether the PPD has the beginning of an answer to one of the commands.
bool hasStoredChunks(DialogPPD& ppd, const CommandList& commands) {
    return std::ranges::any_of(commands, [&ppd](const std::string& command) {
        return ppdx_get_chunk_ppd(ppd.record(), (command + "0000").c_str()) != nullptr;
    });
}

// For a terminal: the first of those that have not answered.
std::string whomItWaitsFor(const std::deque<PrinterQuestion>& questions) {
    const auto waiting = std::ranges::count_if(questions, &PrinterQuestion::isWaiting);
    const auto first = std::ranges::find_if(questions, &PrinterQuestion::isWaiting);
    if (first == questions.end()) return "Asking";
    return "Waiting for printer " + first->queue() +
           (waiting > 1 ? " and " + std::to_string(waiting - 1) + " more" : "");
}

} // namespace

void setSystemRelease(const std::string& release) {
    if (!release.empty()) setenv("ORVAN_SYSTEM_RELEASE", release.c_str(), 1);
}

std::string currentRelease() {
    return platform::systemRelease();
}

// A queue's PPD and printer for the channel. Nobody picks anything here.
class PrinterQuestion::Callback final : public platform::PDEPluginCallback {
public:
    Callback(std::unique_ptr<DialogPPD> ppd, std::shared_ptr<platform::PMPrinter> printer)
        : ppd_(std::move(ppd)), printer_(std::move(printer)) {}

    ppd_file_t* ppdFile() override { return ppd_->record(); }
    std::shared_ptr<platform::PMPrinter> PMPrinter() override { return printer_; }
    void willChangePPDOptionKeyValuePpdChoice(const std::string&, const std::string&) override {}

    const DialogPPD& ppd() const { return *ppd_; }

private:
    std::unique_ptr<DialogPPD> ppd_;
    std::shared_ptr<platform::PMPrinter> printer_;
};

class PrinterQuestion::Collector final : public OrvanBiDiDelegate {
public:
    void receivedBiDiResponse(const platform::PropertyList& response) override {
        responses.push_back(response);
    }

    std::vector<platform::PropertyList> responses;
};

PrinterQuestion::PrinterQuestion(std::string queue, SchedulerPatience& patience)
    : patience_(&patience), collector_(std::make_shared<Collector>()) {
    answers_.queue = std::move(queue);
    request_ = openQueue(answers_.queue, patience_->time(),
        [this](std::optional<OpenedQueue> opened, const QueueFailure& failure) {
            queueArrived(std::move(opened), failure.text);
        });
}

PrinterQuestion::~PrinterQuestion() {
    if (dialogPrinter_ != nullptr) dialogPrinter_->setAnswerHandler({});
}

void PrinterQuestion::queueArrived(std::optional<OpenedQueue> opened, const std::string& problem) {
    isFetching_ = false;
    answers_.problem = problem;
    if (!opened) return;
    const std::string prefix = "printer " + queue() + " cannot be asked: ";
    const auto commands = supportedCommandsInPPD(opened->ppd->record());
    if (RunningOn1010OrLater())
        answers_.problem = prefix + "on release 10.10 and later printers are not asked anything";
    else if (!commands)
        answers_.problem = prefix + "its PPD lists no commands (\"cupsCommands\")";
    if (!answers_.problem.empty()) return;

    dialogPrinter_ = std::make_shared<DialogPrinter>(std::make_unique<SchedulerPrinter>(
        std::move(opened->fetched), SchedulerPrinterOptions{.deadline = patience_->time()}));
    printer_ = &dialogPrinter_->printer();
    dialogPrinter_->setAnswerHandler([this](const std::vector<StoredAnswer>& answers) {
        for (const StoredAnswer& answer : answers)
            if (answer.askedAt && (!answers_.askedAt || *answer.askedAt < *answers_.askedAt))
                answers_.askedAt = answer.askedAt;
    });
    callback_ = std::make_shared<Callback>(std::move(opened->ppd), dialogPrinter_);
    channel_ = OrvanBiDi::initWithPDECallbackObject(callback_);
    channel_->setDelegate(collector_);
    channel_->dispatchCommands(commands);
}

bool PrinterQuestion::isStarting() const {
    return isFetching_ || (printer_ != nullptr && printer_->isSubmitting());
}

bool PrinterQuestion::isWaiting() const {
    if (channel_ == nullptr) return isFetching_;
    const auto job = activeJob();
    return isBusy(*channel_) && !(job && isInTrouble(*job));
}

platform::Failure PrinterQuestion::refusal() const {
    return printer_ != nullptr ? printer_->refusal() : std::nullopt;
}

std::optional<QueueJob> PrinterQuestion::activeJob() const {
    return printer_ != nullptr ? statusJobIn(printer_->activeJobs()) : std::nullopt;
}

void PrinterQuestion::withdraw() {
    if (printer_ != nullptr) printer_->takeBack(patience_->time());
}

// Why nothing came through the queue.
std::string PrinterQuestion::explainQueue(std::chrono::duration<double> timeout) {
    if (const auto job = activeJob()) return describe(*job);
    if (isBusy(*channel_))
        return "no answer came within " + std::to_string(static_cast<int>(timeout.count())) + " s";
    if (const platform::Failure why = refusal()) return *why;
    platform::Failure problem;
    const std::unique_ptr<DialogPPD> ppd =
        patience_->ask([&](auto time) { return fetchQueuePPD(queue(), time, problem); });
    const std::string complaint =
        patience_->ask([this](auto time) { return complaintOfLastJob(queue(), time); });
    if (patience_->isUsedUp()) return schedulerSilence().text;
    if (ppd == nullptr) return problem.value_or("");
    if (hasStoredChunks(*ppd, *channel_->supportedCommands()))
        return "what the printer's command filter answered cannot be decoded";
    if (complaint.empty() && !isOnNetwork(printer_->deviceURI(), ppd->record()))
        return findPrinterAddress(printer_->deviceURI(), ppd->record()).problem;
    return !complaint.empty()
               ? complaint
               : "the printer's command filter answered nothing; the scheduler's error log says why";
}

// Why nothing came.
std::string PrinterQuestion::explain(std::chrono::duration<double> timeout) {
    if (RunningOn107OrLater()) return explainQueue(timeout);
    switch (channel_->state()) {
    case OrvanBiDi::State::filterRunning:
        return "the printer's command filter did not end within " +
               std::to_string(static_cast<int>(timeout.count())) + " s, and was ended";
    case OrvanBiDi::State::filterEnded:
        return "the printer's command filter answered nothing that can be decoded";
    default:
        return "the printer's PPD names no command filter (\"cupsFilter2\") that can be started";
    }
}

PrinterAnswers PrinterQuestion::end(std::chrono::duration<double> timeout) {
    if (isFetching_) answers_.problem = wasInterrupted() ? "interrupted" : schedulerSilence().text;
    if (channel_ != nullptr) {
        answers_.responses = std::move(collector_->responses);
        answers_.unknownPapers = papersUnknownTo(callback_->ppd(), customPapers(answers_.responses));
        if (wasInterrupted())
            answers_.problem = "interrupted";
        else if (answers_.responses.empty())
            answers_.problem = "printer " + queue() + " gave no answer: " + explain(timeout);
        else if (RunningOn107OrLater())
            answers_.complaint =
                patience_->ask([this](auto time) { return complaintOfLastJob(queue(), time); });
        std::exchange(channel_, nullptr)->invalidate();
    }
    return std::move(answers_);
}

std::vector<PrinterAnswers> askPrinters(
    const std::vector<std::string>& queues, std::chrono::duration<double> timeout) {
    const InterruptionGuard guard;
    SchedulerPatience patience(timeout);
    std::deque<PrinterQuestion> questions; // which stay where they are
    for (const std::string& queue : queues)
        questions.emplace_back(queue, patience);
    const auto waitFor = [&](bool (PrinterQuestion::*goesOn)() const, std::chrono::duration<double> time) {
        waitForPrinters([&] { return std::ranges::none_of(questions, goesOn); }, time,
            [&] { return whomItWaitsFor(questions); });
    };
    // Who does not wait for the printer still asks it.
    const auto start = std::chrono::steady_clock::now();
    waitFor(&PrinterQuestion::isStarting, patience.time());
    waitFor(&PrinterQuestion::isWaiting, timeout - (std::chrono::steady_clock::now() - start));
    if (wasInterrupted()) std::ranges::for_each(questions, &PrinterQuestion::withdraw);

    std::vector<PrinterAnswers> answers;
    answers.reserve(questions.size());
    for (PrinterQuestion& question : questions)
        answers.push_back(question.end(timeout));
    return answers;
}

std::optional<std::vector<std::string>> orvanQueues(
    std::chrono::duration<double> timeout, platform::Failure& problem) {
    SchedulerPatience patience(timeout);
    const auto all = patience.ask([&problem](auto time) { return listQueues(time, problem); });
    if (!all) return std::nullopt;
    std::vector<std::string> queues;
    for (const SchedulerQueue& queue : *all) {
        if (!queue.isOnePrinter()) continue;
        const std::unique_ptr<DialogPPD> ppd = patience.ask(
            [&queue](auto time) { return fetchQueuePPD(queue.name, time, platform::ignoredFailure()); });
        const bool isOurs = ppd != nullptr ? MyCheckPDEContextCUPS(ppd->record()) == kPDEContextValid
                                           : queue.makeAndModel.starts_with(kFamily);
        if (isOurs) queues.push_back(queue.name);
    }
    std::ranges::sort(queues);
    return queues;
}

} // namespace orvan
