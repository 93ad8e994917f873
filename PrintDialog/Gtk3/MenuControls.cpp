#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Gtk/Guarded.h"
#include "PrintDialog/Gtk/MenuMirror.h"
#include "PrintDialog/Gtk3/MenuList.h"
#include "PrintDialog/Gtk3/MenuRows.h"

#include <string>
#include <utility>

namespace orvan {
namespace {

using Entries = std::vector<platform::MenuEntry>;

// Pixels beside the title: the arrow and the borders of the widest theme that GTK brings.
constexpr int kArrowWidth = 48;

class ComboControl final : public MenuControl {
public:
    explicit ComboControl(platform::Menu& menu)
        : menu_(menu),
          widget_(makeWidget()),
          changed_(widget_, "changed", G_CALLBACK(onChanged), this),
          poppedUp_(widget_, "notify::popup-shown", G_CALLBACK(onPopUp), this),
          scrolled_(widget_, "scroll-event", G_CALLBACK(onScroll), nullptr),
          asked_(widget_, "query-tooltip", G_CALLBACK(onTooltip), this) {
        gtk_widget_set_has_tooltip(GTK_WIDGET(widget_), TRUE);
    }

    GtkWidget* widget() const override { return GTK_WIDGET(widget_); }

    bool suits(const platform::Menu& menu) const override { return !MenuList::isWantedFor(menu); }

    bool isOpen() const override {
        gboolean isOpen = FALSE;
        g_object_get(widget_, "popup-shown", &isOpen, nullptr);
        return isOpen != FALSE;
    }

    // A new store is filled before the control sees it: a control redraws with every row that it sees added.
    void show(const Entries& entries, std::optional<std::size_t> selected) override {
        const SignalConnection::Block block(changed_);
        if (!isFilled_ || shown_ != entries) {
            isFilled_ = true;
            shown_ = entries;
            const auto store = makeMenuStore();
            for (std::size_t index = 0; index < shown_.size(); ++index)
                appendMenuRow(store.get(), shown_[index], index);
            gtk_combo_box_set_model(widget_, GTK_TREE_MODEL(store.get()));
        }
        gtk_combo_box_set_active(widget_, selected ? static_cast<int>(*selected) : -1);
    }

private:
    static GtkComboBox* makeWidget() {
        auto* const combo = GTK_COMBO_BOX(gtk_combo_box_new());
        GtkCellRenderer* const text = makeTitleRenderer();
        gtk_cell_layout_pack_start(GTK_CELL_LAYOUT(combo), text, TRUE);
        gtk_cell_layout_set_attributes(
            GTK_CELL_LAYOUT(combo), text, "text", kTitleColumn, "sensitive", kEnabledColumn, nullptr);
        gtk_combo_box_set_row_separator_func(combo, isMenuLine, nullptr, nullptr);
        return combo;
    }

    // The wheel scrolls the rows; a control of GTK's would take it for a pick.
    static gboolean onScroll(GtkWidget* combo, GdkEvent* event, gpointer) {
        gtk_propagate_event(gtk_widget_get_parent(combo), event);
        return TRUE;
    }

    // The whole title where it does not fit.
    static gboolean onTooltip(
        GtkWidget* combo, int, int, gboolean, GtkTooltip* tip, const ComboControl* self) {
        const platform::MenuEntry* const entry = self->menu_.selectedEntry();
        if (entry == nullptr) return FALSE;
        const GObjectRef<PangoLayout> whole(gtk_widget_create_pango_layout(combo, entry->title.c_str()));
        int width = 0;
        pango_layout_get_pixel_size(whole.get(), &width, nullptr);
        if (width + kArrowWidth < gtk_widget_get_allocated_width(combo)) return FALSE;
        gtk_tooltip_set_text(tip, entry->title.c_str());
        return TRUE;
    }

    static void onChanged(GtkComboBox*, ComboControl* self) {
        self->wasChanged_ = true;
        guarded([self] { self->pick(); });
    }

    // GtkComboBox says nothing when the item is picked that it shows; its menu does.
    static void onMenuActivate(GtkWidget*, const char*, ComboControl* self) {
        if (!std::exchange(self->wasChanged_, false)) guarded([self] { self->pick(); });
    }

    static void onPopUp(GtkComboBox* combo, GParamSpec*, ComboControl* self) {
        self->wasChanged_ = false;
        AtkObject* const menu = gtk_combo_box_get_popup_accessible(combo);
        if (self->activated_ != nullptr || !GTK_IS_ACCESSIBLE(menu)) return;
        GtkWidget* const popUp = gtk_accessible_get_widget(GTK_ACCESSIBLE(menu));
        if (popUp != nullptr && g_signal_lookup("menu-activate", G_OBJECT_TYPE(popUp)) != 0)
            self->activated_ = std::make_unique<SignalConnection>(
                popUp, "menu-activate", G_CALLBACK(onMenuActivate), self, G_CONNECT_AFTER);
    }

    void pick() {
        const int active = gtk_combo_box_get_active(widget_);
        if (active >= 0) menu_.pick(static_cast<std::size_t>(active));
    }

    platform::Menu& menu_;
    GtkComboBox* widget_;
    SignalConnection changed_;
    SignalConnection poppedUp_;
    SignalConnection scrolled_;
    SignalConnection asked_;
    std::unique_ptr<SignalConnection> activated_;
    Entries shown_;
    bool isFilled_ = false;
    bool wasChanged_ = false; // since its menu came up
};

} // namespace

std::unique_ptr<MenuControl> makeMenuControl(platform::Menu& menu) {
    if (MenuList::isWantedFor(menu)) return std::make_unique<MenuList>(menu);
    return std::make_unique<ComboControl>(menu);
}

} // namespace orvan
