// The CUPS scheduler that this process talks to (CUPS_SERVER, client.conf). Everything here blocks, for no
// longer than `patience` for a single answer, and may be called from any thread.
#pragma once

#include "Platform/PrintServerConnection.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// The queue's PPD, opened. Null, and a message for people in *error (when given), when the scheduler is not
// there, has no such queue, or the queue has no PPD.
std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, std::chrono::milliseconds patience, std::string* error);

// The names of the scheduler's queues. Nothing, and a message for people in *error (when given), when it is
// not there.
std::optional<std::vector<std::string>> listQueues(std::chrono::milliseconds patience, std::string* error);

// The scheduler's answer to a request, which this takes over. Null, and a message for people in *error (when
// given), when it is not there, does not answer, or refuses.
platform::IPPMessage askScheduler(ipp_t* request, std::chrono::milliseconds patience, std::string* error);

// For messages: the scheduler and where it is.
std::string schedulerName();

} // namespace orvan
