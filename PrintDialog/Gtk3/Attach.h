// The one door into the print dialog's host.
#pragma once

#include <gtk/gtkunixprint.h>

namespace orvan {

// Attaches the paper options to the dialog, and sees to it that what is picked reaches its jobs. Once a
// dialog is enough; more does nothing. `preset`: the name of a preset that the dialog begins with, "" for
// what was used last, null for none. GTK's thread; throws nothing.
void attachPaperOptions(GtkPrintUnixDialog* dialog, const char* preset) noexcept;

} // namespace orvan
