// The one door into the print dialog's host.
#pragma once

#include <gtk/gtkunixprint.h>

namespace orvan {

// Attaches the paper options to the dialog, and sees to it that what is picked reaches its jobs. Once a
// dialog is enough; more does nothing. GTK's thread; throws nothing.
void attachPaperOptions(GtkPrintUnixDialog* dialog) noexcept;

} // namespace orvan
