// A PPD that a person names on the command line.
#pragma once

#include "Formats/Failure.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <memory>
#include <string>

namespace orvan {

// Opens a file, a pipe with a name, or standard input for "-". Null, and a message for people in `error`,
// when that cannot be read as a PPD.
std::unique_ptr<DialogPPD> openPPD(const std::string& file, platform::Failure& error);

} // namespace orvan
