#include "Formats/Base64.h"

#include <array>

namespace platform {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::uint8_t kSpace = 64;
constexpr std::uint8_t kPadding = 65;
constexpr std::uint8_t kForeign = 66;

constexpr std::array<std::uint8_t, 256> kDigits = [] {
    std::array<std::uint8_t, 256> digits{};
    digits.fill(kForeign);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i)
        digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    for (const char space : {' ', '\t', '\n', '\r'})
        digits[static_cast<unsigned char>(space)] = kSpace;
    digits[static_cast<unsigned char>('=')] = kPadding;
    return digits;
}();

} // namespace

void appendBase64(std::string& text, std::span<const std::uint8_t> bytes) {
    const auto put = [&](std::uint32_t group, std::size_t digits) {
        for (std::size_t i = 0; i < 4; ++i)
            text.push_back(i < digits ? kAlphabet[(group >> (18 - 6 * i)) & 0x3FU] : '=');
    };
    while (bytes.size() >= 3) {
        put(static_cast<std::uint32_t>(bytes[0] << 16U | bytes[1] << 8U | bytes[2]), 4);
        bytes = bytes.subspan(3);
    }
    if (bytes.size() == 2) put(static_cast<std::uint32_t>(bytes[0] << 16U | bytes[1] << 8U), 3);
    if (bytes.size() == 1) put(static_cast<std::uint32_t>(bytes[0] << 16U), 2);
}

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    std::size_t digits = 0;
    std::size_t padding = 0;
    for (const char c : text) {
        const std::uint8_t digit = kDigits[static_cast<unsigned char>(c)];
        if (digit == kSpace) continue;
        if (digit == kForeign) return std::nullopt;
        if (digit == kPadding) {
            if (++padding + digits > 4 || digits < 2) return std::nullopt;
            continue;
        }
        if (padding != 0) return std::nullopt;
        group = (group << 6U) | digit;
        if (++digits < 4) continue;
        for (const unsigned shift : {16U, 8U, 0U})
            bytes.push_back(static_cast<std::uint8_t>(group >> shift));
        group = 0;
        digits = 0;
    }
    if (digits == 0 && padding == 0) return bytes;
    if (digits + padding != 4) return std::nullopt;
    if (digits == 3) group >>= 2U;
    if (digits == 2) group >>= 4U;
    if (digits == 3) bytes.push_back(static_cast<std::uint8_t>(group >> 8U));
    bytes.push_back(static_cast<std::uint8_t>(group));
    return bytes;
}

} // namespace platform
