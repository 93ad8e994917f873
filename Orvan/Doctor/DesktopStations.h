// The stations between the printing system and the person: what puts the tab into print dialogs.
#pragma once

#include "Orvan/Doctor/Checkup.h"

#include <string>

namespace orvan {

// The bundle with the panel, the GTK module and what it opens, and whether this session's applications are
// told to load the module.
void examineDesktop(Checkup& checkup);

} // namespace orvan
