#include "PrintDialog/Gtk/AcceptedChoices.h"

#include "PrintDialog/Gtk/DialogOptions.h"
#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Gtk/Guarded.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

// More dialogs than anybody has jobs waiting for.
constexpr std::size_t kMostDialogs = 16;
// Of a page setup: the dialog that it comes from.
constexpr const char* kDialogKey = "orvan-accepted-dialog";

std::string settingKey(const std::string& keyword) {
    return "cups-" + keyword;
}

std::string_view setting(GtkPrintSettings* settings, const std::string& keyword) {
    const char* const value = gtk_print_settings_get(settings, settingKey(keyword).c_str());
    return value != nullptr ? value : "";
}

// Whether the job's settings are those that the dialog gave: GTK's own values are still in them.
bool cameFrom(GtkPrintSettings* settings, const AcceptedDialog& dialog) {
    return std::ranges::all_of(dialog.choices,
        [settings](const auto& entry) { return setting(settings, entry.first) == entry.second.gtkValue; });
}

const AcceptedDialog* dialogOf(GtkPrintJob* job) {
    GtkPageSetup* setup = nullptr;
    g_object_get(job, "page-setup", &setup, nullptr);
    if (setup == nullptr) return nullptr;
    const GObjectRef<GtkPageSetup> owner(setup);
    return static_cast<const AcceptedDialog*>(g_object_get_data(G_OBJECT(setup), kDialogKey));
}

void writeInto(GtkPrintSettings* settings, const AcceptedDialog& dialog) {
    for (const auto& [keyword, choice] : dialog.choices) {
        // "As the printer is set" stays so where it comes to the same.
        if (choice.gtkValue == kAsPrinterIsSet && choice.isDefault) continue;
        gtk_print_settings_set(settings, settingKey(keyword).c_str(), choice.marked.c_str());
    }
}

gboolean onStatusChanged(GSignalInvocationHint*, guint, const GValue* arguments, gpointer) {
    guarded([arguments] {
        auto* const job = GTK_PRINT_JOB(g_value_get_object(arguments));
        if (gtk_print_job_get_status(job) == GTK_PRINT_STATUS_SENDING_DATA)
            AcceptedChoices::shared().apply(job);
    });
    return TRUE;
}

} // namespace

AcceptedChoices& AcceptedChoices::shared() {
    // Never destroyed: jobs are sent until the process ends.
    static AcceptedChoices* const keeper = new AcceptedChoices;
    return *keeper;
}

AcceptedChoices::AcceptedChoices() {
    g_type_class_unref(g_type_class_ref(GTK_TYPE_PRINT_JOB));
    const guint signal = g_signal_lookup("status-changed", GTK_TYPE_PRINT_JOB);
    if (signal != 0) g_signal_add_emission_hook(signal, 0, onStatusChanged, nullptr, nullptr);
}

void AcceptedChoices::add(AcceptedDialog dialog, GtkPageSetup* pageSetup) {
    if (pageSetup != nullptr)
        g_object_set_data_full(G_OBJECT(pageSetup), kDialogKey, new AcceptedDialog(dialog),
            [](gpointer data) { delete static_cast<AcceptedDialog*>(data); });
    dialogs_.push_front(std::move(dialog));
    if (dialogs_.size() > kMostDialogs) dialogs_.pop_back();
}

void AcceptedChoices::apply(GtkPrintJob* job) const {
    GtkPrintSettings* const settings = gtk_print_job_get_settings(job);
    GtkPrinter* const printer = gtk_print_job_get_printer(job);
    const char* const queue = printer != nullptr ? gtk_printer_get_name(printer) : nullptr;
    if (settings == nullptr || queue == nullptr) return;
    const auto isIt = [&](const AcceptedDialog& candidate) {
        return candidate.queue == queue && cameFrom(settings, candidate);
    };
    if (const AcceptedDialog* const own = dialogOf(job); own != nullptr && isIt(*own))
        return writeInto(settings, *own);
    const auto dialog = std::ranges::find_if(dialogs_, isIt);
    if (dialog != dialogs_.end()) writeInto(settings, *dialog);
}

} // namespace orvan
