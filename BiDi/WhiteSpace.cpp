#include "BiDi/WhiteSpace.h"

#include "Formats/Unicode.h"

#include <algorithm>
#include <bit>
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
// none. Many bytes at a time: most text separates nothing.
std::size_t skipPlain(std::string_view text, std::size_t position, std::uint8_t plainFrom) {
    constexpr std::uint64_t kEachByte = 0x0101010101010101;
    constexpr std::uint64_t kHighBits = 0x80 * kEachByte;
    constexpr std::size_t kWord = sizeof(std::uint64_t);
    const std::uint64_t least = plainFrom * kEachByte;
    // The high bits of the bytes that are not plain, and perhaps of some behind the first of them.
    const auto marks = [least](const char* at) {
        std::uint64_t word = 0;
        std::memcpy(&word, at, kWord);
        if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
        return (word - least) | word;
    };
    const char* const end = text.data() + text.size();
    const char* at = text.data() + position;
    while (static_cast<std::size_t>(end - at) >= 4 * kWord &&
           ((marks(at) | marks(at + kWord) | marks(at + 2 * kWord) | marks(at + 3 * kWord)) & kHighBits) == 0)
        at += 4 * kWord;
    for (; static_cast<std::size_t>(end - at) >= kWord; at += kWord) {
        const std::uint64_t found = marks(at) & kHighBits;
        if (found == 0) continue;
        return static_cast<std::size_t>(at - text.data()) +
               static_cast<std::size_t>(std::countr_zero(found)) / 8;
    }
    const auto isPlain = [plainFrom](char c) {
        return static_cast<std::uint8_t>(c) >= plainFrom && static_cast<std::uint8_t>(c) < 0x80;
    };
    return static_cast<std::size_t>(std::find_if_not(at, end, isPlain) - text.data());
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
    *length = behind - position;
    return character ? separatorKind(*character) : Separator::none;
}

bool PieceReader::next(std::string_view* piece, At at) {
    if (isDone_) return false;
    const std::uint8_t plainFrom = at == At::lineBreaks ? '\r' + 1 : ' ' + 1;
    std::size_t position = 0;
    while ((position = skipPlain(rest_, position, plainFrom)) < rest_.size()) {
        std::size_t length = 0;
        const Separator separator = separatorAt(rest_, position, &length);
        if (length == 0) isUTF8_ = false;
        if (separator == Separator::none || (separator == Separator::space && at == At::lineBreaks)) {
            position += std::max<std::size_t>(length, 1);
            continue;
        }
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
