// Whether the scheduler can run a command filter.
#pragma once

#include "Orvan/Doctor/Checkup.h"
#include "Scheduler/PrintScheduler.h"

#include <string>

namespace orvan {

// `filter` is what the queue's PPD names: a path, or a name in the scheduler's folder of filters. The file
// has to be there, for everybody to run and for nobody but root, or the scheduler's own user, to change
// (cupsd-helper(8)); nor may its folder be. Where the file cannot be seen from here, what the scheduler
// itself says of the queue's filters counts.
Finding examineCommandFilter(const std::string& filter, const SchedulerQueue& queue);

} // namespace orvan
