#include "PrintDialog/Host/PaperNames.h"

#include "Common/Utilities/ReleaseGates.h"
#include "PrintDialog/Host/HostText.h"

#include <array>
#include <ctime>
#include <utility>

namespace orvan {
namespace {

constexpr double kOften = 0.1; // seconds
constexpr double kSeldom = 0.5;
constexpr std::chrono::seconds kNew{2}; // times of answers are whole seconds

std::optional<platform::PropertyList> papersOf(const StoredAnswer* answer) {
    if (answer == nullptr) return std::nullopt;
    return *answer->list.find(kCustomPaperTypesKey);
}

// "14:05" of today, and with the date of another day.
std::string timeText(const StoredAnswer& answer) {
    if (!answer.askedAt) return hostText("an earlier time");
    const std::time_t then = std::chrono::system_clock::to_time_t(*answer.askedAt);
    const std::time_t now = std::time(nullptr);
    std::tm day{};
    std::tm today{};
    localtime_r(&then, &day);
    localtime_r(&now, &today);
    const bool isToday = day.tm_yday == today.tm_yday && day.tm_year == today.tm_year;
    std::array<char, 64> text{};
    const std::size_t size = std::strftime(text.data(), text.size(), isToday ? "%H:%M" : "%x %H:%M", &day);
    return {text.data(), size};
}

} // namespace

PaperNames::PaperNames(platform::PDEPanel& panel, std::shared_ptr<DialogPrinter> printer, Start start,
    std::function<void()> changed, std::function<void()> outdated)
    : panel_(panel),
      printer_(std::move(printer)),
      start_(std::move(start)),
      changed_(std::move(changed)),
      outdated_(std::move(outdated)),
      isReady_(start_.isAnswered || isOver()) {
    if (isReady_) return;
    // The channel takes the PPD before it gives the panel what is in it, so this only notes it.
    printer_->setAnswerHandler([this](std::vector<StoredAnswer> answers) { fresh_ = std::move(answers); });
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
    const bool hasItsOwn = fresh_ || (isOver() && !RunningOn107OrLater());
    if (!hasItsOwn && !RunningOn1010OrLater())
        for (const StoredAnswer& answer : start_.stored)
            panel_.receivedPrinterAnswer(answer.list);
    shownPapers_ = papersOf(newest());
    isShown_ = true;
}

bool PaperNames::isOutdated() const {
    return isShown_ && fresh_ && papersOf(answerWithPapers(*fresh_)) != shownPapers_;
}

const StoredAnswer* PaperNames::newest() const {
    return answerWithPapers(fresh_ ? *fresh_ : start_.stored);
}

std::string PaperNames::line() const {
    if (!isReady_) return hostText("Asking the printer \u2026");
    if (start_.isAnswered || !start_.hasCommands || !RunningOn107OrLater() || RunningOn1010OrLater())
        return {};
    const StoredAnswer* const before = answerWithPapers(start_.stored);
    // What is shown is what the line is about.
    const StoredAnswer* const answer = isOutdated() ? before : newest();
    if (const platform::Failure& refusal = printer_->printer().refusal())
        return hostText("The printer was not asked for its paper names: %1.", {*refusal}) +
               (answer != nullptr ? " " + hostText("Paper names of %1.", {timeText(*answer)}) : "");
    if (answer == nullptr) return hostText("The printer has not told its paper names.");
    const std::string time = timeText(*answer);
    if (!start_.asksPrinter || isOutdated()) return hostText("Paper names of %1.", {time});
    if (!isOver())
        return hostText(start_.isBusy ? "Paper names of %1; the printer is busy with another job."
                                      : "Paper names of %1; the printer has not answered yet.",
            {time});
    // An answer that is not newer is the one of before, unless that was new itself.
    const bool isSame = before != nullptr && answer->askedAt && answer->askedAt == before->askedAt;
    const bool isOld = !fresh_ || (isSame && *answer->askedAt + kNew < begin_);
    return isOld ? hostText("Paper names of %1; the printer did not answer.", {time}) : std::string();
}

} // namespace orvan
