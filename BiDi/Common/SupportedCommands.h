// The commands that a printer's command filter understands.
#pragma once

#include <cups/ppd.h>

#include <optional>
#include <string>
#include <vector>

namespace orvan {

using CommandList = std::vector<std::string>;

// The names in the value of the PPD's first attribute "cupsCommands", which is split at every single space
// and nowhere else: two spaces in a row have an empty name between them, and an empty value is one empty
// name. Nothing when the PPD has no such attribute, or when its value is not UTF-8. The record is borrowed;
// null has no attributes.
std::optional<CommandList> supportedCommandsInPPD(ppd_file_t* ppd);

} // namespace orvan
