// The module that GTK 4's applications load with their print back ends, when the first print dialog asks for
// these: one that offers no back end.
//
// The folder of the back ends has a list (giomodule.cache, which gio-querymodules writes) of what each
// offers. An application that never prints asks for none, and loads nothing.
#include "PrintDialog/Gtk/DialogHook.h"

#include <gio/gio.h>

extern "C" {

// GIO drops a module that offers nothing at once.
G_MODULE_EXPORT const char* g_module_check_init(GModule* module) {
    orvan::keepModule(module);
    return nullptr;
}

// The dialog that asks is not on the screen yet.
G_MODULE_EXPORT void g_io_module_load(GIOModule*) {
    orvan::watchForPrintDialogs();
}

G_MODULE_EXPORT void g_io_module_unload(GIOModule*) {}

// For the list.
G_MODULE_EXPORT char** g_io_module_query() {
    static const char* const points[] = {"gtk-print-backend", nullptr};
    return g_strdupv(const_cast<char**>(points));
}
}
