// Text in the columns of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvan {

// How many columns UTF-8 text takes: two for a wide character (Unicode Standard Annex 11), none for one that
// combines, and none for a color (ECMA-48, section 8.3.117). A byte that is no UTF-8 takes one.
std::size_t columnsOf(std::string_view text);
// As much of its beginning as those columns hold.
std::string_view prefixOfColumns(std::string_view text, std::size_t columns);

// The text in lines of that many columns, broken at spaces. All but the first line begin with `indent`
// spaces, or with half of the width where that is less. On the first line something stands already that
// takes `used` columns. A word that is wider than a line stays whole: it may be a path. A width of 0 leaves
// the text as it is. To be called with the width of wrappingWidth() (Terminal.h), so that files and
// programs get whole lines:
//
//     std::cout << "ok  " << wrapped(text, wrappingWidth(STDOUT_FILENO), 4, 4) << '\n';
std::string wrapped(std::string_view text, std::size_t width, std::size_t indent, std::size_t used = 0);

} // namespace orvan
