// Which release of the printing platform the process runs on.
//
// A gate asks Platform/Gestalt.h on its first call, on whichever thread that is, and gives the same answer
// for the life of the process. A platform that does not answer counts as release 10.4.0.
#pragma once

namespace orvan {

bool RunningOn105OrLater(); // Of the given vocabulary; nothing here calls it

bool RunningOn107OrLater();
bool RunningOn1010OrLater();

} // namespace orvan
