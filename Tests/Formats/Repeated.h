// Long texts.
#pragma once

#include <cstddef>
#include <string>

namespace orvan {

inline std::string repeated(const std::string& piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    while (count-- > 0)
        text += piece;
    return text;
}

} // namespace orvan
