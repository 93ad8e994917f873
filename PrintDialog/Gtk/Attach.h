// The one door into the print dialog's host.
#pragma once

#include <gtk/gtkunixprint.h>

namespace orvan {

// Attaches the paper options to the dialog, and sees to it that what is picked reaches its jobs. Once a
// dialog is enough; more does nothing. `preset`: the name of a preset that the dialog begins with, "" for
// what was used last, null for none. False, and one line in the system log, when this release of GTK keeps
// its options in a way that is not known here; no other dialog needs to be tried then. GTK's thread; throws
// nothing.
bool attachPaperOptions(GtkPrintUnixDialog* dialog, const char* preset) noexcept;

} // namespace orvan
