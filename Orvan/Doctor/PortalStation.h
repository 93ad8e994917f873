// The portals through which sandboxed applications print.
#pragma once

#include "Orvan/Doctor/Checkup.h"

namespace orvan {

// Whether the print dialogs of this session's running portals have the paper options. A portal is started
// once a session, so one that is older than the installation has not.
Finding examinePortals();

} // namespace orvan
