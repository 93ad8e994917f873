// The module that GTK 3's applications load because GTK3_MODULES names it.
#include "PrintDialog/Gtk/DialogHook.h"

extern "C" {

// GTK may drop its modules when its settings change.
G_MODULE_EXPORT const char* g_module_check_init(GModule* module) {
    orvan::keepModule(module);
    return nullptr;
}

G_MODULE_EXPORT void gtk_module_init(int*, char***) {
    orvan::watchForPrintDialogs();
}
}
