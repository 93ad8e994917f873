// Text encodings: checking, reading and writing UTF-8, and UTF-16 from and to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

constexpr bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}
constexpr char32_t joinSurrogates(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
}

// The character of valid UTF-8 (RFC 3629: no overlong forms, no surrogates) at *position, which moves behind
// it; nothing, and *position stays, when there is none. *position is below the text's size.
std::optional<char32_t> decodeUTF8(std::string_view text, std::size_t* position);

// The same for text that may hold anything: what is not UTF-8 counts as U+FFFD, byte by byte.
char32_t decodeUTF8OrReplace(std::string_view text, std::size_t* position);

// The position of the first byte that does not belong to valid UTF-8; npos when there is none.
std::size_t findInvalidUTF8(std::string_view text);

// The position of the first byte above 0x7F; npos when there is none.
std::size_t findNonASCII(std::string_view text);

// `character` is no surrogate and at most 0x10FFFF.
void appendUTF8(std::string& text, char32_t character);

enum class ByteOrder { big, little };

// Nothing when the bytes are an odd number or hold a surrogate without its other half; *badPosition (when
// given) is then where.
std::optional<std::string> utf8FromUTF16(
    std::string_view bytes, ByteOrder order, std::size_t* badPosition = nullptr);

// Big endian, without byte order mark; what is not UTF-8 becomes U+FFFD, byte by byte.
std::string utf16FromUTF8(std::string_view text);

} // namespace platform
