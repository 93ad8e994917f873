#include "BiDi/WhiteSpace.h"

#include "Platform/Unicode.h"

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

bool PieceReader::next(std::string_view* piece) {
    if (isDone_) return false;
    for (std::size_t position = 0; position < text_.size(); ++position) {
        std::size_t length = 0;
        const Separator separator = separatorAt(text_, position, &length);
        if (separator == Separator::none) continue;
        if (separator == Separator::space && at_ == At::lineBreaks) continue;
        *piece = text_.substr(0, position);
        text_.remove_prefix(position + length);
        return true;
    }
    *piece = text_;
    isDone_ = true;
    return true;
}

} // namespace orvan
