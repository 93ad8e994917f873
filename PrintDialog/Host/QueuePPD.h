// A queue as a dialog or a command uses it: its PPD, and the printer for a panel or a channel.
#pragma once

#include "Formats/Failure.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "Scheduler/PrintScheduler.h"
#include "Scheduler/SchedulerPrinter.h"
#include "Scheduler/SchedulerWorker.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orvan {

struct OpenedQueue {
    FetchedQueue fetched; // what SchedulerPrinter begins with
    std::unique_ptr<DialogPPD> ppd;
};

// Why a queue was not opened.
struct QueueFailure {
    SchedulerProblem problem; // a damaged PPD is a refusal
    // Whether it is something to tell: not for a queue that has no PPD, or is a class, as other people's
    // printers are.
    bool isTrouble = true;
};

// Asks the scheduler for the queue, its active jobs and its PPD, all in one request, and opens the PPD; all
// of that on the worker. The handler is called on the main loop with the queue, or with nothing and why not.
using QueueHandler = std::function<void(std::optional<OpenedQueue> queue, const QueueFailure& failure)>;
[[nodiscard]] SchedulerRequest openQueue(
    const std::string& queue, SchedulerWorker::Duration time, QueueHandler handler);

// The same, waiting. Nothing, and a message for people in `error`, when the scheduler is not there, has no
// such queue, the queue has no PPD, or the PPD is damaged.
std::optional<OpenedQueue> fetchQueue(
    const std::string& queue, SchedulerWorker::Duration time, platform::Failure& error);
// The PPD alone.
std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, SchedulerWorker::Duration time, platform::Failure& error);

// What a message says behind the name of a file that nobody knows.
std::string withoutFile(const std::string& message, const std::string& file);

} // namespace orvan
