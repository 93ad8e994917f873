#include "Formats/Unicode.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace platform {

namespace {

constexpr std::uint8_t byteAt(std::string_view text, std::size_t position) {
    return static_cast<std::uint8_t>(text[position]);
}

} // namespace

std::optional<char32_t> decodeUTF8(std::string_view text, std::size_t* position) {
    const std::size_t at = *position;
    const std::uint8_t first = byteAt(text, at);
    const gunichar character =
        first < 0x80 ? first
                     : g_utf8_get_char_validated(text.data() + at, static_cast<gssize>(text.size() - at));
    // What GLib answers for incomplete and for wrong bytes.
    if (character == static_cast<gunichar>(-1) || character == static_cast<gunichar>(-2)) return std::nullopt;
    *position = at + static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr));
    return character;
}

char32_t decodeUTF8OrReplace(std::string_view text, std::size_t* position) {
    if (const std::optional<char32_t> character = decodeUTF8(text, position)) return *character;
    ++*position;
    return kReplacementCharacter;
}

std::size_t findNonASCII(std::string_view text) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    using Words = std::array<std::uint64_t, 4>;
    std::size_t at = 0;
    while (text.size() - at >= sizeof(Words)) {
        Words words;
        std::memcpy(&words, text.data() + at, sizeof words);
        if (((words[0] | words[1] | words[2] | words[3]) & kHighBits) != 0) break;
        at += sizeof words;
    }
    while (at < text.size() && byteAt(text, at) < 0x80)
        ++at;
    return at < text.size() ? at : std::string_view::npos;
}

std::size_t findInvalidUTF8(std::string_view text) {
    // GLib takes a NUL for the end of a text; it is a character like any other here.
    for (std::size_t at = 0;;) {
        const std::size_t nul = std::min(text.find('\0', at), text.size());
        const char* end = nullptr;
        if (!g_utf8_validate_len(text.data() + at, nul - at, &end))
            return static_cast<std::size_t>(end - text.data());
        if (nul == text.size()) return std::string_view::npos;
        at = nul + 1;
    }
}

void appendUTF8(std::string& text, char32_t character) {
    const auto trail = [&](unsigned shift) {
        text.push_back(static_cast<char>(0x80U | ((character >> shift) & 0x3FU)));
    };
    if (character < 0x80) {
        text.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        text.push_back(static_cast<char>(0xC0U | (character >> 6U)));
        trail(0);
    } else if (character < 0x10000) {
        text.push_back(static_cast<char>(0xE0U | (character >> 12U)));
        trail(6);
        trail(0);
    } else {
        text.push_back(static_cast<char>(0xF0U | (character >> 18U)));
        trail(12);
        trail(6);
        trail(0);
    }
}

std::optional<std::string> utf8FromUTF16(std::string_view bytes, ByteOrder order, std::size_t* badPosition) {
    const std::size_t highByte = order == ByteOrder::big ? 0 : 1;
    const auto unitAt = [&](std::size_t at) -> char32_t {
        return static_cast<char32_t>(byteAt(bytes, at + highByte) << 8U) | byteAt(bytes, at + 1 - highByte);
    };
    const auto fail = [&](std::size_t at) {
        if (badPosition != nullptr) *badPosition = at;
        return std::nullopt;
    };
    std::string text;
    text.reserve(bytes.size());
    std::size_t at = 0;
    while (bytes.size() - at >= 2) {
        char32_t character = unitAt(at);
        std::size_t length = 2;
        if (isHighSurrogate(character)) {
            if (bytes.size() - at < 4 || !isLowSurrogate(unitAt(at + 2))) return fail(at);
            character = joinSurrogates(character, unitAt(at + 2));
            length = 4;
        } else if (isLowSurrogate(character)) {
            return fail(at);
        }
        appendUTF8(text, character);
        at += length;
    }
    if (at != bytes.size()) return fail(at);
    return text;
}

std::string utf16FromUTF8(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    const auto put = [&](char32_t unit) {
        bytes.push_back(static_cast<char>(unit >> 8U));
        bytes.push_back(static_cast<char>(unit & 0xFFU));
    };
    std::size_t at = 0;
    while (at < text.size()) {
        const char32_t character = decodeUTF8OrReplace(text, &at);
        if (character >= 0x10000) {
            put(0xD800 + ((character - 0x10000) >> 10U));
            put(0xDC00 + ((character - 0x10000) & 0x3FFU));
        } else {
            put(character);
        }
    }
    return bytes;
}

} // namespace platform
