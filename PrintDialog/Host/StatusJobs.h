// The channel's jobs in a queue.
#pragma once

#include "Formats/Failure.h"
#include "Scheduler/PrintScheduler.h"

#include <optional>
#include <string>
#include <vector>

namespace orvan {

// Whether the job is held or was stopped: it goes on when somebody does something about it.
bool isInTrouble(const QueueJob& job);

// Of the jobs, the oldest one of the channel: one in trouble (held or stopped) before one that is not.
// Nothing when there is none.
std::optional<QueueJob> statusJobIn(const std::vector<QueueJob>& jobs);
// This person's active ones in the queue. Nothing, too, when the scheduler does not say.
std::optional<QueueJob> findStatusJob(const std::string& queue, SchedulerWorker::Duration time);

// For people, to go on with a sentence: what the scheduler last said of the job; "" when it said nothing.
std::string lastWordOn(const QueueJob& job);

// For people: what keeps the job, and how to be rid of it.
std::string describe(const QueueJob& job);

} // namespace orvan
