#include "PrintDialog/Gtk3/DisclosureMirror.h"

#include "PrintDialog/Gtk3/Guarded.h"

#include <utility>

namespace orvan {
namespace {

constexpr int kDetailSpacing = 6; // pixels
constexpr int kIndent = 18;       // pixels, as far as the expander's title
constexpr int kLevelWidth = 120;  // pixels
constexpr double kFullLevel = 100;

void onExpanded(GtkExpander* expander, GParamSpec*, platform::Disclosure* model) {
    guarded([expander, model] {
        if ((gtk_expander_get_expanded(expander) != FALSE) != model->isUnfolded()) model->toggle();
    });
}

GtkWidget* makeText(const std::string& text) {
    GtkWidget* const label = gtk_label_new(text.c_str());
    gtk_label_set_xalign(GTK_LABEL(label), 0);
    gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
    gtk_widget_set_tooltip_text(label, text.c_str());
    return label;
}

// With a border, so that it is seen on every ground.
void paint(GtkWidget* bar, const std::string& color) {
    const std::string style =
        "levelbar block.filled { background: " + color + "; border: 1px solid alpha(@theme_fg_color, 0.6); }";
    const GObjectRef<GtkCssProvider> provider(gtk_css_provider_new());
    gtk_css_provider_load_from_data(provider.get(), style.c_str(), -1, nullptr);
    gtk_style_context_add_provider(gtk_widget_get_style_context(bar), GTK_STYLE_PROVIDER(provider.get()),
        GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

} // namespace

DisclosureMirror::DisclosureMirror(platform::Disclosure& disclosure)
    : model_(disclosure),
      expander_(GTK_EXPANDER(gtk_expander_new(nullptr))),
      box_(GTK_BOX(gtk_box_new(GTK_ORIENTATION_VERTICAL, kDetailSpacing))),
      expanded_(expander_, "notify::expanded", G_CALLBACK(onExpanded), &disclosure) {
    gtk_widget_set_margin_start(GTK_WIDGET(box_), kIndent);
    gtk_container_add(GTK_CONTAINER(expander_), GTK_WIDGET(box_));
    gtk_expander_set_spacing(expander_, kDetailSpacing);
    gtk_expander_set_expanded(expander_, disclosure.isUnfolded() ? TRUE : FALSE);
    refresh();
    gtk_widget_show(GTK_WIDGET(expander_));
}

std::vector<DisclosureMirror::Row> DisclosureMirror::rowsOfView() const {
    std::vector<Row> rows;
    rows.reserve(model_.subviews().size());
    for (const auto& view : model_.subviews()) {
        if (const auto* text = dynamic_cast<const platform::TextField*>(view.get()))
            rows.push_back({.text = text->stringValue(), .percent = {}, .color = {}});
        if (const auto* level = dynamic_cast<const platform::LevelIndicator*>(view.get()))
            rows.push_back({level->stringValue(), true, level->percent(), level->color()});
    }
    return rows;
}

GtkWidget* DisclosureMirror::makeRow(const Row& row) {
    GtkWidget* const label = makeText(row.text);
    if (!row.isLevel || !row.percent) return label;
    GtkWidget* const box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kDetailSpacing);
    GtkWidget* const bar = gtk_level_bar_new_for_interval(0, kFullLevel);
    gtk_level_bar_set_value(GTK_LEVEL_BAR(bar), *row.percent);
    gtk_widget_set_size_request(bar, kLevelWidth, -1);
    gtk_widget_set_valign(bar, GTK_ALIGN_CENTER);
    atk_object_set_name(gtk_widget_get_accessible(bar), row.text.c_str());
    if (!row.color.empty()) paint(bar, row.color);
    gtk_box_pack_start(GTK_BOX(box), bar, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(box), label, TRUE, TRUE, 0);
    return box;
}

void DisclosureMirror::refresh() {
    gtk_expander_set_label(expander_, model_.title().c_str());
    // What is folded away is not there for assistive technology either.
    gtk_widget_set_visible(GTK_WIDGET(box_), model_.isUnfolded() ? TRUE : FALSE);
    std::vector<Row> rows = rowsOfView();
    if (rows == shown_) return;
    shown_ = std::move(rows);
    gtk_container_foreach(
        GTK_CONTAINER(box_), [](GtkWidget* child, gpointer) { gtk_widget_destroy(child); }, nullptr);
    for (const Row& row : shown_) {
        GtkWidget* const widget = makeRow(row);
        gtk_widget_show_all(widget);
        gtk_box_pack_start(box_, widget, FALSE, FALSE, 0);
    }
}

} // namespace orvan
