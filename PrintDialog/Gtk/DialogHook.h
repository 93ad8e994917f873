// What the modules do that GTK's applications load: they wait for a print dialog to appear, and then open the
// host.
//
// Most applications never print, so nothing is loaded before: this needs GTK alone, not even the C++ library.
#pragma once

#include <gmodule.h>

namespace orvan {

// From now on the first print dialog opens the host, in the file that ORVAN_HOST_FROM_MODULE names from the
// module's folder, and each dialog is handed to it. Does nothing the second time, or when the paper options
// are switched off. GTK's thread.
void watchForPrintDialogs();

// To be called when the module is checked (g_module_check_init): hooks and handlers stay, so the module does
// as well.
void keepModule(GModule* module);

} // namespace orvan
