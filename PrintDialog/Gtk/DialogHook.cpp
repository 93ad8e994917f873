#include "PrintDialog/Gtk/DialogHook.h"

#include "PrintDialog/Host/HostNames.h"

#include <gtk/gtkunixprint.h>

#include <dlfcn.h>
#include <syslog.h>

namespace orvan {
namespace {

using AttachFunction = int (*)(GtkPrintUnixDialog*, const char*, const char*);

// Null, with one line in the system log, when it cannot be opened.
AttachFunction openHost() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&openHost), &info) == 0) return nullptr;
    char* const folder = g_path_get_dirname(info.dli_fname);
    char* const file = g_build_filename(folder, ORVAN_HOST_FROM_MODULE, nullptr);
    gpointer attach = nullptr;
    GModule* const host = g_module_open(file, G_MODULE_BIND_LOCAL);
    if (host == nullptr || !g_module_symbol(host, kAttachFunction, &attach))
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
    // Where it cannot be done the hook goes, so this is tried and logged once.
    return attach != nullptr && attach(GTK_PRINT_UNIX_DIALOG(widget), ORVAN_VERSION, nullptr) != 0;
}

} // namespace

void watchForPrintDialogs() {
    static gboolean hooked = FALSE;
    if (hooked || isSwitchedOff()) return;
    hooked = TRUE;
    g_type_class_unref(g_type_class_ref(GTK_TYPE_WIDGET));
    g_signal_add_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), 0, onMap, nullptr, nullptr);
}

void keepModule(GModule* module) {
    g_module_make_resident(module);
}

} // namespace orvan
