// The print dialog's host as a shared object, which a GTK module opens with the first print dialog.
#include "Platform/SystemLog.h"
#include "PrintDialog/Gtk/Attach.h"
#include "PrintDialog/Host/HostNames.h"

#include <string_view>

extern "C" __attribute__((visibility("default"))) int ORVAN_ATTACH(
    GtkPrintUnixDialog* dialog, const char* version, const char* preset) {
    if (version == nullptr || std::string_view(version) != ORVAN_VERSION) {
        platform::systemLog("paper options are off: version " ORVAN_VERSION
                            " of them was installed since this application was started; start it anew");
        return 0;
    }
    return orvan::attachPaperOptions(dialog, preset) ? 1 : 0;
}
