// An application that never prints: a window of ordinary size (header bar, menu, lists, some hundred
// controls) that closes when its first frame has been drawn and nothing is left to do.
#include <gtk/gtk.h>

#include <array>
#include <string>

namespace {

constexpr int kPages = 4;
constexpr int kRowsPerPage = 12;
constexpr std::array kMenus{"File", "Edit", "View", "Help"};
constexpr int kItemsPerMenu = 8;

GtkWidget* makeMenuBar() {
    GtkWidget* const bar = gtk_menu_bar_new();
    for (const char* const title : kMenus) {
        GtkWidget* const menu = gtk_menu_new();
        for (int i = 1; i <= kItemsPerMenu; ++i) {
            const std::string label = std::string(title) + " item " + std::to_string(i);
            gtk_menu_shell_append(GTK_MENU_SHELL(menu), gtk_menu_item_new_with_label(label.c_str()));
        }
        GtkWidget* const item = gtk_menu_item_new_with_label(title);
        gtk_menu_item_set_submenu(GTK_MENU_ITEM(item), menu);
        gtk_menu_shell_append(GTK_MENU_SHELL(bar), item);
    }
    return bar;
}

GtkWidget* makeHeaderBar() {
    GtkWidget* const bar = gtk_header_bar_new();
    gtk_header_bar_set_title(GTK_HEADER_BAR(bar), "An application that never prints");
    gtk_header_bar_set_show_close_button(GTK_HEADER_BAR(bar), TRUE);
    for (const char* const icon : {"document-open-symbolic", "document-save-symbolic", "edit-find-symbolic"})
        gtk_header_bar_pack_start(
            GTK_HEADER_BAR(bar), gtk_button_new_from_icon_name(icon, GTK_ICON_SIZE_BUTTON));
    return bar;
}

GtkWidget* makePage() {
    GtkWidget* const grid = gtk_grid_new();
    for (int row = 0; row < kRowsPerPage; ++row) {
        const std::string title = "Setting " + std::to_string(row + 1);
        gtk_grid_attach(GTK_GRID(grid), gtk_label_new(title.c_str()), 0, row, 1, 1);
        gtk_grid_attach(GTK_GRID(grid), gtk_entry_new(), 1, row, 1, 1);
        gtk_grid_attach(GTK_GRID(grid), gtk_check_button_new_with_label("Always"), 2, row, 1, 1);
        gtk_grid_attach(GTK_GRID(grid), gtk_button_new_with_label("Change"), 3, row, 1, 1);
    }
    return grid;
}

GtkWidget* makeWindow() {
    GtkWidget* const window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_window_set_titlebar(GTK_WINDOW(window), makeHeaderBar());
    GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    GtkWidget* const pages = gtk_notebook_new();
    for (int i = 1; i <= kPages; ++i)
        gtk_notebook_append_page(
            GTK_NOTEBOOK(pages), makePage(), gtk_label_new(("Page " + std::to_string(i)).c_str()));
    gtk_container_add(GTK_CONTAINER(box), makeMenuBar());
    gtk_container_add(GTK_CONTAINER(box), pages);
    gtk_container_add(GTK_CONTAINER(window), box);
    return window;
}

gboolean quit(gpointer) {
    gtk_main_quit();
    return G_SOURCE_REMOVE;
}

// Low priority: after everything that the first frame left to do.
gboolean onDraw(GtkWidget* window, void*, gpointer) {
    g_signal_handlers_disconnect_by_func(window, reinterpret_cast<gpointer>(onDraw), nullptr);
    g_idle_add_full(G_PRIORITY_LOW, quit, nullptr, nullptr);
    return FALSE;
}

} // namespace

int main(int argc, char** argv) {
    gtk_init(&argc, &argv);
    GtkWidget* const window = makeWindow();
    g_signal_connect_after(window, "draw", G_CALLBACK(onDraw), nullptr);
    gtk_widget_show_all(window);
    gtk_main();
    return 0;
}
