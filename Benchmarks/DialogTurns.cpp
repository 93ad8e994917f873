// An application that opens a print dialog: dialog-turns QUEUE TRIGGER SECONDS [CHOICE]. Waits until the
// dialog has the queue, makes the file TRIGGER, brings the tab Paper Options to the front after half of the
// time (where that is not there the tab Page Setup), picks the choice there half a second later and closes
// the dialog at the end. Prints two times in milliseconds: the longest in which its main loop was at work
// without waiting for anything, from the choice of the printer to the end; and all in which it was at work,
// from the beginning.
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
constexpr guint kBeforePicking = 500;

struct {
    const char* queue = nullptr;
    const char* trigger = nullptr;
    double time = 0;              // milliseconds
    const char* choice = nullptr; // null for none
    bool isChosen = false;
    double busy = 0;
    Clock::time_point turnBegin;
    double longest = 0; // milliseconds
    bool isPicked = false;
} run;

// A turn is what happens between two waits of the loop.
gint pollMeasured(GPollFD* descriptors, guint count, gint timeout) {
    const double turn = Milliseconds(Clock::now() - run.turnBegin).count();
    if (run.isChosen) run.longest = std::max(run.longest, turn);
    run.busy += turn;
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

int tabNamed(GtkNotebook* tabs, const char* name) {
    for (int i = 0; i < gtk_notebook_get_n_pages(tabs); ++i) {
        GtkWidget* const page = gtk_notebook_get_nth_page(tabs, i);
        GtkWidget* const label = gtk_notebook_get_tab_label(tabs, page);
        if (gtk_widget_get_visible(page) != FALSE && GTK_IS_LABEL(label) &&
            std::strcmp(gtk_label_get_text(GTK_LABEL(label)), name) == 0)
            return i;
    }
    return -1;
}

// The row of the choice in a list of titles; false when there is none.
bool findChoice(GtkTreeModel* model, GtkTreeIter* row) {
    if (model == nullptr || gtk_tree_model_get_column_type(model, 0) != G_TYPE_STRING) return false;
    for (gboolean is = gtk_tree_model_get_iter_first(model, row); is != FALSE;
         is = gtk_tree_model_iter_next(model, row)) {
        char* text = nullptr;
        gtk_tree_model_get(model, row, 0, &text, -1);
        const bool isIt = text != nullptr && std::strcmp(text, run.choice) == 0;
        g_free(text);
        if (isIt) return true;
    }
    return false;
}

bool pickIn(GtkWidget* widget);

bool pickBelow(GtkWidget* widget) {
    bool isPicked = false;
    GList* const children = gtk_container_get_children(GTK_CONTAINER(widget));
    for (GList* child = children; child != nullptr && !isPicked; child = child->next)
        isPicked = pickIn(GTK_WIDGET(child->data));
    g_list_free(children);
    return isPicked;
}

// Picks the choice in the first pop-up that has it, and says so with true. A list of a button is opened for
// it.
bool pickIn(GtkWidget* widget) {
    GtkTreeIter row;
    if (GTK_IS_COMBO_BOX(widget)) {
        const bool isThere = findChoice(gtk_combo_box_get_model(GTK_COMBO_BOX(widget)), &row);
        if (isThere) gtk_combo_box_set_active_iter(GTK_COMBO_BOX(widget), &row);
        return isThere;
    }
    if (GTK_IS_TREE_VIEW(widget)) {
        GtkTreeModel* const model = gtk_tree_view_get_model(GTK_TREE_VIEW(widget));
        if (!findChoice(model, &row)) return false;
        GtkTreePath* const path = gtk_tree_model_get_path(model, &row);
        gtk_tree_view_set_cursor(GTK_TREE_VIEW(widget), path, nullptr, FALSE);
        gtk_tree_view_row_activated(
            GTK_TREE_VIEW(widget), path, gtk_tree_view_get_column(GTK_TREE_VIEW(widget), 0));
        gtk_tree_path_free(path);
        return true;
    }
    if (GTK_IS_MENU_BUTTON(widget)) {
        gtk_button_clicked(GTK_BUTTON(widget));
        return pickBelow(GTK_WIDGET(gtk_menu_button_get_popover(GTK_MENU_BUTTON(widget))));
    }
    return GTK_IS_CONTAINER(widget) && pickBelow(widget);
}

gboolean pick(gpointer dialog) {
    GtkNotebook* const tabs = notebookIn(GTK_WIDGET(dialog));
    run.isPicked = pickIn(gtk_notebook_get_nth_page(tabs, gtk_notebook_get_current_page(tabs)));
    return G_SOURCE_REMOVE;
}

gboolean openTab(gpointer dialog) {
    GtkNotebook* const tabs = notebookIn(GTK_WIDGET(dialog));
    const int ours = tabNamed(tabs, "Paper Options");
    gtk_notebook_set_current_page(tabs, ours >= 0 ? ours : tabNamed(tabs, "Page Setup"));
    if (run.choice != nullptr) g_timeout_add(kBeforePicking, pick, dialog);
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
    if (argc != 4 && argc != 5) return 2;
    run.queue = argv[1];
    run.trigger = argv[2];
    run.time = std::atof(argv[3]) * kMillisecondsPerSecond;
    if (argc == 5) run.choice = argv[4];
    run.turnBegin = Clock::now();
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
    std::printf("%.1f %.1f\n", run.longest, run.busy);
    return run.choice == nullptr || run.isPicked ? 0 : 1;
}
