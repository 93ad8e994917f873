#include "Orvan/Wrapping.h"

#include <glib.h>

#include <algorithm>

namespace orvan {
namespace {

struct Character {
    std::size_t size;    // bytes
    std::size_t columns; // of a terminal
};

// The first one of the text, which is not empty.
Character firstOf(std::string_view text) {
    if (text.starts_with("\033[")) { // ECMA-48, section 5.4: parameters, and one final byte
        const std::size_t last = std::find_if(text.begin() + 2, text.end(), [](char c) {
            return c >= '@' && c <= '~';
        }) - text.begin();
        return {std::min(last + 1, text.size()), 0};
    }
    const gunichar character = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    if (character == static_cast<gunichar>(-1) || character == static_cast<gunichar>(-2)) return {1, 1};
    const std::size_t columns = g_unichar_iszerowidth(character) != 0 ? 0
                                : g_unichar_iswide(character) != 0    ? 2
                                                                      : 1;
    return {static_cast<std::size_t>(g_unichar_to_utf8(character, nullptr)), columns};
}

} // namespace

std::string_view prefixOfColumns(std::string_view text, std::size_t columns) {
    std::size_t size = 0;
    while (size < text.size()) {
        const Character next = firstOf(text.substr(size));
        if (next.columns > columns) break;
        columns -= next.columns;
        size += next.size;
    }
    return text.substr(0, size);
}

std::size_t columnsOf(std::string_view text) {
    std::size_t columns = 0;
    while (!text.empty()) {
        const Character next = firstOf(text);
        columns += next.columns;
        text.remove_prefix(next.size);
    }
    return columns;
}

std::string wrapped(std::string_view text, std::size_t width, std::size_t indent, std::size_t used) {
    if (width == 0) return std::string(text);
    const std::string start = '\n' + std::string(std::min(indent, width / 2), ' ');
    std::string lines;
    std::size_t column = used;
    bool hasWord = used > 0; // on this line
    while (!text.empty()) {
        const std::size_t blanks = std::min(text.find_first_not_of(' '), text.size());
        const std::size_t end = std::min(text.find(' ', blanks), text.size());
        const std::string_view word = text.substr(blanks, end - blanks);
        const std::size_t columns = columnsOf(word);
        if (hasWord && column + blanks + columns > width) {
            lines.append(start);
            column = start.size() - 1;
        } else {
            lines.append(text.substr(0, blanks));
            column += blanks;
        }
        lines.append(word);
        column += columns;
        hasWord = true;
        text.remove_prefix(end);
    }
    return lines;
}

} // namespace orvan
