#include "Tests/PrintDialog/Gtk/Widgets.h"

#include "Tests/PrintDialog/Gtk/Application.h"

namespace orvan::test {

std::pair<std::string, std::string> moduleVariable(const std::filesystem::path& module) {
    // FOLDER/4.0.0/printbackends/MODULE
    return {"GTK_PATH", module.parent_path().parent_path().parent_path()};
}

bool startToolkit() {
    return gtk_init_check() != FALSE;
}

void forEachChild(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit) {
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child))
        visit(child);
}

void closeWindow(GtkWindow* window) {
    gtk_window_destroy(window);
}

std::pair<int, int> sizeOf(GtkWindow* window) {
    return {gtk_widget_get_width(GTK_WIDGET(window)), gtk_widget_get_height(GTK_WIDGET(window))};
}

int leftEdge(GtkWidget* widget, GtkWidget* within) {
    double x = 0;
    gtk_widget_translate_coordinates(widget, within, 0, 0, &x, nullptr);
    return static_cast<int>(x);
}

bool choosePrinter(GtkPrintUnixDialog* dialog, const std::string& queue) {
    auto* const list = firstOf<GtkColumnView>(
        GTK_WIDGET(dialog), [](GtkWidget* widget) { return GTK_IS_COLUMN_VIEW(widget); });
    GtkSelectionModel* const printers = gtk_column_view_get_model(list);
    for (guint i = 0; i < g_list_model_get_n_items(G_LIST_MODEL(printers)); ++i) {
        auto* const printer = static_cast<GtkPrinter*>(g_list_model_get_item(G_LIST_MODEL(printers), i));
        const bool isIt = queue == gtk_printer_get_name(printer);
        g_object_unref(printer);
        if (isIt) return gtk_selection_model_select_item(printers, i, TRUE) != FALSE;
    }
    return false;
}

bool isPopUp(GtkWidget* widget) {
    return GTK_IS_DROP_DOWN(widget);
}

std::vector<std::string> entriesOf(GtkWidget* popUp) {
    std::vector<std::string> entries;
    GListModel* const model = gtk_drop_down_get_model(GTK_DROP_DOWN(popUp));
    for (guint i = 0; i < g_list_model_get_n_items(model); ++i) {
        gpointer const item = g_list_model_get_item(model, i);
        char* text = nullptr;
        g_object_get(item, "string", &text, nullptr); // GTK's own entries have it as well
        entries.emplace_back(text != nullptr ? text : "");
        g_free(text);
        g_object_unref(item);
    }
    return entries;
}

int shownEntry(GtkWidget* popUp) {
    return static_cast<int>(gtk_drop_down_get_selected(GTK_DROP_DOWN(popUp)));
}

void pickEntry(GtkWidget* popUp, int entry) {
    gtk_drop_down_set_selected(GTK_DROP_DOWN(popUp), static_cast<guint>(entry));
}

void pickTheShown(GtkWidget* popUp) {
    gtk_widget_activate(popUp);
    auto* const list = firstOf<GtkWidget>(popUp, [](GtkWidget* widget) { return GTK_IS_LIST_VIEW(widget); });
    ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(list); }));
    gtk_widget_activate_action(list, "list.activate-item", "u", static_cast<guint>(shownEntry(popUp)));
}

std::string titleOf(GtkWidget* button) {
    auto* const label = firstOf<GtkLabel>(button, [](GtkWidget* widget) { return GTK_IS_LABEL(widget); });
    return label != nullptr ? gtk_label_get_text(label) : "";
}

void click(GtkWidget* button) {
    g_signal_emit_by_name(button, "clicked");
}

void writeInto(GtkWidget* entry, const std::string& text) {
    gtk_editable_set_text(GTK_EDITABLE(entry), text.c_str());
}

} // namespace orvan::test
