// The channel's life: dispatch, wait and end.
#include "BiDi/OrvanBiDi.h"

#include "Common/CommandJob.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Platform/PMPrinter.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvan {

std::shared_ptr<OrvanBiDi> OrvanBiDi::initWithPDECallbackObject(
    std::shared_ptr<platform::PDEPluginCallback> callbackObj) {
    std::shared_ptr<OrvanBiDi> channel(new OrvanBiDi);
    channel->setCallbackObj(std::move(callbackObj));
    if (channel->callbackObj_ != nullptr) channel->ppd_ = channel->callbackObj_->ppdFile();
    channel->setSupportedCommands(channel->supportedCommandsInPPD(channel->ppd_));
    return channel;
}

OrvanBiDi::~OrvanBiDi() = default;

OrvanBiDi::State OrvanBiDi::state() const {
    if (_awaitCommandJobTimer != nullptr) return State::waiting;
    if (_isInvalidated) return State::spent;
    if (_commandFilterTask == nullptr) return State::ready;
    return _commandFilterTask->isRunning() ? State::filterRunning : State::filterEnded;
}

std::shared_ptr<platform::PMPrinter> OrvanBiDi::printer() const {
    return callbackObj_ != nullptr ? callbackObj_->PMPrinter() : nullptr;
}

void OrvanBiDi::dispatchCommands(const std::optional<CommandList>& commands) {
    const std::string job = commandJobWithCommands(commands);
    if (RunningOn107OrLater())
        dispatchThroughQueue(job);
    else
        dispatchToFilter(job);
}

void OrvanBiDi::dispatchThroughQueue(const std::string& job) {
    if (!isCommandJobRunning())
        if (const auto queue = printer()) platform::PMPrinterSendCommand(*queue, job, kStatusJobTitle, {});

    switch (state()) {
    case State::waiting:
    case State::spent:
        return;
    case State::ready:
    case State::filterRunning:
    case State::filterEnded:
        break;
    }
    _awaitCommandJobTimer = platform::RepeatingTimer::schedule(
        kWaitInterval,
        [self = shared_from_this()](platform::RepeatingTimer& timer) { self->awaitCommandJob(timer); },
        kStatusJobTitle);
    // The first tick can end the wait, and the wait may be all that keeps the timer.
    const auto timer = _awaitCommandJobTimer;
    timer->fire();
}

bool OrvanBiDi::isCommandJobRunning() {
    return isJobActive(kStatusJobTitle);
}

bool OrvanBiDi::isJobActive(std::string_view title) const {
    const auto queue = printer();
    if (queue == nullptr) return false;
    const std::vector<std::string> titles = queue->activeJobTitles();
    return std::ranges::find(titles, title) != titles.end();
}

void OrvanBiDi::awaitCommandJob(platform::RepeatingTimer& timer) {
    if (!_isInvalidated) {
        if (isJobActive(timer.userInfo())) return;
        processCommandResponsesWithPPD();
    }
    timer.stop();
    endWait();
}

void OrvanBiDi::endWait() {
    _isInvalidated = true;
    if (const auto timer = std::exchange(_awaitCommandJobTimer, nullptr)) timer->stop();
    // Releasing the delegate may release this channel's owner.
    const auto delegate = std::exchange(delegate_, nullptr);
}

void OrvanBiDi::commandFilterTerminated(const platform::TaskOutput& output) {
    std::string_view text = output.standardError;
    // What was cut somewhere in a line is good up to the line before.
    if (output.isTruncated) text = text.substr(0, text.rfind('\n') + 1);
    processCommandResponsesWithTaskOutput(text);
}

void OrvanBiDi::invalidate() {
    endWait();
}

} // namespace orvan
