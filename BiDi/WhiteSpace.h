// Splitting UTF-8 text at Unicode white space.
#pragma once

#include <cstddef>
#include <string_view>

namespace orvan {

enum class Separator {
    none,
    space,     // a tab, or a character of the category Zs (Unicode, section 4.5)
    lineBreak, // U+000A to U+000D, U+0085, U+2028, U+2029
};

// What the character at `position` separates, and in *length how many bytes it has: 0 when it is not UTF-8.
// `position` is below the text's size.
Separator separatorAt(std::string_view text, std::size_t position, std::size_t* length);

// The pieces between line breaks, or between separators of either kind, first to last. Where two separators
// meet there is an empty piece between them, and one that ends the text is followed by an empty piece.
class PieceReader {
public:
    enum class At { lineBreaks, everySeparator };

    explicit PieceReader(std::string_view text) : rest_(text) {}

    // False when there are no more. The pieces lie in the text; what is before rest() is not read again.
    bool next(std::string_view* piece, At at);

    // What the last piece ended at; none when that was the end of the text.
    Separator endedBy() const { return endedBy_; }
    // Whether all that was read is UTF-8. Other bytes separate nothing.
    bool isUTF8() const { return isUTF8_; }
    // What follows the separator.
    std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
    Separator endedBy_ = Separator::none;
    bool isUTF8_ = true;
    bool isDone_ = false;
};

} // namespace orvan
