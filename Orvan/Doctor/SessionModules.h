// What this session's variables name to GTK as modules.
#pragma once

#include "Orvan/Doctor/Checkup.h"

#include <optional>

namespace orvan {

// Of GTK3_MODULES and GTK_MODULES, both of which GTK 3 reads: names in its folders of modules, or paths, with
// ":" between them. Ok when one is our module, a problem when one is meant to be. Nothing when none is.
std::optional<Finding> examineSessionModules();

} // namespace orvan
