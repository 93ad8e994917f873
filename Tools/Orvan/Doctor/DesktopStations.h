// The stations between the printing system and the person: what puts the tab into print dialogs.
#pragma once

#include "Tools/Orvan/Doctor/Checkup.h"

#include <string>

namespace orvan {

// The name of the command that calls openModule().
inline constexpr const char* kOpenModuleCommand = "open-module";

// The bundle with the panel, the GTK module and what it opens, and whether this session's applications are
// told to load the module.
void examineDesktop(Checkup& checkup);

// What a process of its own does: opens the shared objects as GTK and the module do. Answers kDone, or writes
// what is wrong to standard error.
int openModule(const std::string& module, const std::string& host);

} // namespace orvan
