// The channel's life: dispatch, wait and end.
#include "BiDi/OrvanBiDi.h"

#include "Common/CommandJob.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Platform/PMPrinter.h"
#include "Platform/PrintServerConnection.h"

#include <algorithm>
#include <utility>

namespace orvan {
namespace {

struct JobList {
    JobList() = default;
    JobList(const JobList&) = delete;
    JobList& operator=(const JobList&) = delete;
    ~JobList() { cupsFreeJobs(count, jobs); }

    int count = 0;
    cups_job_t* jobs = nullptr;
};

} // namespace

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
        if (const auto queue = printer())
            platform::PMPrinterSendCommand(*queue, job, kStatusJobTitle, nullptr);

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
    const platform::PrintServerConnection connection(queue->patience());
    if (connection.http() == nullptr) return false;
    JobList list;
    list.count = cupsGetJobs2(
        connection.http(), &list.jobs, platform::PMPrinterGetID(*queue).c_str(), 1, CUPS_WHICHJOBS_ACTIVE);
    return std::any_of(list.jobs, list.jobs + std::max(list.count, 0),
        [title](const cups_job_t& job) { return job.title == title; });
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
