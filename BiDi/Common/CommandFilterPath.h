// The command filter that a PPD names.
#pragma once

#include <cups/ppd.h>

#include <optional>
#include <string>

namespace orvan {

// The program of the PPD's first "cupsFilter2" for command files: a path, or a name in the scheduler's folder
// of filters. It can be empty. Nothing when the PPD names none. The record is borrowed; null has no
// attributes.
std::optional<std::string> pathForCommandFilterInPPD(ppd_file_t* ppd);

} // namespace orvan
