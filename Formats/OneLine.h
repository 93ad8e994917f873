// Texts of others for a terminal or a log.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// The UTF-8 text with a space for each control character (C0, DEL and C1) and each bidirectional override or
// isolate, so that it cannot break a line or a table, steer the terminal, or show words in another order.
std::string onOneLine(std::string_view text);

} // namespace platform
