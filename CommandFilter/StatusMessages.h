// What the command filter says for people when all went well.
#pragma once

namespace orvan {

inline constexpr const char* kStatusReadMessage = "The printer's status was read.";

} // namespace orvan
