#include "PrintDialog/Gtk3/Attach.h"

#include "PrintDialog/Gtk3/AcceptedChoices.h"
#include "PrintDialog/Gtk3/DialogAttachment.h"
#include "PrintDialog/Gtk3/Guarded.h"

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

void attachPaperOptions(GtkPrintUnixDialog* dialog, const char* preset) noexcept {
    guarded([=] {
        watchResponses();
        AcceptedChoices::shared();
        DialogAttachment::attach(
            dialog, preset != nullptr ? std::optional<std::string>(preset) : std::nullopt);
    });
}

} // namespace orvan
