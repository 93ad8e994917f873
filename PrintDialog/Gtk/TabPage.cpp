#include "PrintDialog/Gtk/TabPage.h"

#include "PrintDialog/Gtk/Guarded.h"
#include "PrintDialog/Gtk/Widgets.h"

#include <utility>

namespace orvan {
namespace {

constexpr int kBorder = 12; // pixels, as in GTK's own tabs
// Frames that the tab waits for the dialog's size: on a very small screen the dialog never gets it.
constexpr int kMostTicks = 60;

void onMap(GtkWidget*, std::function<void()>* shown) {
    guarded([shown] { (*shown)(); });
}

} // namespace

TabPage::TabPage(GtkPrintUnixDialog* dialog, std::function<void()> shown)
    : dialog_(dialog), shown_(std::move(shown)) {}

TabPage::~TabPage() {
    stopWaiting();
}

void TabPage::ensureWidgets() {
    if (page_ != nullptr) return;
    page_ = GTK_BOX(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0));
    setBorder(page_, kBorder);
    name_ = GTK_LABEL(gtk_label_new(nullptr));
    mapConnection_ = std::make_unique<SignalConnection>(page_, "map", G_CALLBACK(onMap), &shown_);
    gtk_print_unix_dialog_add_custom_tab(dialog_, GTK_WIDGET(page_), GTK_WIDGET(name_)); // and shows it
    gtk_widget_set_visible(GTK_WIDGET(page_), FALSE);
}

void TabPage::appear(const std::string& name, const std::shared_ptr<platform::View>& view) {
    ensureWidgets();
    gtk_label_set_text(name_, name.c_str());
    mirror_ = mirrorOf(view);
    append(page_, mirror_->widget(), true);
    mirror_->refresh();
    showWhenSettled();
}

// The dialog has as many tabs in sight as fit into what it is wide without this one.
void TabPage::keepDialogsWidth() {
    GtkWidget* const tabs = gtk_widget_get_ancestor(GTK_WIDGET(page_), GTK_TYPE_NOTEBOOK);
    if (tabs == nullptr || gtk_notebook_get_scrollable(GTK_NOTEBOOK(tabs)) != FALSE) return;
    const int before = leastWidth(tabs);
    gtk_widget_set_visible(GTK_WIDGET(page_), TRUE);
    if (leastWidth(tabs) <= before) return;
    gtk_notebook_set_scrollable(GTK_NOTEBOOK(tabs), TRUE);
    gtk_widget_set_size_request(tabs, before, -1);
}

void TabPage::showWhenSettled() {
    stopWaiting();
    ticks_ = 0;
    const auto onTick = [](GtkWidget* dialog, GdkFrameClock*, gpointer data) -> gboolean {
        auto* const self = static_cast<TabPage*>(data);
        if (++self->ticks_ < kMostTicks && !hasItsSize(dialog)) return G_SOURCE_CONTINUE;
        self->tick_ = 0;
        self->keepDialogsWidth();
        gtk_widget_set_visible(GTK_WIDGET(self->page_), TRUE);
        return G_SOURCE_REMOVE;
    };
    tick_ = gtk_widget_add_tick_callback(GTK_WIDGET(dialog_), onTick, this, nullptr);
}

void TabPage::stopWaiting() {
    if (const guint tick = std::exchange(tick_, 0); tick != 0)
        gtk_widget_remove_tick_callback(GTK_WIDGET(dialog_), tick);
}

void TabPage::disappear() {
    stopWaiting();
    const auto mirror = std::move(mirror_);
    // A dialog that ends takes its widgets with it.
    if (page_ == nullptr || gtk_widget_in_destruction(GTK_WIDGET(dialog_)) != FALSE) return;
    gtk_widget_set_visible(GTK_WIDGET(page_), FALSE);
    if (mirror != nullptr) removeFrom(page_, mirror->widget());
}

bool TabPage::isInFront() const {
    return page_ != nullptr && gtk_widget_get_mapped(GTK_WIDGET(page_)) != FALSE;
}

bool TabPage::isIn(GtkWidget* widget) const {
    return page_ != nullptr && gtk_widget_is_ancestor(widget, GTK_WIDGET(page_)) != FALSE;
}

} // namespace orvan
