#include "Orvan/PrinterQuery.h"

#include "CommandFilter/Commands.h"
#include "CommandFilter/Program/PrinterAddress.h"
#include "Common/Utilities/DeviceChecks.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Orvan/Interruption.h"
#include "Orvan/Waiting.h"
#include "Platform/Gestalt.h"
#include "PrintDialog/Host/StatusJobs.h"

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

std::vector<platform::PropertyList> PrinterAnswers::responses() const {
    std::vector<platform::PropertyList> lists;
    for (const CommandAnswer& answer : commands)
        if (answer.list) lists.push_back(*answer.list);
    return lists;
}

std::optional<std::chrono::system_clock::time_point> PrinterAnswers::askedAt() const {
    std::optional<std::chrono::system_clock::time_point> first;
    for (const CommandAnswer& answer : commands)
        if (answer.askedAt && !answer.reason.isRemark() && (!first || *answer.askedAt < *first))
            first = answer.askedAt;
    return first;
}

std::string PrinterAnswers::remark() const {
    std::string text;
    for (const CommandAnswer& answer : commands) {
        if (!answer.reason.isRemark()) continue;
        const CommandSpec* const command = findCommand(answer.command);
        text.append(text.empty() ? "except " : ", ")
            .append(command != nullptr ? command->title : answer.command);
        text.append(": ").append(answer.reason.text);
    }
    return text;
}

// A queue's PPD and printer for the channel. Nobody picks anything here.
class PrinterQuestion::Callback final : public platform::PDEPluginCallback {
public:
    Callback(std::shared_ptr<DialogPPD> ppd, std::shared_ptr<platform::PMPrinter> printer)
        : ppd_(std::move(ppd)), printer_(std::move(printer)) {}

    ppd_file_t* ppdFile() override { return ppd_->record(); }
    std::shared_ptr<platform::PMPrinter> PMPrinter() override { return printer_; }
    void willChangePPDOptionKeyValuePpdChoice(const std::string&, const std::string&) override {}

private:
    std::shared_ptr<DialogPPD> ppd_;
    std::shared_ptr<platform::PMPrinter> printer_;
};

// Of a filter that the channel runs itself: the queue's answers are seen on their way.
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
            queueArrived(std::move(opened), failure.problem);
        });
}

PrinterQuestion::~PrinterQuestion() {
    if (dialogPrinter_ != nullptr) dialogPrinter_->setAnswerHandler({});
}

void PrinterQuestion::queueArrived(std::optional<OpenedQueue> opened, const SchedulerProblem& problem) {
    isFetching_ = false;
    answers_.problem = reasonOf(problem);
    if (!opened) return;
    ppd_ = std::move(opened->ppd);
    stored_.before = storedAnswers(ppd_->record());
    const bool isPaused = opened->fetched.queue.isPaused;
    dialogPrinter_ = std::make_shared<DialogPrinter>(std::make_unique<SchedulerPrinter>(
        std::move(opened->fetched), SchedulerPrinterOptions{.deadline = patience_->time()}));
    printer_ = &dialogPrinter_->printer();
    const auto commands = supportedCommandsInPPD(ppd_->record());
    if (RunningOn1010OrLater())
        answers_.problem = {
            AnswerCode::askingForbidden, "on release 10.10 and later printers are not asked anything"};
    else if (!commands)
        answers_.problem = {AnswerCode::noCommands, "the queue's PPD lists no commands (\"cupsCommands\")"};
    else
        dispatch(*commands, isPaused);
}

void PrinterQuestion::dispatch(const CommandList& commands, bool isPaused) {
    if (isPaused && RunningOn107OrLater()) {
        answers_.problem = reasonOf(*printer_, false);
        return;
    }
    if (const auto job = activeJob()) stored_.sharedJob = job->id;
    dialogPrinter_->setAnswerHandler(
        [this](std::vector<StoredAnswer> answers) { stored_.after = std::move(answers); });
    callback_ = std::make_shared<Callback>(ppd_, dialogPrinter_);
    channel_ = OrvanBiDi::initWithPDECallbackObject(callback_);
    channel_->setDelegate(collector_);
    channel_->dispatchCommands(commands);
}

bool PrinterQuestion::isStarting() const {
    return isFetching_ || (printer_ != nullptr && printer_->isSubmitting());
}

bool PrinterQuestion::isUnderWay() const {
    return channel_ != nullptr && isBusy(*channel_);
}

bool PrinterQuestion::isWaiting() const {
    if (channel_ == nullptr) return isFetching_;
    const auto job = activeJob();
    return isBusy(*channel_) && !(job && isInTrouble(*job));
}

std::optional<QueueJob> PrinterQuestion::activeJob() const {
    return printer_ != nullptr ? statusJobIn(printer_->activeJobs()) : std::nullopt;
}

void PrinterQuestion::withdraw() {
    if (printer_ == nullptr) return;
    patience_->ask([this](auto time) {
        printer_->takeBack(time);
        return true;
    });
}

// Why nothing came, or not all.
AnswerReason PrinterQuestion::reason(std::chrono::duration<double> timeout) const {
    if (wasInterrupted()) return {AnswerCode::interrupted, "interrupted"};
    const std::string seconds = std::to_string(static_cast<int>(timeout.count())) + " s";
    if (!RunningOn107OrLater()) {
        switch (channel_->state()) {
        case OrvanBiDi::State::filterRunning:
            return {AnswerCode::noAnswerYet,
                "the printer's command filter did not end within " + seconds + ", and was ended"};
        case OrvanBiDi::State::filterEnded:
            return {
                AnswerCode::noAnswer, "the printer's command filter answered nothing that can be decoded"};
        default:
            return {AnswerCode::filterFailed,
                "the printer's PPD names no command filter (\"cupsFilter2\") that can be started"};
        }
    }
    AnswerReason reason = reasonOf(*printer_, !isBusy(*channel_));
    if (reason.code == AnswerCode::noAnswerYet) reason.text = "none came within " + seconds;
    return reason;
}

// The filter says nothing of the commands that it did not answer, and its answers have no names.
std::vector<CommandAnswer> PrinterQuestion::answersOfFilter(const AnswerReason& why) {
    std::vector<CommandAnswer> result;
    for (const std::string& name : *channel_->supportedCommands()) {
        const CommandSpec* const command = findCommand(name);
        if (command == nullptr || command->source == CommandSpec::Source::levels) continue;
        auto& answer = result.emplace_back(CommandAnswer{.command = name, .reason = why});
        const auto isAnswer = [command](const platform::PropertyList& response) {
            return std::ranges::any_of(command->keys,
                [&](std::string_view key) { return !key.empty() && response.find(key) != nullptr; });
        };
        const auto found = std::ranges::find_if(collector_->responses, isAnswer);
        if (found == collector_->responses.end()) continue;
        answer = {.command = name, .state = CommandAnswer::State::now, .list = std::move(*found)};
        collector_->responses.erase(found);
    }
    for (platform::PropertyList& other : collector_->responses)
        result.push_back({.command = {}, .state = CommandAnswer::State::now, .list = std::move(other)});
    return result;
}

PrinterAnswers PrinterQuestion::end(std::chrono::duration<double> timeout) {
    if (isFetching_) answers_.problem = reasonOf(schedulerSilence());
    if (wasInterrupted()) answers_.problem = {AnswerCode::interrupted, "interrupted"};
    const bool wasAsked = channel_ != nullptr;
    const AnswerReason why = wasAsked ? reason(timeout) : answers_.problem;
    if (wasAsked && !RunningOn107OrLater())
        answers_.commands = answersOfFilter(why);
    else if (printer_ != nullptr)
        answers_.commands = commandAnswers(stored_, *printer_, why);
    for (CommandAnswer& answer : answers_.commands) {
        // The advice is longer than the word.
        if (answer.reason.code == AnswerCode::noAddress)
            if (const auto search = findPrinterAddress(printer_->deviceURI(), ppd_->record());
                !search.address)
                answer.reason.text = search.problem;
        if (answers_.problem.isNone() && !answer.reason.isRemark()) answers_.problem = answer.reason;
    }
    if (wasAsked && answers_.commands.empty()) answers_.problem = why;
    if (ppd_ != nullptr) answers_.unknownPapers = papersUnknownTo(*ppd_, customPapers(answers_.responses()));
    if (ppd_ != nullptr && answers_.problem.isNone())
        answers_.outdatedTitles = outdatedTitles(*ppd_, customPapers(answers_.responses()));
    answers_.ppd = ppd_;
    if (wasAsked) std::exchange(channel_, nullptr)->invalidate();
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

    std::vector<PrinterAnswers> answers;
    answers.reserve(questions.size());
    for (PrinterQuestion& question : questions) {
        // Its answer comes too late for anybody, and its job keeps the next question waiting.
        const bool isGivenUp = question.isUnderWay() && (timeout.count() > 0 || wasInterrupted());
        answers.push_back(question.end(timeout));
        if (isGivenUp) question.withdraw();
    }
    return answers;
}

std::optional<std::vector<std::string>> orvanQueues(
    std::chrono::duration<double> timeout, SchedulerProblem& problem) {
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
