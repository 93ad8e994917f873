#include "PrintDialog/Host/QueuePPD.h"

#include <utility>

namespace orvan {
namespace {

struct Opening {
    std::optional<OpenedQueue> queue;
    QueueFailure failure;
};

using Kind = SchedulerProblem::Kind;

Opening open(SchedulerConnection& connection, const std::string& name) {
    Opening opening;
    SchedulerProblem problem;
    std::optional<FetchedQueue> fetched = scheduler::queue(connection, name, problem);
    if (!fetched) {
        const bool isTrouble = problem.kind != Kind::unknown && problem.kind != Kind::severalPrinters;
        opening.failure = {std::move(problem), isTrouble};
        return opening;
    }
    platform::Failure error;
    auto ppd = DialogPPD::open(fetched->ppd->file(), error);
    if (ppd != nullptr)
        opening.queue = OpenedQueue{*std::move(fetched), std::move(ppd)};
    else
        opening.failure.problem = {Kind::refuses, "the PPD of queue " + name + " is damaged: " +
                                                      withoutFile(error.value_or(""), fetched->ppd->file())};
    return opening;
}

QueueFailure silence() {
    return {schedulerSilence(), true};
}

} // namespace

std::string withoutFile(const std::string& message, const std::string& file) {
    const std::size_t place = message.find(file + ": ");
    return place == std::string::npos ? message : message.substr(place + file.size() + 2);
}

SchedulerRequest openQueue(const std::string& queue, SchedulerWorker::Duration time, QueueHandler handler) {
    return SchedulerWorker::shared().start<Opening>(
        queue, time, [queue](SchedulerConnection& connection) { return open(connection, queue); },
        [handler = std::move(handler)](std::optional<Opening> opening) {
            if (opening)
                handler(std::move(opening->queue), opening->failure);
            else
                handler(std::nullopt, silence());
        });
}

std::optional<OpenedQueue> fetchQueue(
    const std::string& queue, SchedulerWorker::Duration time, platform::Failure& error) {
    auto opening = SchedulerWorker::shared().wait<Opening>(
        queue, time, [queue](SchedulerConnection& connection) { return open(connection, queue); });
    if (opening && opening->queue) return std::move(opening->queue);
    error = (opening ? opening->failure : silence()).problem.text;
    return std::nullopt;
}

std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, SchedulerWorker::Duration time, platform::Failure& error) {
    const std::unique_ptr<FetchedPPD> ppd = fetchQueuePPDFile(queue, time, error);
    return ppd != nullptr ? DialogPPD::open(ppd->file(), error) : nullptr;
}

} // namespace orvan
