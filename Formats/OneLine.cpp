#include "Formats/OneLine.h"

#include <algorithm>
#include <array>

namespace platform {
namespace {

constexpr unsigned char kDelete = 0x7F;

// Characters of several bytes: their first bytes in UTF-8, and the range of the last one.
struct Range {
    std::string_view lead;
    unsigned char first;
    unsigned char last;
};
constexpr std::array<Range, 3> kSteering{{
    {"\xC2", 0x80, 0x9F},     // C1: U+0080 to U+009F
    {"\xE2\x80", 0xAA, 0xAE}, // bidirectional overrides: U+202A to U+202E
    {"\xE2\x81", 0xA6, 0xA9}, // and isolates: U+2066 to U+2069
}};

// The length of the character at the text's beginning that is not for a terminal; 0 when it is.
std::size_t steeringLength(std::string_view text) {
    const auto byte = static_cast<unsigned char>(text.front());
    if (byte < ' ' || byte == kDelete) return 1;
    const auto range = std::ranges::find_if(kSteering, [text](const Range& one) {
        if (!text.starts_with(one.lead) || text.size() == one.lead.size()) return false;
        const auto last = static_cast<unsigned char>(text[one.lead.size()]);
        return last >= one.first && last <= one.last;
    });
    return range != kSteering.end() ? range->lead.size() + 1 : 0;
}

} // namespace

std::string onOneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = steeringLength(text);
        line += length > 0 ? ' ' : text.front();
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return line;
}

} // namespace platform
