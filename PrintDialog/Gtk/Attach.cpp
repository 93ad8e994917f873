#include "PrintDialog/Gtk/Attach.h"

#include "Platform/SystemLog.h"
#include "PrintDialog/Gtk/AcceptedChoices.h"
#include "PrintDialog/Gtk/DialogAttachment.h"
#include "PrintDialog/Gtk/DialogOptions.h"
#include "PrintDialog/Gtk/Guarded.h"

namespace orvan {
namespace {

// An emission hook is called before the application's own handlers, which may send the job at once and close
// the dialog.
gboolean onResponse(GSignalInvocationHint*, guint, const GValue* arguments, gpointer) {
    guarded([arguments] {
        GObject* const dialog = G_OBJECT(g_value_get_object(arguments));
        const int response = g_value_get_int(arguments + 1);
        if (!GTK_IS_PRINT_UNIX_DIALOG(dialog)) return;
        if (response != GTK_RESPONSE_OK && response != GTK_RESPONSE_APPLY) return;
        if (DialogAttachment* attachment = DialogAttachment::of(GTK_PRINT_UNIX_DIALOG(dialog)))
            attachment->accepted();
    });
    return TRUE;
}

void watchResponses() {
    static const gulong hook = g_signal_add_emission_hook(
        g_signal_lookup("response", GTK_TYPE_DIALOG), 0, onResponse, nullptr, nullptr);
    static_cast<void>(hook);
}

} // namespace

bool attachPaperOptions(GtkPrintUnixDialog* dialog, const char* preset) noexcept {
    bool isKnown = false;
    guarded([&] {
        const std::string unknown = DialogOptions::unknownPart(dialog);
        if (!unknown.empty()) {
            platform::systemLog("paper options are off: GTK " + std::to_string(gtk_get_major_version()) +
                                "." + std::to_string(gtk_get_minor_version()) +
                                " keeps its printers' options in another way than it was made for (" +
                                unknown + ")");
            return;
        }
        isKnown = true;
        watchResponses();
        AcceptedChoices::shared();
        DialogAttachment::attach(
            dialog, preset != nullptr ? std::optional<std::string>(preset) : std::nullopt);
    });
    return isKnown;
}

} // namespace orvan
