// A tab as lines of text.
#pragma once

#include "Platform/View.h"

#include <string>

namespace orvan {

// What can be seen of the view and of all below it, in their order, a line each, indented by what they are
// in: texts as they are; a menu as "Title [selected]  of entries"; a disclosure by its title, with what is in
// it below, folded or not. Each line ends with "\n".
std::string tabText(const platform::View& view);

} // namespace orvan
