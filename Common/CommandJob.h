// What the two sides of a command job know it by: who submits it and who answers it.
#pragma once

namespace orvan {

// The title of the job that asks a printer for its status.
inline constexpr const char* kStatusJobTitle = "Printer Status";

// What the command filter says for people when all went well. The scheduler keeps it with the job.
inline constexpr const char* kStatusReadMessage = "The printer's status was read.";

// Behind a command's name, the PPD attribute with the time at which the printer was asked for its answer:
// seconds since 1970-01-01 00:00 UTC, in decimal.
inline constexpr const char* kAnswerTime = "Time";

} // namespace orvan
