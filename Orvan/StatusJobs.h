// The channel's jobs in a queue.
#pragma once

#include "Formats/Failure.h"

#include <cups/ipp.h>

#include <chrono>
#include <optional>
#include <string>

namespace orvan {

struct StatusJob {
    int id = 0;
    ipp_jstate_t state = IPP_JSTATE_PENDING;
    std::string message; // the scheduler's last word on it; may be empty
};

// Whether the job is held or was stopped: it goes on when somebody does something about it.
bool isInTrouble(const StatusJob& job);

// This person's oldest active job of the channel in the queue: one in trouble (held or stopped) before one
// that is not. Nothing when there is none, or the scheduler does not say.
std::optional<StatusJob> findStatusJob(const std::string& queue, std::chrono::milliseconds patience);

// What the command filter last said for people in this person's newest job of the channel that has ended;
// empty when it said nothing or all went well.
std::string complaintOfLastJob(const std::string& queue, std::chrono::milliseconds patience);

// Whether the scheduler would take a command job for the queue; no, and a message for people in `error`, when
// it says why not or is not there.
bool wouldTakeStatusJob(
    const std::string& queue, std::chrono::milliseconds patience, platform::Failure& error);

// Cancels the job. False when it had ended before, or the scheduler refuses or is not there.
bool withdrawJob(const std::string& queue, int job, std::chrono::milliseconds patience);

// For people, to go on with a sentence: what the scheduler last said of the job; "" when it said nothing.
std::string lastWordOn(const StatusJob& job);

// For people: what keeps the job, and how to be rid of it.
std::string describe(const StatusJob& job, const std::string& queue);

} // namespace orvan
