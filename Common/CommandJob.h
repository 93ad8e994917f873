// What the two sides of a command job know it by: who submits it and who answers it.
#pragma once

namespace orvan {

// The title of the job that asks a printer for its status.
inline constexpr const char* kStatusJobTitle = "Printer Status";

// What the command filter says for people when all went well. The scheduler keeps it with the job.
inline constexpr const char* kStatusReadMessage = "The printer's status was read.";

// Behind a command's name: attributes of the queue's PPD in which the command filter says of which question
// the answer is.

// The time at which the printer was asked for the answer: seconds since 1970-01-01 00:00 UTC, in decimal.
inline constexpr const char* kAnswerTime = "Time";
// The number of the job that brought it.
inline constexpr const char* kAnswerJob = "Job";
// "JOB:WORD": the newest job that brought none, and why; the answer is then of an earlier one.
inline constexpr const char* kAnswerProblem = "Problem";

// The words for why.
namespace problemWord {
inline constexpr const char* kNoAddress = "no-address";      // the queue's device leads to no printer
inline constexpr const char* kOffline = "printer-offline";   // not even a refusal came
inline constexpr const char* kPassword = "password-wanted";  // the printer wants one, or another one
inline constexpr const char* kCertificate = "other-printer"; // another certificate than the one that is known
inline constexpr const char* kDocument = "no-status-document"; // what came is none
inline constexpr const char* kAgentSilent = "agent-silent";    // the SNMP agent does not answer
inline constexpr const char* kAgentRefuses = "agent-refuses";  // or not this
inline constexpr const char* kAgentOff = "agent-off";          // this machine asks none
} // namespace problemWord

} // namespace orvan
