#include "Formats/TextEncoding.h"

#include "Formats/Unicode.h"

namespace platform {

std::optional<std::string> decodeUTF8(std::string_view bytes) {
    return findInvalidUTF8(bytes) == std::string_view::npos ? std::optional<std::string>(bytes)
                                                            : std::nullopt;
}

std::optional<std::string> decodeASCII(std::string_view bytes) {
    return findNonASCII(bytes) == std::string_view::npos ? std::optional<std::string>(bytes) : std::nullopt;
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
