#include "BiDi/WhiteSpace.h"

#include "Platform/Unicode.h"

#include <cstdint>
#include <cstring>
#include <utility>

namespace orvan {
namespace {

Separator separatorKind(char32_t character) {
    switch (character) {
    case 0x0085:
    case 0x2028:
    case 0x2029:
        return Separator::lineBreak;
    case 0x00A0:
    case 0x1680:
    case 0x202F:
    case 0x205F:
    case 0x3000:
        return Separator::space;
    default:
        return character >= 0x2000 && character <= 0x200A ? Separator::space : Separator::none;
    }
}

// The first position from `position` on whose byte is below `plainFrom` or above 0x7F; the size when there is
// none. Eight bytes at a time: most text separates nothing.
std::size_t skipPlain(std::string_view text, std::size_t position, std::uint8_t plainFrom) {
    constexpr std::uint64_t kEachByte = 0x0101010101010101;
    constexpr std::uint64_t kHighBits = 0x80 * kEachByte;
    const std::uint64_t least = plainFrom * kEachByte;
    while (text.size() - position >= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + position, sizeof word);
        // A borrow reaches a higher byte only when a lower one is too small itself.
        if ((((word - least) | word) & kHighBits) != 0) break;
        position += sizeof word;
    }
    const auto isPlain = [plainFrom](char c) {
        return static_cast<std::uint8_t>(c) >= plainFrom && static_cast<std::uint8_t>(c) < 0x80;
    };
    while (position < text.size() && isPlain(text[position]))
        ++position;
    return position;
}

} // namespace

Separator separatorAt(std::string_view text, std::size_t position, std::size_t* length) {
    const auto byte = static_cast<unsigned char>(text[position]);
    if (byte < 0x80) {
        *length = 1;
        if (byte == ' ' || byte == '\t') return Separator::space;
        return byte >= '\n' && byte <= '\r' ? Separator::lineBreak : Separator::none;
    }
    std::size_t behind = position;
    const auto character = platform::decodeUTF8(text, &behind);
    if (!character) return Separator::none;
    *length = behind - position;
    return separatorKind(*character);
}

bool PieceReader::next(std::string_view* piece, At at) {
    if (isDone_) return false;
    const std::uint8_t plainFrom = at == At::lineBreaks ? '\r' + 1 : ' ' + 1;
    for (std::size_t position = 0;; ++position) {
        position = skipPlain(rest_, position, plainFrom);
        if (position == rest_.size()) break;
        std::size_t length = 0;
        const Separator separator = separatorAt(rest_, position, &length);
        if (separator == Separator::none || (separator == Separator::space && at == At::lineBreaks)) continue;
        *piece = rest_.substr(0, position);
        rest_.remove_prefix(position + length);
        endedBy_ = separator;
        return true;
    }
    *piece = std::exchange(rest_, {});
    endedBy_ = Separator::none;
    isDone_ = true;
    return true;
}

} // namespace orvan
