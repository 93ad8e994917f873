// PPD files with as many paper types as a benchmark asks for.
#pragma once

#include <filesystem>

namespace orvan {

// Writes the driver's PPD, with `count` choices in place of its own for the paper type (MediaType), to a new
// file in the folder for temporary files, which the caller removes. The last choice is the default, so that
// whoever looks for it from the front passes all others. An empty path when the file cannot be written.
std::filesystem::path writePPDWithPaperTypes(int count);

} // namespace orvan
