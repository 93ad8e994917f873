// Queues that print to one printer, some of them without its driver.
#pragma once

#include "Scheduler/PrintScheduler.h"

#include <string>
#include <vector>

namespace orvan {

// Whether two devices are one printer: the same host, or the same name among discovered ones. Two of the same
// scheme have the same port and path as well: a box with several printers has a port or a path for each. A
// queue of another print server is no printer.
bool isSamePrinter(const std::string& device, const std::string& other);

// Those of `all` that print to the queue's printer; not the queue itself.
std::vector<SchedulerQueue> queuesOfSamePrinter(
    const SchedulerQueue& queue, const std::vector<SchedulerQueue>& all);

} // namespace orvan
