// The print dialog's host as a shared object, which the GTK module opens with the first print dialog.
#include "PrintDialog/Gtk/Attach.h"

extern "C" __attribute__((visibility("default"))) void orvanAttachPaperOptions(GtkPrintUnixDialog* dialog) {
    orvan::attachPaperOptions(dialog);
}
