// Rows that several commands have, the same in each.
#pragma once

#include "Orvan/Command.h"
#include "Scheduler/SchedulerProblem.h"

#include <chrono>
#include <optional>
#include <string>

namespace orvan {

// What is wrong with a value; "" for nothing.
std::string checkPositive(const std::string& number);
std::string checkNotNegative(const std::string& number);
std::string checkFile(const std::string& file);
std::string checkServer(const std::string& server);
std::string checkRelease(const std::string& release);
std::string checkSet(const std::string& set); // KEYWORD=CHOICE

inline constexpr ArgumentSpec kQueueOption{.name = "-q,--queue",
    .text = "A queue of the print scheduler (default: as \"lpstat -d\" says)",
    .value = "QUEUE"};
// The queue that was named, or the default one, for which a scheduler is waited for so long. Nothing, and
// why, when there is none.
std::optional<std::string> queueIn(
    const Arguments& arguments, std::chrono::duration<double> time, SchedulerProblem& problem);

// The scheduler that this process, and what it starts, talks to; as CUPS_SERVER, which it replaces before the
// command runs.
inline constexpr ArgumentSpec kServerOption{.name = "-H,--server",
    .text = "The print scheduler to ask (default CUPS_SERVER, or this computer's)",
    .value = "HOST[:PORT]",
    .check = checkServer};

inline constexpr ArgumentSpec kReleaseOption{.name = "--release",
    .text = "The system release to stand for (default 10.9.0)",
    .value = "R",
    .check = checkRelease};

inline constexpr ArgumentSpec kTimeoutOption{.name = "--timeout",
    .text = "How long to wait for the printer's answer (default 10)",
    .value = "SECONDS",
    .check = checkNotNegative};
std::chrono::duration<double> timeoutIn(const Arguments& arguments);

inline constexpr ArgumentSpec kJSONFlag{.name = "--json", .text = "Answer in JSON"};

// The same row as one of a group, of which one can be given.
constexpr ArgumentSpec inGroup(ArgumentSpec spec, const char* group) {
    spec.group = group;
    return spec;
}

} // namespace orvan
