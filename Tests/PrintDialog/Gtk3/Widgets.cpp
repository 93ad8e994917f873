#include "Tests/PrintDialog/Gtk/Widgets.h"

#include "Tests/PrintDialog/Gtk/Application.h"

#include <algorithm>

namespace orvan::test {
namespace {

// A row's text: that of the first column of text that shows something.
std::string textAt(GtkTreeModel* model, GtkTreeIter* row) {
    for (int column = 0; column < gtk_tree_model_get_n_columns(model); ++column) {
        if (gtk_tree_model_get_column_type(model, column) != G_TYPE_STRING) continue;
        char* text = nullptr;
        gtk_tree_model_get(model, row, column, &text, -1);
        std::string copy = text != nullptr ? text : "";
        g_free(text);
        if (!copy.empty()) return copy;
    }
    return {};
}

std::vector<std::string> rowsOf(GtkTreeModel* model) {
    std::vector<std::string> rows;
    GtkTreeIter row;
    if (model == nullptr) return rows;
    for (gboolean more = gtk_tree_model_get_iter_first(model, &row); more;
         more = gtk_tree_model_iter_next(model, &row))
        rows.push_back(textAt(model, &row));
    return rows;
}

} // namespace

std::pair<std::string, std::string> moduleVariable(const std::filesystem::path& module) {
    return {"GTK3_MODULES", module};
}

bool startToolkit() {
    return gtk_init_check(nullptr, nullptr) != FALSE;
}

void forEachChild(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit) {
    if (!GTK_IS_CONTAINER(widget)) return;
    const auto call = [](GtkWidget* child, gpointer data) {
        (*static_cast<const std::function<void(GtkWidget*)>*>(data))(child);
    };
    gtk_container_forall(GTK_CONTAINER(widget), call, const_cast<std::function<void(GtkWidget*)>*>(&visit));
}

void closeWindow(GtkWindow* window) {
    gtk_widget_destroy(GTK_WIDGET(window));
}

std::pair<int, int> sizeOf(GtkWindow* window) {
    std::pair<int, int> size;
    gtk_window_get_size(window, &size.first, &size.second);
    return size;
}

int leftEdge(GtkWidget* widget, GtkWidget* within) {
    int x = 0;
    gtk_widget_translate_coordinates(widget, within, 0, 0, &x, nullptr);
    return x;
}

bool choosePrinter(GtkPrintUnixDialog* dialog, const std::string& queue) {
    auto* const list =
        firstOf<GtkTreeView>(GTK_WIDGET(dialog), [](GtkWidget* widget) { return GTK_IS_TREE_VIEW(widget); });
    const auto rows = rowsOf(gtk_tree_view_get_model(list));
    const auto found = std::ranges::find(rows, queue);
    if (found == rows.end()) return false;
    GtkTreePath* const path = gtk_tree_path_new_from_indices(static_cast<int>(found - rows.begin()), -1);
    gtk_tree_view_set_cursor(list, path, nullptr, FALSE);
    gtk_tree_path_free(path);
    return true;
}

bool isPopUp(GtkWidget* widget) {
    return GTK_IS_COMBO_BOX(widget);
}

std::vector<std::string> entriesOf(GtkWidget* popUp) {
    return rowsOf(gtk_combo_box_get_model(GTK_COMBO_BOX(popUp)));
}

int shownEntry(GtkWidget* popUp) {
    return gtk_combo_box_get_active(GTK_COMBO_BOX(popUp));
}

void pickEntry(GtkWidget* popUp, int entry) {
    gtk_combo_box_set_active(GTK_COMBO_BOX(popUp), entry);
}

void pickTheShown(GtkWidget* popUp) {
    gtk_combo_box_popup(GTK_COMBO_BOX(popUp));
    GtkWidget* const menu =
        gtk_accessible_get_widget(GTK_ACCESSIBLE(gtk_combo_box_get_popup_accessible(GTK_COMBO_BOX(popUp))));
    ASSERT_TRUE(waitUntil([&] { return gtk_widget_get_mapped(menu); }));
    GList* const items = gtk_container_get_children(GTK_CONTAINER(menu));
    auto* const item = g_list_nth_data(items, static_cast<guint>(shownEntry(popUp)));
    gtk_menu_shell_activate_item(GTK_MENU_SHELL(menu), GTK_WIDGET(item), TRUE);
    g_list_free(items);
}

std::string titleOf(GtkWidget* button) {
    const char* const name = atk_object_get_name(gtk_widget_get_accessible(button));
    return name != nullptr ? name : "";
}

void click(GtkWidget* button) {
    gtk_button_clicked(GTK_BUTTON(button));
}

void writeInto(GtkWidget* entry, const std::string& text) {
    gtk_entry_set_text(GTK_ENTRY(entry), text.c_str());
}

} // namespace orvan::test
