#include "PrintDialog/Host/QueuePPD.h"

#include "Scheduler/PrintScheduler.h"

namespace orvan {

std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, std::chrono::milliseconds patience, platform::Failure& error) {
    const std::unique_ptr<FetchedPPD> ppd = fetchQueuePPDFile(queue, patience, error);
    return ppd != nullptr ? DialogPPD::open(ppd->file(), error) : nullptr;
}

} // namespace orvan
