// Numbers in printers' texts.
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

// The decimal integer that the text begins with, after optional white space and a sign and up to the first
// other character; 0 when no digit comes first. Numbers beyond 32 bits become the nearest that fits.
std::int32_t leadingInteger(std::string_view text);

// The nearest 32-bit number.
std::int32_t nearestInteger(std::int64_t number);

} // namespace platform
