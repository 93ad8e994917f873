#include "PrintDialog/Gtk3/PanelMirror.h"

#include "PrintDialog/Gtk3/GObjectRef.h"
#include "PrintDialog/Gtk3/Guarded.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

namespace orvan {
namespace {

constexpr int kRowSpacing = 6;     // pixels, as in GTK's own tabs
constexpr int kColumnSpacing = 12; // pixels
constexpr std::size_t kMostInMenu = 30;
enum Column : int { kTitle, kEnabled, kIsLine };

int pixels(double points) {
    return static_cast<int>(std::lround(points * 4 / 3));
}

double middle(const platform::View& view) {
    return view.frame().origin.y + view.frame().height / 2;
}

using Line = std::vector<platform::View*>;

// The visible controls, line by line from the top, each from the left: a control whose middle is within
// another's height is on its line.
std::vector<Line> linesOf(const platform::View& root) {
    Line controls;
    for (const auto& view : root.subviews())
        if (!view->isHidden()) controls.push_back(view.get());
    std::ranges::stable_sort(
        controls, std::ranges::greater{}, [](const auto* view) { return middle(*view); });

    std::vector<Line> lines;
    for (platform::View* control : controls) {
        if (!lines.empty()) {
            const platform::View& first = *lines.back().front();
            const double reach = std::max(first.frame().height, control->frame().height) / 2;
            if (middle(first) - middle(*control) < reach) {
                lines.back().push_back(control);
                continue;
            }
        }
        lines.push_back({control});
    }
    for (Line& line : lines)
        std::ranges::stable_sort(line, {}, [](const auto* view) { return view->frame().origin.x; });
    return lines;
}

} // namespace

struct PanelMirror::LabelMirror {
    explicit LabelMirror(platform::TextField& field)
        : model(field), widget(GTK_LABEL(gtk_label_new(nullptr))) {
        gtk_label_set_xalign(widget, 0);
    }

    void refresh() {
        gtk_label_set_text(widget, model.stringValue().c_str());
        gtk_widget_set_visible(GTK_WIDGET(widget), !model.isHidden());
    }

    platform::TextField& model;
    GtkLabel* widget;
};

struct PanelMirror::PopUpMirror {
    PopUpMirror(PanelMirror& mirror, platform::PopUpButton& popUp)
        : owner(mirror),
          model(popUp),
          widget(makeWidget()),
          changed(widget, "changed", G_CALLBACK(onChanged), this),
          poppedUp(widget, "notify::popup-shown", G_CALLBACK(onPopUp), this),
          scrolled(widget, "scroll-event", G_CALLBACK(onScroll), nullptr) {
        gtk_widget_set_size_request(GTK_WIDGET(widget), pixels(popUp.frame().width), -1);
        gtk_widget_set_hexpand(GTK_WIDGET(widget), TRUE);
    }

    static GtkComboBox* makeWidget() {
        auto* const combo = GTK_COMBO_BOX(gtk_combo_box_new());
        GtkCellRenderer* const text = gtk_cell_renderer_text_new();
        g_object_set(text, "ellipsize", PANGO_ELLIPSIZE_END, nullptr);
        gtk_cell_layout_pack_start(GTK_CELL_LAYOUT(combo), text, TRUE);
        gtk_cell_layout_set_attributes(
            GTK_CELL_LAYOUT(combo), text, "text", kTitle, "sensitive", kEnabled, nullptr);
        const auto isLine = [](GtkTreeModel* model, GtkTreeIter* row, gpointer) -> gboolean {
            gboolean line = FALSE;
            gtk_tree_model_get(model, row, kIsLine, &line, -1);
            return line;
        };
        gtk_combo_box_set_row_separator_func(combo, isLine, nullptr, nullptr);
        return combo;
    }

    // The wheel scrolls the rows; a control of GTK's would take it for a pick.
    static gboolean onScroll(GtkWidget* combo, GdkEvent* event, gpointer) {
        gtk_propagate_event(gtk_widget_get_parent(combo), event);
        return TRUE;
    }

    static void onChanged(GtkComboBox* combo, PopUpMirror* self) {
        self->wasChanged = true;
        guarded([combo, self] { self->pick(gtk_combo_box_get_active(combo)); });
    }

    // GtkComboBox says nothing when the item is picked that it shows; its menu does.
    static void onMenuActivate(GtkWidget*, const char*, PopUpMirror* self) {
        if (!std::exchange(self->wasChanged, false))
            guarded([self] { self->pick(gtk_combo_box_get_active(self->widget)); });
    }

    static void onPopUp(GtkComboBox* combo, GParamSpec*, PopUpMirror* self) {
        self->wasChanged = false;
        AtkObject* const menu = gtk_combo_box_get_popup_accessible(combo);
        if (self->activated != nullptr || !GTK_IS_ACCESSIBLE(menu)) return;
        GtkWidget* const popUp = gtk_accessible_get_widget(GTK_ACCESSIBLE(menu));
        if (popUp != nullptr && g_signal_lookup("menu-activate", G_OBJECT_TYPE(popUp)) != 0)
            self->activated = std::make_unique<SignalConnection>(
                popUp, "menu-activate", G_CALLBACK(onMenuActivate), self, G_CONNECT_AFTER);
    }

    void pick(int index) {
        const bool isItem = index >= 0 && static_cast<std::size_t>(index) < shown.size();
        const std::int64_t place = isItem ? shown[static_cast<std::size_t>(index)].place : -1;
        if (!model.pick(place)) refresh();
        const std::function<void()> picked = owner.picked_;
        picked();
    }

    void refresh() {
        const SignalConnection::Block block(changed);
        ShownPopUp now = owner.shown_(model);
        if (!isFilled || shown != now.items) {
            shown = std::move(now.items);
            fill();
        }
        gtk_combo_box_set_active(widget, static_cast<int>(now.selected));
        gtk_widget_set_sensitive(GTK_WIDGET(widget), model.isEnabled());
        gtk_widget_set_visible(GTK_WIDGET(widget), !model.isHidden());
    }

    // GTK's menus take a time that grows with the square of their items; its lists do not.
    void preferList() {
        const GObjectRef<GtkCssProvider> style(gtk_css_provider_new());
        gtk_css_provider_load_from_data(
            style.get(), "combobox { -GtkComboBox-appears-as-list: 1; }", -1, nullptr);
        gtk_style_context_add_provider(gtk_widget_get_style_context(GTK_WIDGET(widget)),
            GTK_STYLE_PROVIDER(style.get()), GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
        g_signal_emit_by_name(widget, "style-updated"); // before it makes a menu of the items
    }

    // A new store is filled before the control sees it: a control redraws with every row that it sees added.
    void fill() {
        isFilled = true;
        if (shown.size() > kMostInMenu && !std::exchange(isList, true)) preferList();
        const GObjectRef<GtkListStore> store(
            gtk_list_store_new(3, G_TYPE_STRING, G_TYPE_BOOLEAN, G_TYPE_BOOLEAN));
        for (const ShownItem& item : shown)
            gtk_list_store_insert_with_values(store.get(), nullptr, -1, kTitle, item.title.c_str(), kEnabled,
                item.enabled ? TRUE : FALSE, kIsLine, item.isLine ? TRUE : FALSE, -1);
        gtk_combo_box_set_model(widget, GTK_TREE_MODEL(store.get()));
    }

    PanelMirror& owner;
    platform::PopUpButton& model;
    GtkComboBox* widget;
    SignalConnection changed;
    SignalConnection poppedUp;
    SignalConnection scrolled;
    std::unique_ptr<SignalConnection> activated;
    std::vector<ShownItem> shown;
    bool isFilled = false;
    bool isList = false;
    bool wasChanged = false; // since its menu came up
};

PanelMirror::PanelMirror(platform::View& root, Shown shown, std::function<void()> picked)
    : shown_(std::move(shown)), picked_(std::move(picked)), grid_(gtk_grid_new()) {
    gtk_grid_set_row_spacing(GTK_GRID(grid_), kRowSpacing);
    gtk_grid_set_column_spacing(GTK_GRID(grid_), kColumnSpacing);
    int row = 0;
    for (const Line& line : linesOf(root)) {
        int column = 0;
        for (platform::View* control : line) {
            if (auto* label = dynamic_cast<platform::TextField*>(control)) add(*label, column++, row);
            if (auto* popUp = dynamic_cast<platform::PopUpButton*>(control)) add(*popUp, column++, row);
        }
        ++row;
    }
    refresh();
    gtk_widget_show(grid_);
}

PanelMirror::~PanelMirror() = default;

void PanelMirror::add(platform::TextField& label, int column, int row) {
    labels_.push_back(std::make_unique<LabelMirror>(label));
    gtk_grid_attach(GTK_GRID(grid_), GTK_WIDGET(labels_.back()->widget), column, row, 1, 1);
}

void PanelMirror::add(platform::PopUpButton& popUp, int column, int row) {
    popUps_.push_back(std::make_unique<PopUpMirror>(*this, popUp));
    GtkWidget* const widget = GTK_WIDGET(popUps_.back()->widget);
    gtk_grid_attach(GTK_GRID(grid_), widget, column, row, 1, 1);
    // The label on its left names the pop-up for assistive technology.
    GtkWidget* const left = column > 0 ? gtk_grid_get_child_at(GTK_GRID(grid_), column - 1, row) : nullptr;
    if (GTK_IS_LABEL(left)) gtk_label_set_mnemonic_widget(GTK_LABEL(left), widget);
}

bool PanelMirror::isMenuOpen() const {
    return std::ranges::any_of(popUps_, [](const auto& popUp) {
        gboolean isOpen = FALSE;
        g_object_get(popUp->widget, "popup-shown", &isOpen, nullptr);
        return isOpen != FALSE;
    });
}

std::string PanelMirror::focusedOption() const {
    for (const auto& popUp : popUps_) {
        GtkWidget* const widget = GTK_WIDGET(popUp->widget);
        GtkWidget* const window = gtk_widget_get_toplevel(widget);
        GtkWidget* const focus = GTK_IS_WINDOW(window) ? gtk_window_get_focus(GTK_WINDOW(window)) : nullptr;
        if (focus != nullptr && (focus == widget || gtk_widget_is_ancestor(focus, widget)))
            return popUp->model.optionKeyword();
    }
    return {};
}

void PanelMirror::focus(const std::string& option) {
    for (const auto& popUp : popUps_)
        if (!option.empty() && popUp->model.optionKeyword() == option)
            gtk_widget_grab_focus(GTK_WIDGET(popUp->widget));
}

void PanelMirror::refresh() {
    for (const auto& label : labels_)
        label->refresh();
    for (const auto& popUp : popUps_)
        popUp->refresh();
}

} // namespace orvan
