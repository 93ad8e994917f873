#include "PrintDialog/Gtk3/MenuList.h"

#include "PrintDialog/Gtk/Guarded.h"
#include "PrintDialog/Gtk3/MenuRows.h"

#include <algorithm>
#include <utility>

namespace orvan {
namespace {

constexpr int kListHeight = 240; // pixels
constexpr int kListWidth = 280;  // pixels
constexpr int kGap = 6;          // pixels
constexpr std::size_t kRowsAbove = 6;
// Bytes of a title that wants a tooltip.
constexpr std::size_t kLongTitle = 60;

struct FreePath {
    void operator()(GtkTreePath* path) const { gtk_tree_path_free(path); }
};

// As letters are compared when it does not matter how they are written.
std::string folded(const std::string& text) {
    gchar* const whole = g_utf8_normalize(text.c_str(), -1, G_NORMALIZE_ALL);
    const GLibString normalized(whole);
    gchar* const small = g_utf8_casefold(whole != nullptr ? whole : text.c_str(), -1);
    const GLibString owner(small);
    return small;
}

GtkTreeView* makeTreeView(const std::string& name) {
    auto* const list = GTK_TREE_VIEW(gtk_tree_view_new());
    gtk_tree_view_insert_column_with_attributes(
        list, -1, nullptr, makeTitleRenderer(), "text", kTitleColumn, "sensitive", kEnabledColumn, nullptr);
    gtk_tree_view_set_headers_visible(list, FALSE);
    gtk_tree_view_set_enable_search(list, FALSE);
    gtk_tree_view_set_activate_on_single_click(list, TRUE);
    gtk_tree_view_set_tooltip_column(list, kTitleColumn);
    gtk_tree_view_set_row_separator_func(list, isMenuLine, nullptr, nullptr);
    atk_object_set_name(gtk_widget_get_accessible(GTK_WIDGET(list)), name.c_str());
    return list;
}

} // namespace

MenuList::MenuList(platform::Menu& menu)
    : menu_(menu),
      button_(GTK_MENU_BUTTON(gtk_menu_button_new())),
      label_(GTK_LABEL(gtk_label_new(nullptr))) {
    GtkWidget* const face = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kGap);
    gtk_label_set_xalign(label_, 0);
    gtk_label_set_ellipsize(label_, PANGO_ELLIPSIZE_END);
    gtk_label_set_width_chars(label_, kFewLetters);
    gtk_box_pack_start(GTK_BOX(face), GTK_WIDGET(label_), TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(face), gtk_image_new_from_icon_name("pan-down-symbolic", GTK_ICON_SIZE_BUTTON),
        FALSE, FALSE, 0);
    gtk_container_add(GTK_CONTAINER(button_), face);
    gtk_widget_show_all(face);
    atk_object_set_role(gtk_widget_get_accessible(GTK_WIDGET(button_)), ATK_ROLE_COMBO_BOX);
    makeList();
    connections_.push_back(
        std::make_unique<SignalConnection>(button_, "toggled", G_CALLBACK(onOpened), this));
}

MenuList::~MenuList() = default;

bool MenuList::isWantedFor(const platform::Menu& menu) {
    return menu.isLong() || std::ranges::any_of(menu.entries(), [](const platform::MenuEntry& entry) {
        return entry.title.size() > kLongTitle;
    });
}

bool MenuList::isOpen() const {
    return gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(button_)) != FALSE;
}

void MenuList::show(const std::vector<platform::MenuEntry>& entries, std::optional<std::size_t> selected) {
    if (entries_ != entries) entries_ = entries;
    selected_ = selected;
    const char* const title = selected_ ? entries_[*selected_].title.c_str() : "";
    gtk_label_set_text(label_, title);
    gtk_widget_set_tooltip_text(GTK_WIDGET(button_), title); // it may be a long one
    atk_object_set_name(gtk_widget_get_accessible(GTK_WIDGET(button_)), title);
}

void MenuList::onOpened(GtkToggleButton* button, MenuList* self) {
    if (gtk_toggle_button_get_active(button) == FALSE) return;
    guarded([self] {
        gtk_widget_set_visible(GTK_WIDGET(self->search_), self->menu_.isLong() ? TRUE : FALSE);
        gtk_entry_set_text(GTK_ENTRY(self->search_), "");
        self->fill();
        gtk_widget_grab_focus(self->menu_.isLong() ? GTK_WIDGET(self->search_) : GTK_WIDGET(self->list_));
    });
}

void MenuList::makeList() {
    GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_VERTICAL, kGap);
    gtk_container_set_border_width(GTK_CONTAINER(box), kGap);
    search_ = GTK_SEARCH_ENTRY(gtk_search_entry_new());
    atk_object_set_name(gtk_widget_get_accessible(GTK_WIDGET(search_)), menu_.title().text.c_str());
    GtkWidget* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
    gtk_widget_set_size_request(scroller, kListWidth, kListHeight);
    list_ = makeTreeView(menu_.title().text);
    gtk_container_add(GTK_CONTAINER(scroller), GTK_WIDGET(list_));
    gtk_box_pack_start(GTK_BOX(box), GTK_WIDGET(search_), FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(box), scroller, TRUE, TRUE, 0);
    popover_ = GTK_POPOVER(gtk_popover_new(GTK_WIDGET(button_)));
    gtk_container_add(GTK_CONTAINER(popover_), box);
    gtk_menu_button_set_popover(button_, GTK_WIDGET(popover_));
    gtk_widget_show_all(box);
    const auto connect = [this](gpointer object, const char* signal, GCallback handler) {
        connections_.push_back(std::make_unique<SignalConnection>(object, signal, handler, this));
    };
    connect(search_, "search-changed", G_CALLBACK(onSearch));
    connect(search_, "activate", G_CALLBACK(onReturn));
    connect(search_, "key-press-event", G_CALLBACK(onKey));
    connect(list_, "row-activated", G_CALLBACK(onActivated));
}

// With the entries that contain what is searched for, and with one of them marked.
void MenuList::fill() {
    const std::string searched = folded(gtk_entry_get_text(GTK_ENTRY(search_)));
    const auto store = makeMenuStore();
    std::optional<std::size_t> marked;
    for (std::size_t place = 0, row = 0; place < entries_.size(); ++place) {
        const platform::MenuEntry& entry = entries_[place];
        if (!searched.empty() && (entry.isLine || folded(entry.title).find(searched) == std::string::npos))
            continue;
        appendMenuRow(store.get(), entry, place);
        if (!marked || place == selected_) marked = row;
        ++row;
    }
    gtk_tree_view_set_model(list_, GTK_TREE_MODEL(store.get()));
    if (marked) mark(*marked);
}

// In sight, with what is above it.
void MenuList::mark(std::size_t row) {
    const auto path = [](std::size_t place) {
        return std::unique_ptr<GtkTreePath, FreePath>(
            gtk_tree_path_new_from_indices(static_cast<int>(place), -1));
    };
    gtk_tree_view_set_cursor(list_, path(row).get(), nullptr, FALSE);
    const std::size_t top = row > kRowsAbove ? row - kRowsAbove : 0;
    gtk_tree_view_scroll_to_cell(list_, path(top).get(), nullptr, TRUE, 0, 0);
}

void MenuList::onSearch(GtkSearchEntry*, MenuList* self) {
    guarded([self] { self->fill(); });
}

// From the search line down into the list.
gboolean MenuList::onKey(GtkWidget*, GdkEventKey* event, MenuList* self) {
    if (event->keyval != GDK_KEY_Down && event->keyval != GDK_KEY_KP_Down) return FALSE;
    gtk_widget_grab_focus(GTK_WIDGET(self->list_));
    return TRUE;
}

void MenuList::onActivated(GtkTreeView*, GtkTreePath*, GtkTreeViewColumn*, MenuList* self) {
    guarded([self] { self->pickMarked(); });
}

// Which comes sooner than the search that the last letter starts.
void MenuList::onReturn(GtkEntry*, MenuList* self) {
    guarded([self] {
        self->fill();
        self->pickMarked();
    });
}

void MenuList::pickMarked() {
    GtkTreeModel* model = nullptr;
    GtkTreeIter row;
    if (gtk_tree_selection_get_selected(gtk_tree_view_get_selection(list_), &model, &row) == FALSE) return;
    int place = 0;
    gtk_tree_model_get(model, &row, kIndexColumn, &place, -1);
    gtk_popover_popdown(popover_);
    gtk_widget_grab_focus(GTK_WIDGET(button_));
    menu_.pick(static_cast<std::size_t>(place));
}

} // namespace orvan
