// Base 64 in the standard alphabet (RFC 4648, section 4).
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

void appendBase64(std::string& text, std::span<const std::uint8_t> bytes);

// White space between the characters is passed over, the padding is required. Nothing when the text is not
// base 64.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

} // namespace platform
