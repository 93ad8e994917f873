// Options that several commands have, the same in each.
#pragma once

#include "Tools/Orvan/Command.h"

#include <string>

namespace orvan {

inline constexpr double kDefaultTimeout = 10; // seconds

// -q. An option group is an App as well.
CLI::Option* addQueueOption(CLI::App* command, std::string& queue);

// -H: the scheduler that this process, and what it starts, talks to; as CUPS_SERVER, which it replaces.
void addServerOption(CLI::App* command);

// --release, --timeout (seconds) and --json.
void addReleaseOption(CLI::App* command, std::string& release);
void addTimeoutOption(CLI::App* command, double& timeout);
void addJSONFlag(CLI::App* command, bool& json);

// What is wrong with a number as an argument; "" when it is above 0, or not below it.
std::string checkPositive(const std::string& number);
std::string checkNotNegative(const std::string& number);

} // namespace orvan
