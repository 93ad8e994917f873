#include "PrintDialog/Gtk/ViewMirror.h"

#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Gtk/Guarded.h"
#include "PrintDialog/Gtk/MenuMirror.h"
#include "PrintDialog/Gtk/Widgets.h"

#include <string>
#include <utility>
#include <vector>

namespace orvan {
namespace {

using platform::View;

constexpr int kSpacing = 12;       // pixels, between the parts of a tab, as in GTK's own tabs
constexpr int kRowSpacing = 6;     // pixels
constexpr int kColumnSpacing = 12; // pixels
constexpr int kIndent = 18;        // pixels, as far as an expander's title
constexpr int kLevelWidth = 120;   // pixels
constexpr int kMostLines = 3;      // of what matters now; its tooltip has the whole
constexpr double kFullLevel = 100;

// The whole text where it does not fit.
void tipWhenCut(GtkLabel* label) {
    const auto query = [](GtkLabel* cut, int, int, gboolean, GtkTooltip* tip, gpointer) -> gboolean {
        if (pango_layout_is_ellipsized(gtk_label_get_layout(cut)) == FALSE) return FALSE;
        gtk_tooltip_set_text(tip, gtk_label_get_text(cut));
        return TRUE;
    };
    gtk_label_set_ellipsize(label, PANGO_ELLIPSIZE_END);
    gtk_widget_set_has_tooltip(GTK_WIDGET(label), TRUE);
    g_signal_connect(label, "query-tooltip", G_CALLBACK(+query), nullptr);
}

class TextMirror final : public ViewMirror {
public:
    explicit TextMirror(const std::shared_ptr<platform::TextField>& field)
        : ViewMirror(field, isStatus(*field) ? GTK_WIDGET(makeStatusLabel()) : gtk_label_new(nullptr)),
          field_(*field),
          label_(GTK_LABEL(widget())) {
        gtk_label_set_xalign(label_, 0);
        tipWhenCut(label_);
        if (!isStatus(field_)) return;
        breakLines(label_, kMostLines);
        gtk_widget_set_hexpand(widget(), TRUE);
    }

private:
    static bool isStatus(const platform::TextField& field) {
        return field.role() == platform::TextField::Role::status;
    }

    void update() override {
        const std::string& text = field_.stringValue();
        if (text == gtk_label_get_text(label_)) return;
        gtk_label_set_text(label_, text.c_str());
        if (isStatus(field_) && !text.empty()) announce(widget(), text);
    }

    platform::TextField& field_;
    GtkLabel* label_;
};

class ButtonMirror final : public ViewMirror {
public:
    explicit ButtonMirror(const std::shared_ptr<platform::Button>& button)
        : ViewMirror(button, gtk_button_new_with_mnemonic("")),
          button_(*button),
          clicked_(widget(), "clicked", G_CALLBACK(onClicked), &button_) {
        gtk_widget_set_valign(widget(), GTK_ALIGN_CENTER);
    }

    GtkWidget* control() const override { return widget(); }

private:
    static void onClicked(GtkButton*, platform::Button* button) {
        guarded([button] { button->press(); });
    }

    void update() override {
        gtk_button_set_label(GTK_BUTTON(widget()), button_.title().withMarker('_').c_str());
    }

    platform::Button& button_;
    SignalConnection clicked_;
};

class EntryMirror final : public ViewMirror {
public:
    explicit EntryMirror(const std::shared_ptr<platform::TextEntry>& entry)
        : ViewMirror(entry, gtk_entry_new()),
          entry_(*entry),
          changed_(widget(), "changed", G_CALLBACK(onChanged), &entry_),
          ended_(widget(), "activate", G_CALLBACK(onEnded), &entry_) {
        gtk_widget_set_hexpand(widget(), TRUE);
        onEscape(GTK_ENTRY(widget()), [this] { entry_.leave(); }); // the entry, not the dialog
    }

    GtkWidget* control() const override { return widget(); }

private:
    static void onChanged(GtkEntry* widget, platform::TextEntry* entry) {
        guarded([=] { entry->edit(textOf(widget)); });
    }

    static void onEnded(GtkEntry*, platform::TextEntry* entry) {
        guarded([entry] { entry->end(); });
    }

    void update() override {
        setAccessibleName(widget(), entry_.label());
        if (entry_.stringValue() == textOf(GTK_ENTRY(widget()))) return;
        const SignalConnection::Block block(changed_);
        setText(GTK_ENTRY(widget()), entry_.stringValue());
    }

    platform::TextEntry& entry_;
    SignalConnection changed_;
    SignalConnection ended_;
};

class LevelMirror final : public ViewMirror {
public:
    explicit LevelMirror(const std::shared_ptr<platform::LevelIndicator>& level)
        : ViewMirror(level, gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kRowSpacing)),
          level_(*level),
          bar_(gtk_level_bar_new_for_interval(0, kFullLevel)),
          label_(gtk_label_new(nullptr)) {
        gtk_widget_set_size_request(bar_, kLevelWidth, -1);
        gtk_widget_set_valign(bar_, GTK_ALIGN_CENTER);
        gtk_label_set_xalign(GTK_LABEL(label_), 0);
        tipWhenCut(GTK_LABEL(label_));
        append(GTK_BOX(widget()), bar_, false);
        append(GTK_BOX(widget()), label_, true);
    }

private:
    void update() override {
        const std::string& text = level_.stringValue();
        gtk_label_set_text(GTK_LABEL(label_), text.c_str());
        setAccessibleName(bar_, text);
        gtk_widget_set_visible(bar_, level_.percent() ? TRUE : FALSE);
        if (level_.percent()) gtk_level_bar_set_value(GTK_LEVEL_BAR(bar_), *level_.percent());
        if (!level_.color().empty() && std::exchange(color_, level_.color()) != level_.color()) paint();
    }

    // With a border, so that it is seen on every ground.
    void paint() {
        addStyle(bar_, "levelbar block.filled { background: " + color_ +
                           "; border: 1px solid alpha(@theme_fg_color, 0.6); }");
    }

    platform::LevelIndicator& level_;
    GtkWidget* bar_;
    GtkWidget* label_;
    std::string color_;
};

// The views below a view, in a box.
class BoxMirror : public ViewMirror {
public:
    void visit(const std::function<void(ViewMirror&)>& function) override {
        function(*this);
        for (const auto& child : children_)
            child->visit(function);
    }

protected:
    // The box is the widget, or in it.
    BoxMirror(std::shared_ptr<View> view, GtkWidget* widget, GtkBox* box)
        : ViewMirror(std::move(view), widget), box_(box) {}
    static GtkBox* makeBox(GtkOrientation orientation) { return GTK_BOX(gtk_box_new(orientation, kSpacing)); }
    GtkBox* box() const { return box_; }

    // Other views get other widgets.
    void update() override {
        if (views_ != view().subviews()) {
            clear(box_);
            children_.clear();
            views_ = view().subviews();
            children_.reserve(views_.size());
            for (const auto& child : views_)
                add(mirrorOf(child));
        }
        for (const auto& child : children_)
            child->refresh();
    }

private:
    void add(std::unique_ptr<ViewMirror> child) {
        if (child == nullptr) return;
        const bool grows = dynamic_cast<const platform::ScrollView*>(&child->view()) != nullptr ||
                           gtk_widget_get_hexpand(child->widget()) != FALSE;
        append(box_, child->widget(), grows);
        children_.push_back(std::move(child));
    }

    GtkBox* box_;
    std::vector<std::shared_ptr<View>> views_;
    std::vector<std::unique_ptr<ViewMirror>> children_;
};

class StackMirror final : public BoxMirror {
public:
    explicit StackMirror(const std::shared_ptr<platform::Stack>& stack)
        : StackMirror(stack,
              makeBox(stack->axis() == platform::Stack::Axis::vertical ? GTK_ORIENTATION_VERTICAL
                                                                       : GTK_ORIENTATION_HORIZONTAL)) {}

private:
    StackMirror(const std::shared_ptr<platform::Stack>& stack, GtkBox* box)
        : BoxMirror(stack, GTK_WIDGET(box), box) {}
};

class ScrollMirror final : public BoxMirror {
public:
    explicit ScrollMirror(const std::shared_ptr<platform::ScrollView>& scroll)
        : ScrollMirror(scroll, makeBox(GTK_ORIENTATION_VERTICAL)) {}

private:
    ScrollMirror(const std::shared_ptr<platform::ScrollView>& scroll, GtkBox* box)
        : BoxMirror(scroll, makeScroller(GTK_WIDGET(box)), box) {}
};

class DisclosureMirror final : public BoxMirror {
public:
    explicit DisclosureMirror(const std::shared_ptr<platform::Disclosure>& disclosure)
        : BoxMirror(disclosure, gtk_expander_new(nullptr), makeBox(GTK_ORIENTATION_VERTICAL)),
          disclosure_(*disclosure),
          expander_(GTK_EXPANDER(widget())),
          label_(GTK_LABEL(gtk_label_new(nullptr))),
          expanded_(expander_, "notify::expanded", G_CALLBACK(onExpanded), &disclosure_) {
        gtk_box_set_spacing(box(), kRowSpacing);
        gtk_widget_set_margin_start(GTK_WIDGET(box()), kIndent);
        gtk_widget_set_margin_top(GTK_WIDGET(box()), kRowSpacing);
        setContent(expander_, GTK_WIDGET(box()));
        gtk_widget_set_visible(GTK_WIDGET(label_), TRUE);
        gtk_expander_set_label_widget(expander_, GTK_WIDGET(label_));
        // An expander as wide as its line has its title at the line's end where lines begin on the right.
        gtk_widget_set_halign(widget(), GTK_ALIGN_START);
    }

    GtkWidget* control() const override { return widget(); }

private:
    static void onExpanded(GtkExpander* expander, GParamSpec*, platform::Disclosure* disclosure) {
        guarded([expander, disclosure] {
            if ((gtk_expander_get_expanded(expander) != FALSE) != disclosure->isUnfolded())
                disclosure->toggle();
        });
    }

    void update() override {
        gtk_label_set_text_with_mnemonic(label_, disclosure_.title().withMarker('_').c_str());
        gtk_expander_set_expanded(expander_, disclosure_.isUnfolded() ? TRUE : FALSE);
        // What is folded away is not there for assistive technology either.
        gtk_widget_set_visible(GTK_WIDGET(box()), disclosure_.isUnfolded() ? TRUE : FALSE);
        BoxMirror::update();
    }

    platform::Disclosure& disclosure_;
    GtkExpander* expander_;
    GtkLabel* label_;
    SignalConnection expanded_;
};

class FormMirror final : public ViewMirror {
public:
    explicit FormMirror(const std::shared_ptr<platform::Form>& form) : ViewMirror(form, gtk_grid_new()) {
        gtk_grid_set_row_spacing(GTK_GRID(widget()), kRowSpacing);
        gtk_grid_set_column_spacing(GTK_GRID(widget()), kColumnSpacing);
        rows_.reserve(form->menus().size());
        for (const auto& menu : form->menus())
            rows_.push_back({GTK_LABEL(gtk_label_new(nullptr)), std::make_unique<MenuMirror>(menu)});
        const std::size_t last = rows_.size() - 1;
        for (std::size_t i = 0; i < rows_.size(); ++i)
            attach(kReadsFirstAttachedFirst ? i : last - i);
    }

    void visit(const std::function<void(ViewMirror&)>& function) override {
        function(*this);
        for (const Row& row : rows_)
            row.menu->visit(function);
    }

private:
    struct Row {
        GtkLabel* label;
        std::unique_ptr<MenuMirror> menu;
    };

    void attach(std::size_t place) {
        const Row& row = rows_[place];
        gtk_label_set_xalign(row.label, 0);
        tipWhenCut(row.label);
        gtk_widget_set_hexpand(row.menu->widget(), TRUE);
        attachRow(GTK_GRID(widget()), GTK_WIDGET(row.label), row.menu->widget(), static_cast<int>(place));
    }

    void update() override {
        for (const Row& row : rows_) {
            const auto& menu = static_cast<const platform::Menu&>(row.menu->view());
            row.menu->refresh();
            // It names the control for assistive technology as well.
            gtk_label_set_text_with_mnemonic(row.label, menu.title().withMarker('_').c_str());
            labelFor(row.label, row.menu->control());
            gtk_widget_set_visible(GTK_WIDGET(row.label), menu.isHidden() ? FALSE : TRUE);
        }
    }

    std::vector<Row> rows_;
};

template <class Kind>
std::shared_ptr<Kind> as(const std::shared_ptr<View>& view) {
    return std::dynamic_pointer_cast<Kind>(view);
}

} // namespace

void ViewMirror::refresh() {
    update();
    gtk_widget_set_visible(widget_, view_->isHidden() ? FALSE : TRUE);
}

std::unique_ptr<ViewMirror> mirrorOf(const std::shared_ptr<View>& view) {
    if (const auto text = as<platform::TextField>(view)) return std::make_unique<TextMirror>(text);
    if (const auto button = as<platform::Button>(view)) return std::make_unique<ButtonMirror>(button);
    if (const auto entry = as<platform::TextEntry>(view)) return std::make_unique<EntryMirror>(entry);
    if (const auto level = as<platform::LevelIndicator>(view)) return std::make_unique<LevelMirror>(level);
    if (const auto menu = as<platform::Menu>(view)) return std::make_unique<MenuMirror>(menu);
    if (const auto form = as<platform::Form>(view)) return std::make_unique<FormMirror>(form);
    if (const auto stack = as<platform::Stack>(view)) return std::make_unique<StackMirror>(stack);
    if (const auto scroll = as<platform::ScrollView>(view)) return std::make_unique<ScrollMirror>(scroll);
    if (const auto part = as<platform::Disclosure>(view)) return std::make_unique<DisclosureMirror>(part);
    return nullptr;
}

} // namespace orvan
