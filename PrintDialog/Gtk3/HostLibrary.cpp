// The print dialog's host as a shared object, which the GTK module opens with the first print dialog.
#include "PrintDialog/Gtk3/Attach.h"
#include "PrintDialog/Host/HostNames.h"

extern "C" __attribute__((visibility("default"))) void ORVAN_GTK3_ATTACH(GtkPrintUnixDialog* dialog) {
    orvan::attachPaperOptions(dialog, nullptr);
}

extern "C" __attribute__((visibility("default"))) void ORVAN_GTK3_ATTACH_WITH_PRESET(
    GtkPrintUnixDialog* dialog, const char* preset) {
    orvan::attachPaperOptions(dialog, preset);
}
