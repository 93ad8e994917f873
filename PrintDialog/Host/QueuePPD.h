// The PPD of a queue of the scheduler.
#pragma once

#include "PrintDialog/Host/DialogPPD.h"

#include <chrono>
#include <memory>
#include <string>

namespace orvan {

// Asks the scheduler that this process talks to (CUPS_SERVER, client.conf) for the queue's PPD and opens it. Null, and a
// message for people in *error, when the scheduler is not there, has no such queue, or the queue has no PPD. Blocks: no
// single answer of the scheduler is waited for longer than `patience`. Callable from any thread.
std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, std::chrono::milliseconds patience, std::string* error);

} // namespace orvan
