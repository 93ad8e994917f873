#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Gtk/Guarded.h"
#include "PrintDialog/Gtk/MenuMirror.h"
#include "PrintDialog/Gtk/Widgets.h"

#include <algorithm>
#include <string>
#include <utility>

namespace orvan {
namespace {

using Entries = std::vector<platform::MenuEntry>;

// Of a title, that are seen on the smallest screen.
constexpr int kFewLetters = 12;
// Of a title in the open list, before it is cut.
constexpr int kManyLetters = 60;
constexpr int kLineSpacing = 6; // pixels, below a line
constexpr const char* kIsBelowLine = "orvan-is-below-line";
constexpr const char* kIsDisabled = "orvan-is-disabled";

template <class T>
T* firstBelow(GtkWidget* widget, GType type) {
    T* found = nullptr;
    forEachChild(widget, [&](GtkWidget* child) {
        if (found == nullptr)
            found = G_TYPE_CHECK_INSTANCE_TYPE(child, type) ? reinterpret_cast<T*>(child)
                                                            : firstBelow<T>(child, type);
    });
    return found;
}

bool isMarked(gpointer item, const char* mark) {
    return g_object_get_data(G_OBJECT(item), mark) != nullptr;
}

void setTitle(GtkWidget* label, const char* title) {
    gtk_label_set_text(GTK_LABEL(label), title);
    gtk_widget_set_tooltip_text(label, title); // it may be a long one
}

GtkLabel* makeTitleLabel() {
    auto* const label = GTK_LABEL(gtk_label_new(nullptr));
    gtk_label_set_xalign(label, 0);
    gtk_label_set_ellipsize(label, PANGO_ELLIPSIZE_END);
    gtk_label_set_width_chars(label, kFewLetters);
    return label;
}

// The face of the control.
void setUpFace(GtkListItemFactory*, GtkListItem* item, gpointer) {
    gtk_list_item_set_child(item, GTK_WIDGET(makeTitleLabel()));
}

void bindFace(GtkListItemFactory*, GtkListItem* item, gpointer) {
    setTitle(gtk_list_item_get_child(item),
        gtk_string_object_get_string(GTK_STRING_OBJECT(gtk_list_item_get_item(item))));
}

// A row of the list: a title, below a line where a group of them begins. Each row can be gone to and picked:
// the keyboard stops in front of one that cannot.
void setUpRow(GtkListItemFactory*, GtkListItem* item, gpointer) {
    GtkWidget* const row = gtk_box_new(GTK_ORIENTATION_VERTICAL, kLineSpacing);
    GtkLabel* const title = makeTitleLabel();
    gtk_label_set_max_width_chars(title, kManyLetters);
    append(GTK_BOX(row), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL), false);
    append(GTK_BOX(row), GTK_WIDGET(title), true);
    gtk_list_item_set_child(item, row);
}

void bindRow(GtkListItemFactory*, GtkListItem* item, gpointer) {
    gpointer const entry = gtk_list_item_get_item(item);
    GtkWidget* const line = gtk_widget_get_first_child(gtk_list_item_get_child(item));
    GtkWidget* const title = gtk_widget_get_next_sibling(line);
    const char* const text = gtk_string_object_get_string(GTK_STRING_OBJECT(entry));
    setTitle(title, text);
    gtk_widget_set_visible(line, isMarked(entry, kIsBelowLine) ? TRUE : FALSE);
    gtk_widget_set_sensitive(title, isMarked(entry, kIsDisabled) ? FALSE : TRUE);
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(item), "accessible-label") != nullptr) // since 4.12
        g_object_set(item, "accessible-label", text, nullptr);
}

using FactoryHandler = void (*)(GtkListItemFactory*, GtkListItem*, gpointer);
GObjectRef<GtkListItemFactory> makeFactory(FactoryHandler setUp, FactoryHandler bind) {
    GObjectRef<GtkListItemFactory> factory(gtk_signal_list_item_factory_new());
    g_signal_connect(factory.get(), "setup", G_CALLBACK(setUp), nullptr);
    g_signal_connect(factory.get(), "bind", G_CALLBACK(bind), nullptr);
    return factory;
}

// GTK's own control, which opens a list and has a search line for it.
class DropDown final : public MenuControl {
public:
    explicit DropDown(platform::Menu& menu)
        : menu_(menu),
          widget_(makeWidget()),
          list_(firstBelow<GtkListView>(GTK_WIDGET(widget_), GTK_TYPE_LIST_VIEW)),
          popover_(firstBelow<GtkWidget>(GTK_WIDGET(widget_), GTK_TYPE_POPOVER)),
          selected_(widget_, "notify::selected", G_CALLBACK(onSelected), this) {
        if (list_ != nullptr)
            activated_ = std::make_unique<SignalConnection>(
                list_, "activate", G_CALLBACK(onActivated), this, G_CONNECT_AFTER);
        if (popover_ != nullptr)
            opened_ = std::make_unique<SignalConnection>(popover_, "map", G_CALLBACK(onOpened), this);
    }

    GtkWidget* widget() const override { return GTK_WIDGET(widget_); }
    bool suits(const platform::Menu&) const override { return true; }
    bool isOpen() const override { return popover_ != nullptr && gtk_widget_get_visible(popover_) != FALSE; }

    ~DropDown() override {
        if (later_ != 0) g_source_remove(later_);
    }

    // Not while the widget tells of a pick: its old list would go under its hands.
    void show(const Entries& entries, std::optional<std::size_t> selected) override {
        if (*isTelling_ && shown_ != entries) {
            if (later_ == 0) later_ = g_idle_add_full(G_PRIORITY_HIGH, onLater, this, nullptr);
            return;
        }
        const SignalConnection::Block block(selected_);
        if (!isFilled_ || shown_ != entries) {
            isFilled_ = true;
            shown_ = entries;
            fill();
        }
        shownRow_ = selected ? rowOf(*selected) : GTK_INVALID_LIST_POSITION;
        gtk_drop_down_set_selected(widget_, shownRow_);
        gtk_drop_down_set_enable_search(widget_, menu_.isLong() ? TRUE : FALSE);
        searchAnywhere();
    }

private:
    static GtkDropDown* makeWidget() {
        auto* const dropDown = GTK_DROP_DOWN(gtk_drop_down_new(nullptr, nullptr));
        gtk_drop_down_set_factory(dropDown, makeFactory(setUpFace, bindFace).get());
        gtk_drop_down_set_list_factory(dropDown, makeFactory(setUpRow, bindRow).get());
        GtkExpression* const title = gtk_property_expression_new(GTK_TYPE_STRING_OBJECT, nullptr, "string");
        gtk_drop_down_set_expression(dropDown, title);
        gtk_expression_unref(title);
        return dropDown;
    }

    // A row for each entry that is no line.
    void fill() {
        std::vector<GObjectRef<GtkStringObject>> owners;
        std::vector<gpointer> items;
        owners.reserve(shown_.size());
        items.reserve(shown_.size());
        places_.clear();
        places_.reserve(shown_.size());
        for (std::size_t place = 0; place < shown_.size(); ++place) {
            const platform::MenuEntry& entry = shown_[place];
            if (entry.isLine) continue;
            GtkStringObject* const item = gtk_string_object_new(entry.title.c_str());
            owners.emplace_back(item);
            items.push_back(item);
            const bool isBelowLine = place > 0 && shown_[place - 1].isLine;
            g_object_set_data(G_OBJECT(item), kIsBelowLine, isBelowLine ? item : nullptr);
            g_object_set_data(G_OBJECT(item), kIsDisabled, entry.enabled ? nullptr : item);
            places_.push_back(place);
        }
        const GObjectRef<GListStore> store(g_list_store_new(GTK_TYPE_STRING_OBJECT));
        g_list_store_splice(store.get(), 0, 0, items.data(), static_cast<guint>(items.size()));
        gtk_drop_down_set_model(widget_, G_LIST_MODEL(store.get()));
    }

    guint rowOf(std::size_t place) const {
        const auto found = std::ranges::find(places_, place);
        return found != places_.end() ? static_cast<guint>(found - places_.begin())
                                      : GTK_INVALID_LIST_POSITION;
    }

    // Left to itself it finds what a title begins with.
    void searchAnywhere() {
        GtkSelectionModel* const selection = list_ != nullptr ? gtk_list_view_get_model(list_) : nullptr;
        if (!GTK_IS_SINGLE_SELECTION(selection)) return;
        GListModel* const found = gtk_single_selection_get_model(GTK_SINGLE_SELECTION(selection));
        if (!GTK_IS_FILTER_LIST_MODEL(found)) return;
        GtkFilter* const filter = gtk_filter_list_model_get_filter(GTK_FILTER_LIST_MODEL(found));
        if (GTK_IS_STRING_FILTER(filter))
            gtk_string_filter_set_match_mode(
                GTK_STRING_FILTER(filter), GTK_STRING_FILTER_MATCH_MODE_SUBSTRING);
    }

    // The control may tell the same pick twice.
    static void onSelected(GtkDropDown* widget, GParamSpec*, DropDown* self) {
        const guint selected = gtk_drop_down_get_selected(widget);
        if (std::exchange(self->shownRow_, selected) == selected) return;
        self->wasSelected_ = true;
        self->pick();
    }

    static gboolean onLater(gpointer data) {
        auto* const self = static_cast<DropDown*>(data);
        self->later_ = 0;
        guarded([self] { self->show(self->menu_.entries(), self->menu_.selected()); });
        return G_SOURCE_REMOVE;
    }

    static void onOpened(GtkWidget*, DropDown* self) { self->wasSelected_ = false; }

    // The control says nothing when the entry is picked that it shows; its list does.
    static void onActivated(GtkListView*, guint, DropDown* self) {
        if (!std::exchange(self->wasSelected_, false)) self->pick();
    }

    // May end the whole panel.
    void pick() {
        const guint selected = gtk_drop_down_get_selected(widget_);
        if (selected >= places_.size()) return;
        const auto isTelling = isTelling_;
        *isTelling = true;
        guarded([&] {
            if (!menu_.pick(places_[selected]))
                show(menu_.entries(), menu_.selected()); // an entry that is disabled
        });
        *isTelling = false;
    }

    platform::Menu& menu_;
    GtkDropDown* widget_;
    GtkListView* list_;  // of the widget's; null where this release has none
    GtkWidget* popover_; // the same
    SignalConnection selected_;
    std::unique_ptr<SignalConnection> activated_;
    std::unique_ptr<SignalConnection> opened_;
    Entries shown_;
    std::vector<std::size_t> places_; // of the rows' entries
    guint shownRow_ = GTK_INVALID_LIST_POSITION;
    std::shared_ptr<bool> isTelling_ = std::make_shared<bool>(false); // of a pick
    guint later_ = 0;                                                 // to show what could not be shown then
    bool isFilled_ = false;
    bool wasSelected_ = false; // since its list was opened
};

} // namespace

std::unique_ptr<MenuControl> makeMenuControl(platform::Menu& menu) {
    return std::make_unique<DropDown>(menu);
}

} // namespace orvan
