// Bytes to text and back.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The bytes as UTF-8 text; nothing when they are not valid UTF-8 (RFC 3629). A NUL byte is valid.
std::optional<std::string> decodeUTF8(std::string_view bytes);

// The bytes as ASCII text; nothing when a byte is above 127.
std::optional<std::string> decodeASCII(std::string_view bytes);

// The UTF-8 text in ISO 8859-1; nothing when it is not UTF-8 or holds a character that is not in there.
std::optional<std::string> encodeLatin1(std::string_view text);

// As much of valid UTF-8 text as fits `maximum` bytes without cutting a character.
std::string_view prefixOfUTF8(std::string_view text, std::size_t maximum);

} // namespace platform
