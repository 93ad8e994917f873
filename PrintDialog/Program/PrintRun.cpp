#include "PrintDialog/Program/PrintRun.h"

#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Host/AdministratorSettings.h"
#include "PrintDialog/Host/HostNames.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/InstalledFiles.h"
#include "PrintDialog/Host/PresetStore.h"
#include "PrintDialog/Host/QueuePPD.h"
#include "Scheduler/PrintScheduler.h"

#include <gmodule.h>
#include <gtk/gtkunixprint.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

namespace orvan {
namespace {

constexpr std::chrono::seconds kSchedulerPatience{10};

// What it says in the dialog is in the person's language.
std::string text(const std::string& key, const std::vector<std::string>& values = {}) {
    static const std::string language = personsHostLanguage();
    return hostText(language, key, values);
}

int fail(const std::string& title, const std::string& detail) {
    std::fprintf(stderr, "orvan-print: %s: %s\n", title.c_str(), detail.c_str());
    GtkWidget* const dialog = gtk_message_dialog_new(
        nullptr, GTK_DIALOG_MODAL, GTK_MESSAGE_ERROR, GTK_BUTTONS_CLOSE, "%s", title.c_str());
    gtk_message_dialog_format_secondary_text(GTK_MESSAGE_DIALOG(dialog), "%s", detail.c_str());
    gtk_dialog_run(GTK_DIALOG(dialog));
    gtk_widget_destroy(dialog);
    return 1;
}

// Why the file cannot be printed; nothing when it can.
std::optional<std::string> problemWith(const std::string& file) {
    std::error_code status;
    const auto type = std::filesystem::status(file, status).type();
    if (type == std::filesystem::file_type::not_found) return text("There is no such file.");
    if (type == std::filesystem::file_type::directory) return text("It is a folder.");
    if (!std::ifstream(file)) return std::string(std::strerror(errno)) + ".";
    return std::nullopt;
}

// The options are optional: without them the dialog is GTK's own.
void attachPaperOptions(GtkPrintUnixDialog* dialog, const std::string& preset) {
    if (isSwitchedOff()) return;
    const std::filesystem::path library = privateFolder() / kGtk3HostFile;
    gpointer symbol = nullptr;
    GModule* const host = g_module_open(library.c_str(), G_MODULE_BIND_LOCAL);
    if (host != nullptr && g_module_symbol(host, kAttachFunction, &symbol) != FALSE) {
        g_module_make_resident(host);
        reinterpret_cast<int (*)(GtkPrintUnixDialog*, const char*, const char*)>(symbol)(
            dialog, ORVAN_VERSION, preset.c_str());
    } else {
        std::fprintf(stderr, "orvan-print: going on without the paper options: %s\n", g_module_error());
    }
}

// What the dialog prints: the first file's name, and how many more there are.
std::string titleFor(const std::vector<std::string>& files) {
    gchar* const shown = g_filename_display_basename(files.front().c_str());
    const GLibString name(shown);
    if (files.size() == 1) return text("Print %1", {shown});
    if (files.size() == 2) return text("Print %1 and another file", {shown});
    return text("Print %1 and %2 other files", {shown, std::to_string(files.size() - 1)});
}

// Why the preset cannot be chosen on the queue, for people; nothing when it can, or when it shows in the
// dialog.
std::optional<std::string> problemWithPreset(const PrintArguments& arguments) {
    if (arguments.preset.empty()) return std::nullopt;
    const AdministratorSettings settings = administratorSettings();
    if (!settings.showsTab || !settings.hasPresets)
        return text("Presets are switched off in %1.", {settings.file});
    if (arguments.queue.empty()) return std::nullopt;
    platform::Failure error;
    const auto opened = fetchQueue(arguments.queue, kSchedulerPatience, error);
    if (!opened) return error;
    if (PresetStore(presetPrinter(*opened)).list().find(arguments.preset) != nullptr) return std::nullopt;
    return PresetProblem{PresetProblem::Kind::missing, arguments.preset}.text(personsHostLanguage());
}

// What the person chose.
struct Chosen {
    GObjectRef<GtkPrinter> printer;
    GObjectRef<GtkPrintSettings> settings;
    GObjectRef<GtkPageSetup> pageSetup;
};

// Nothing when the person cancelled.
std::optional<Chosen> ask(const PrintArguments& arguments) {
    auto* const dialog =
        GTK_PRINT_UNIX_DIALOG(gtk_print_unix_dialog_new(titleFor(arguments.files).c_str(), nullptr));
    gtk_print_unix_dialog_set_manual_capabilities(dialog, GTK_PRINT_CAPABILITY_GENERATE_PDF);
    gtk_print_unix_dialog_set_embed_page_setup(dialog, TRUE); // files are printed on the paper that is chosen
    if (!arguments.queue.empty()) {
        const GObjectRef<GtkPrintSettings> settings(gtk_print_settings_new());
        gtk_print_settings_set_printer(settings.get(), arguments.queue.c_str());
        gtk_print_unix_dialog_set_settings(dialog, settings.get());
    }
    attachPaperOptions(dialog, arguments.preset);

    std::optional<Chosen> chosen;
    if (gtk_dialog_run(GTK_DIALOG(dialog)) == GTK_RESPONSE_OK) {
        GtkPrinter* const printer = gtk_print_unix_dialog_get_selected_printer(dialog);
        GtkPageSetup* const pageSetup = gtk_print_unix_dialog_get_page_setup(dialog);
        chosen = Chosen{retain(printer),
            GObjectRef<GtkPrintSettings>(gtk_print_unix_dialog_get_settings(dialog)), retain(pageSetup)};
    }
    gtk_widget_destroy(GTK_WIDGET(dialog));
    return chosen;
}

// Sends one file and waits for the printing system's answer. Nothing when it took the job, otherwise its
// reason.
std::optional<std::string> send(const Chosen& chosen, const std::string& file) {
    const std::string title = std::filesystem::path(file).filename().string();
    // The job changes its settings, so each has its own.
    const GObjectRef<GtkPrintSettings> settings(gtk_print_settings_copy(chosen.settings.get()));
    const GObjectRef<GtkPrintJob> job(
        gtk_print_job_new(title.c_str(), chosen.printer.get(), settings.get(), chosen.pageSetup.get()));
    GError* problem = nullptr;
    struct Answer {
        bool arrived = false;
        std::optional<std::string> problem;
    } answer;
    if (gtk_print_job_set_source_file(job.get(), file.c_str(), &problem) == FALSE) {
        answer.problem = problem->message;
        g_error_free(problem);
        return answer.problem;
    }
    const auto arrived = [](GtkPrintJob*, gpointer data, const GError* error) {
        auto* const result = static_cast<Answer*>(data);
        result->arrived = true;
        if (error != nullptr) result->problem = error->message;
    };
    gtk_print_job_send(job.get(), arrived, &answer, nullptr);
    while (!answer.arrived)
        g_main_context_iteration(nullptr, TRUE);
    if (!answer.problem && gtk_print_job_get_status(job.get()) == GTK_PRINT_STATUS_FINISHED_ABORTED)
        answer.problem = text("The printing system did not take the job.");
    return answer.problem;
}

} // namespace

int runPrint(const PrintArguments& arguments) {
    for (const std::string& file : arguments.files)
        if (const auto problem = problemWith(file)) return fail(text("Cannot print %1", {file}), *problem);

    platform::Failure error;
    const auto queues = listQueues(kSchedulerPatience, error);
    if (!queues) return fail(text("Cannot print"), *error);
    if (queues->empty())
        return fail(text("There is no printer"),
            text("Add one to %1 first, in the system’s printer settings.", {schedulerName()}));
    if (!arguments.queue.empty() &&
        std::ranges::find(*queues, arguments.queue, &SchedulerQueue::name) == queues->end())
        return fail(
            text("There is no printer %1", {arguments.queue}), text("“lpstat -v” lists the printers."));

    if (const auto problem = problemWithPreset(arguments)) return fail(text("Cannot print"), *problem);

    const std::optional<Chosen> chosen = ask(arguments);
    if (!chosen) {
        std::fprintf(stderr, "orvan-print: cancelled; nothing was printed\n");
        return 1;
    }
    int result = 0;
    for (const std::string& file : arguments.files)
        if (const auto problem = send(*chosen, file))
            result = fail(text("Cannot print %1", {file}),
                text("Printer %1: %2", {gtk_printer_get_name(chosen->printer.get()), *problem}));
    return result;
}

} // namespace orvan
