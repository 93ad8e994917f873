// The PPD of a queue, as a dialog uses it.
#pragma once

#include "Formats/Failure.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <chrono>
#include <memory>
#include <string>

namespace orvan {

// Asks the scheduler for the queue's PPD and opens it. Null, and a message for people in `error`,
// when the scheduler is not there, has no such queue, the queue has no PPD, or the PPD is damaged. Blocks for
// no longer than `patience` for a single answer; callable from any thread.
std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, std::chrono::milliseconds patience, platform::Failure& error);

} // namespace orvan
