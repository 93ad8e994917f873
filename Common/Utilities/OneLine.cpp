#include "Common/Utilities/OneLine.h"

namespace orvan {
namespace {

constexpr unsigned char kDelete = 0x7F;
// U+0080 to U+009F in UTF-8: this byte and one from 80 to 9F.
constexpr unsigned char kLeadOfC1 = 0xC2;
constexpr unsigned char kFirstC1 = 0x80;
constexpr unsigned char kLastC1 = 0x9F;

} // namespace

std::string onOneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : '\0';
        const bool isC1 = byte == kLeadOfC1 && next >= kFirstC1 && next <= kLastC1;
        if (isC1) ++i;
        line += isC1 || byte < ' ' || byte == kDelete ? ' ' : static_cast<char>(byte);
    }
    return line;
}

} // namespace orvan
