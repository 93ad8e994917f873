// The GTK 3 module: waits, in every GTK application, for a print dialog to appear, and then opens the host.
//
// Most applications never print, so nothing is loaded before: this file needs GTK alone, not even the C++
// library.
#include "PrintDialog/Host/HostNames.h"

#include <gtk/gtkunixprint.h>

#include <dlfcn.h>
#include <gmodule.h>
#include <syslog.h>

namespace {

using AttachFunction = void (*)(GtkPrintUnixDialog*);

// The host, from the folder that ORVAN_HOST_FROM_MODULE names from this module's folder; null, with one line
// in the system log, when it cannot be opened.
AttachFunction openHost() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&openHost), &info) == 0) return nullptr;
    char* const folder = g_path_get_dirname(info.dli_fname);
    char* const file = g_build_filename(folder, ORVAN_HOST_FROM_MODULE, nullptr);
    gpointer attach = nullptr;
    GModule* const host = g_module_open(file, G_MODULE_BIND_LOCAL);
    if (host == nullptr || !g_module_symbol(host, orvan::kGtk3AttachFunction, &attach))
        syslog(LOG_USER | LOG_NOTICE, "orvan: paper options are off: %s", g_module_error());
    else
        g_module_make_resident(host);
    g_free(file);
    g_free(folder);
    return reinterpret_cast<AttachFunction>(attach);
}

gboolean onMap(GSignalInvocationHint*, guint, const GValue* arguments, gpointer) {
    static AttachFunction attach = nullptr;
    gpointer const widget = g_value_peek_pointer(arguments);
    if (!GTK_IS_PRINT_UNIX_DIALOG(widget)) return TRUE;
    if (attach == nullptr) attach = openHost();
    if (attach == nullptr) return FALSE; // the hook goes, so this is tried and logged once
    attach(GTK_PRINT_UNIX_DIALOG(widget));
    return TRUE;
}

} // namespace

extern "C" {

// GTK may drop its modules when its settings change; hooks and handlers stay, so the module does as well.
G_MODULE_EXPORT const char* g_module_check_init(GModule* module) {
    g_module_make_resident(module);
    return nullptr;
}

G_MODULE_EXPORT void gtk_module_init(int*, char***) {
    static gboolean hooked = FALSE;
    if (hooked || orvan::isSwitchedOff()) return;
    hooked = TRUE;
    g_type_class_unref(g_type_class_ref(GTK_TYPE_WIDGET));
    g_signal_add_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), 0, onMap, nullptr, nullptr);
}
}
