// How much there is in a tray or a supply, by what the printer says of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace orvan {

// Up to these levels, in per cent, a tray or a supply is low.
inline constexpr std::int64_t kLowTray = 30; // what a tray that is nearly empty has
inline constexpr std::int64_t kLowSupply = 10;

// Per cent, where the word for a supply's status says how much there is: "OK" is all, and a number that it
// begins with is itself. Nothing for every other word.
std::optional<std::int64_t> levelInWord(std::string_view status);

} // namespace orvan
