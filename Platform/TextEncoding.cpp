#include "Platform/TextEncoding.h"

#include "Platform/Unicode.h"

#include <glib.h>

#include <algorithm>

namespace platform {

std::optional<std::string> decodeUTF8(std::string_view bytes) {
    // GLib takes a NUL for an error; it is a character like any other here.
    std::string_view rest = bytes;
    for (std::size_t nul = rest.find('\0'); nul != std::string_view::npos; nul = rest.find('\0')) {
        if (!g_utf8_validate_len(rest.data(), nul, nullptr)) return std::nullopt;
        rest.remove_prefix(nul + 1);
    }
    if (!g_utf8_validate_len(rest.data(), rest.size(), nullptr)) return std::nullopt;
    return std::string(bytes);
}

std::optional<std::string> decodeASCII(std::string_view bytes) {
    const auto isASCII = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (!std::all_of(bytes.begin(), bytes.end(), isASCII)) return std::nullopt;
    return std::string(bytes);
}

std::optional<std::string> encodeLatin1(std::string_view text) {
    std::string bytes;
    for (std::size_t position = 0; position < text.size();) {
        const std::optional<char32_t> character = decodeUTF8(text, &position);
        if (!character || *character > 0xFF) return std::nullopt;
        bytes += static_cast<char>(*character);
    }
    return bytes;
}

std::string_view prefixOfUTF8(std::string_view text, std::size_t maximum) {
    if (text.size() <= maximum) return text;
    // Every byte of a character but its first is 10xxxxxx (RFC 3629, section 3).
    while (maximum > 0 && (static_cast<unsigned char>(text[maximum]) & 0xC0U) == 0x80U)
        --maximum;
    return text.substr(0, maximum);
}

} // namespace platform
