// An application that opens a print dialog: dialog-turns QUEUE TRIGGER SECONDS. Waits until the dialog has
// the queue, makes the file TRIGGER, brings the tab Paper Options to the front after half of the time (the
// last one where that is not there) and closes the dialog at the end. Prints the longest time, in
// milliseconds, in which its main loop was at work without waiting for anything, from the choice of the
// printer to the end.
#include <gtk/gtkunixprint.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr double kMillisecondsPerSecond = 1000;
constexpr guint kAfterClosing = 200; // milliseconds

struct {
    const char* queue = nullptr;
    const char* trigger = nullptr;
    double time = 0; // milliseconds
    bool isChosen = false;
    Clock::time_point turnBegin;
    double longest = 0; // milliseconds
} run;

// A turn is what happens between two waits of the loop.
gint pollMeasured(GPollFD* descriptors, guint count, gint timeout) {
    const double turn = Milliseconds(Clock::now() - run.turnBegin).count();
    if (run.isChosen) run.longest = std::max(run.longest, turn);
    const gint result = g_poll(descriptors, count, timeout);
    run.turnBegin = Clock::now();
    return result;
}

GtkNotebook* notebookIn(GtkWidget* widget) {
    if (GTK_IS_NOTEBOOK(widget)) return GTK_NOTEBOOK(widget);
    if (!GTK_IS_CONTAINER(widget)) return nullptr;
    GList* const children = gtk_container_get_children(GTK_CONTAINER(widget));
    GtkNotebook* found = nullptr;
    for (GList* child = children; child != nullptr && found == nullptr; child = child->next)
        found = notebookIn(GTK_WIDGET(child->data));
    g_list_free(children);
    return found;
}

// The module's, and the last one where that is not there.
gboolean openTab(gpointer dialog) {
    GtkNotebook* const tabs = notebookIn(GTK_WIDGET(dialog));
    int chosen = -1;
    for (int i = 0; i < gtk_notebook_get_n_pages(tabs); ++i) {
        GtkWidget* const page = gtk_notebook_get_nth_page(tabs, i);
        GtkWidget* const label = gtk_notebook_get_tab_label(tabs, page);
        if (gtk_widget_get_visible(page) != FALSE && GTK_IS_LABEL(label) &&
            std::strcmp(gtk_label_get_text(GTK_LABEL(label)), "Paper Options") == 0)
            chosen = i;
    }
    gtk_notebook_set_current_page(tabs, chosen);
    return G_SOURCE_REMOVE;
}

gboolean quit(gpointer) {
    gtk_main_quit();
    return G_SOURCE_REMOVE;
}

gboolean closeDialog(gpointer dialog) {
    gtk_widget_destroy(GTK_WIDGET(dialog));
    g_timeout_add(kAfterClosing, quit, nullptr);
    return G_SOURCE_REMOVE;
}

void onPrinter(GtkPrintUnixDialog* dialog) {
    GtkPrinter* const printer = gtk_print_unix_dialog_get_selected_printer(dialog);
    if (run.isChosen || printer == nullptr || std::strcmp(gtk_printer_get_name(printer), run.queue) != 0)
        return;
    run.isChosen = true;
    if (std::FILE* const file = std::fopen(run.trigger, "w")) std::fclose(file);
    run.turnBegin = Clock::now();
    g_timeout_add(static_cast<guint>(run.time / 2), openTab, dialog);
    g_timeout_add(static_cast<guint>(run.time), closeDialog, dialog);
}

} // namespace

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    if (argc != 4) return 2;
    run.queue = argv[1];
    run.trigger = argv[2];
    run.time = std::atof(argv[3]) * kMillisecondsPerSecond;
    g_main_context_set_poll_func(nullptr, pollMeasured);

    auto* const dialog = GTK_PRINT_UNIX_DIALOG(gtk_print_unix_dialog_new("Print", nullptr));
    gtk_print_unix_dialog_set_manual_capabilities(dialog, GTK_PRINT_CAPABILITY_GENERATE_PDF);
    g_signal_connect(dialog, "notify::selected-printer",
        G_CALLBACK(+[](GtkPrintUnixDialog* self) { onPrinter(self); }), nullptr);
    GtkPrintSettings* const settings = gtk_print_settings_new();
    gtk_print_settings_set_printer(settings, run.queue);
    gtk_print_unix_dialog_set_settings(dialog, settings);
    g_object_unref(settings);
    gtk_widget_show(GTK_WIDGET(dialog));
    gtk_main();
    std::printf("%.1f\n", run.longest);
    return 0;
}
