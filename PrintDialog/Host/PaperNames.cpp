#include "PrintDialog/Host/PaperNames.h"

#include "Common/TicketVocabulary.h"
#include "Common/Utilities/ReleaseGates.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/StatusJobs.h"

#include <utility>

namespace orvan {
namespace {

constexpr double kOften = 0.1; // seconds
constexpr double kSeldom = 0.5;

std::optional<platform::PropertyList> papersOf(const StoredAnswer* answer) {
    if (answer == nullptr) return std::nullopt;
    return *answer->list->find(OVOVGCustomPaperTypes);
}

std::string timeOf(const CommandAnswer& answer, const std::string& language) {
    return answer.askedAt ? timeText(*answer.askedAt) : hostText(language, "an earlier time");
}

} // namespace

PaperNames::PaperNames(platform::PDEPanel& panel, std::shared_ptr<DialogPrinter> printer, Start start,
    std::function<void()> changed, std::function<void()> outdated)
    : panel_(panel),
      printer_(std::move(printer)),
      start_(std::move(start)),
      changed_(std::move(changed)),
      outdated_(std::move(outdated)),
      answers_{.before = std::move(start_.stored)},
      isReady_(start_.isAnswered || isOver()) {
    if (isReady_) return;
    if (const auto job = statusJobIn(printer_->printer().activeJobs())) answers_.sharedJob = job->id;
    // The channel takes the PPD before it gives the panel what is in it, so this only notes it.
    printer_->setAnswerHandler(
        [this](std::vector<StoredAnswer> answers) { answers_.after = std::move(answers); });
    timer_ = platform::RepeatingTimer::schedule(
        kOften, [this](platform::RepeatingTimer&) { look(); }, "paper names");
}

PaperNames::~PaperNames() {
    printer_->setAnswerHandler({});
    if (timer_ != nullptr) timer_->stop();
}

void PaperNames::look() {
    const bool wasReady = isReady_;
    isReady_ = isReady_ || isOver() || std::chrono::steady_clock::now() >= deadline_;
    if (isReady_ && !wasReady && !isOver()) {
        timer_->stop();
        timer_ = platform::RepeatingTimer::schedule(
            kSeldom, [this](platform::RepeatingTimer&) { look(); }, "paper names");
    }
    const bool wantsAnother = isOutdated();
    if (isOver() && !wantsAnother) timer_->stop();
    std::string now = line();
    const bool isChanged = isReady_ != wasReady || now != toldLine_;
    toldLine_ = std::move(now);
    // The last of these may end this object.
    const std::function<void()> outdated = outdated_;
    if (isChanged) changed_();
    if (wantsAnother) outdated();
}

void PaperNames::willShow() {
    // Before 10.7 the filter's answers go to the panel alone.
    const bool hasItsOwn = answers_.after || (isOver() && !RunningOn107OrLater());
    if (!hasItsOwn && !RunningOn1010OrLater())
        for (const StoredAnswer& answer : answers_.before)
            if (answer.list) panel_.receivedPrinterAnswer(*answer.list);
    shownPapers_ = papersOf(newest());
    isShown_ = true;
}

bool PaperNames::isOutdated() const {
    return isShown_ && answers_.after && papersOf(answerWithPapers(*answers_.after)) != shownPapers_;
}

const StoredAnswer* PaperNames::newest() const {
    return answerWithPapers(answers());
}

// What is shown is what the line is about.
CommandAnswer PaperNames::papersAnswer() const {
    AnswersToQuestion shown = answers_;
    if (isOutdated()) shown.after.reset();
    const StoredAnswer* const papers = answerWithPapers(shown.after ? *shown.after : shown.before);
    const SchedulerPrinter& printer = printer_->printer();
    const AnswerReason why =
        start_.asksPrinter ? reasonOf(printer, isOver()) : AnswerReason{AnswerCode::askingForbidden};
    for (CommandAnswer& answer : commandAnswers(shown, printer, why))
        if (papers != nullptr && answer.command == papers->command) return std::move(answer);
    return {.command = {}, .reason = why};
}

std::string PaperNames::line() const {
    const std::string& language = start_.language;
    if (!isReady_ && !isOver()) return hostText(language, "Asking the printer \u2026");
    if (start_.isAnswered || !start_.hasCommands || !RunningOn107OrLater() || RunningOn1010OrLater())
        return {};
    const CommandAnswer papers = papersAnswer();
    const bool hasNames = papers.state != CommandAnswer::State::never;
    if (const std::string& refusal = printer_->printer().refusal().text; !refusal.empty())
        return hostText(language, "The printer was not asked for its paper names: %1.", {refusal}) +
               (hasNames ? " " + hostText(language, "Paper names of %1.", {timeOf(papers, language)}) : "");
    if (!hasNames) return hostText(language, "The printer has not told its paper names.");
    if (papers.state == CommandAnswer::State::now) return {};
    const std::vector<std::string> time{timeOf(papers, language)};
    if (isOutdated()) return hostText(language, "Paper names of %1.", time);
    switch (papers.reason.code) {
    case AnswerCode::askingForbidden:
        return hostText(language, "Paper names of %1.", time);
    case AnswerCode::printerBusy:
        return hostText(language, "Paper names of %1; the printer is busy with another job.", time);
    case AnswerCode::noAnswerYet:
    case AnswerCode::queuePaused:
    case AnswerCode::jobHeld:
        return hostText(language, "Paper names of %1; the printer has not answered yet.", time);
    default:
        return hostText(language, "Paper names of %1; the printer did not answer.", time);
    }
}

} // namespace orvan
