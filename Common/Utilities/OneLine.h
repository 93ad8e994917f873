// Texts of others for a terminal or a log.
#pragma once

#include <string>
#include <string_view>

namespace orvan {

// The UTF-8 text with a space for each control character (C0, DEL and C1), so that it cannot break a line or
// a table, or steer the terminal.
std::string onOneLine(std::string_view text);

} // namespace orvan
