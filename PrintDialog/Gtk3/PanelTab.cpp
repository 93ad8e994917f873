#include "PrintDialog/Gtk3/PanelTab.h"

#include "PrintDialog/Gtk3/Guarded.h"
#include "PrintDialog/Host/HostText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvan {
namespace {

constexpr float kMiddle = 0.5F;
constexpr int kBorder = 12;   // pixels, as in GTK's own tabs
constexpr int kSpacing = 12;  // pixels, between the line, the rows and the details
constexpr int kMostLines = 3; // of the line; its tooltip has the whole
// The part of the screen's height that the tab may ask for; beyond it the rows scroll.
constexpr double kMostOfScreen = 0.6;
// Frames that the tab waits for the dialog's size: on a very small screen the dialog never gets it.
constexpr int kMostTicks = 60;

GtkLabel* makeTextLabel() {
    auto* const label = GTK_LABEL(gtk_label_new(nullptr));
    gtk_label_set_xalign(label, 0);
    gtk_label_set_yalign(label, 0);
    gtk_label_set_line_wrap(label, TRUE);
    gtk_widget_show(GTK_WIDGET(label));
    return label;
}

int screenHeight(GtkWidget* widget) {
    GdkWindow* const window = gtk_widget_get_window(gtk_widget_get_toplevel(widget));
    if (window == nullptr) return 0;
    GdkRectangle area{};
    gdk_monitor_get_workarea(
        gdk_display_get_monitor_at_window(gdk_window_get_display(window), window), &area);
    return area.height;
}

bool hasItsSize(GtkWidget* widget) {
    GtkRequisition minimum{};
    gtk_widget_get_preferred_size(widget, &minimum, nullptr);
    return gtk_widget_get_allocated_width(widget) >= minimum.width &&
           gtk_widget_get_allocated_height(widget) >= minimum.height;
}

void onMap(GtkWidget*, std::function<void()>* shown) {
    guarded([shown] { (*shown)(); });
}

void onClicked(GtkButton*, std::function<void()>* undo) {
    guarded([undo] { (*undo)(); });
}

} // namespace

PanelTab::PanelTab(GtkPrintUnixDialog* dialog, std::function<void()> shown, std::function<void()> undo)
    : dialog_(dialog), shown_(std::move(shown)), undo_(std::move(undo)) {}

PanelTab::~PanelTab() {
    stopWaiting();
}

void PanelTab::ensureWidgets() {
    if (page_ != nullptr) return;
    page_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    makeLine();
    // On a screen too small for all rows they scroll, below the line.
    scroller_ = GTK_SCROLLED_WINDOW(gtk_scrolled_window_new(nullptr, nullptr));
    gtk_scrolled_window_set_policy(scroller_, GTK_POLICY_AUTOMATIC, GTK_POLICY_AUTOMATIC);
    gtk_scrolled_window_set_propagate_natural_width(scroller_, TRUE);
    gtk_box_pack_start(GTK_BOX(page_), GTK_WIDGET(scroller_), TRUE, TRUE, 0);
    gtk_widget_show(GTK_WIDGET(scroller_));

    content_ = GTK_BOX(gtk_box_new(GTK_ORIENTATION_VERTICAL, kSpacing));
    gtk_container_set_border_width(GTK_CONTAINER(content_), kBorder);
    gtk_widget_show(GTK_WIDGET(content_));
    gtk_container_add(GTK_CONTAINER(scroller_), GTK_WIDGET(content_));

    name_ = GTK_LABEL(gtk_label_new(nullptr));
    mapConnection_ = std::make_unique<SignalConnection>(page_, "map", G_CALLBACK(onMap), &shown_);
    gtk_print_unix_dialog_add_custom_tab(dialog_, page_, GTK_WIDGET(name_)); // and shows it
    gtk_widget_hide(page_);
}

void PanelTab::makeLine() {
    lineBox_ = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kSpacing);
    gtk_widget_set_margin_start(lineBox_, kBorder);
    gtk_widget_set_margin_end(lineBox_, kBorder);
    gtk_widget_set_margin_top(lineBox_, kBorder);
    line_ = makeTextLabel();
    gtk_label_set_lines(line_, kMostLines);
    gtk_label_set_ellipsize(line_, PANGO_ELLIPSIZE_END);
    gtk_label_set_yalign(line_, kMiddle);
    atk_object_set_role(gtk_widget_get_accessible(GTK_WIDGET(line_)), ATK_ROLE_STATUSBAR);
    undoButton_ = gtk_button_new_with_label(hostText("Undo").c_str());
    gtk_widget_set_valign(undoButton_, GTK_ALIGN_CENTER);
    undoConnection_ =
        std::make_unique<SignalConnection>(undoButton_, "clicked", G_CALLBACK(onClicked), &undo_);
    gtk_box_pack_start(GTK_BOX(lineBox_), GTK_WIDGET(line_), TRUE, TRUE, 0);
    gtk_box_pack_start(GTK_BOX(lineBox_), undoButton_, FALSE, FALSE, 0);
    gtk_box_pack_start(GTK_BOX(page_), lineBox_, FALSE, FALSE, 0);
}

void PanelTab::appear(const std::string& name) {
    ensureWidgets();
    gtk_label_set_text(name_, name.c_str());
    setLine("", false);
    showWhenSettled();
}

void PanelTab::showWhenSettled() {
    stopWaiting();
    ticks_ = 0;
    const auto onTick = [](GtkWidget* dialog, GdkFrameClock*, gpointer data) -> gboolean {
        auto* const self = static_cast<PanelTab*>(data);
        if (++self->ticks_ < kMostTicks && !hasItsSize(dialog)) return G_SOURCE_CONTINUE;
        self->tick_ = 0;
        gtk_widget_show(self->page_);
        return G_SOURCE_REMOVE;
    };
    tick_ = gtk_widget_add_tick_callback(GTK_WIDGET(dialog_), onTick, this, nullptr);
}

void PanelTab::stopWaiting() {
    if (const guint tick = std::exchange(tick_, 0); tick != 0)
        gtk_widget_remove_tick_callback(GTK_WIDGET(dialog_), tick);
}

void PanelTab::disappear() {
    stopWaiting();
    if (page_ == nullptr) return;
    gtk_widget_hide(page_);
    dropPanel();
    setDetails(nullptr);
}

void PanelTab::dropPanel() {
    if (mirror_ == nullptr) return;
    gtk_widget_destroy(mirror_->widget());
    mirror_.reset();
}

bool PanelTab::isBusy() const {
    if (mirror_ != nullptr && mirror_->isMenuOpen()) return true;
    GdkWindow* const window = gtk_widget_get_window(GTK_WIDGET(dialog_));
    if (window == nullptr) return false;
    GdkSeat* const seat = gdk_display_get_default_seat(gdk_window_get_display(window));
    GdkModifierType held{};
    gdk_window_get_device_position(window, gdk_seat_get_pointer(seat), nullptr, nullptr, &held);
    return (held & (GDK_BUTTON1_MASK | GDK_BUTTON2_MASK | GDK_BUTTON3_MASK)) != 0;
}

std::string PanelTab::focusedOption() const {
    return mirror_ != nullptr ? mirror_->focusedOption() : std::string();
}

void PanelTab::focus(const std::string& option) {
    if (mirror_ != nullptr) mirror_->focus(option);
}

bool PanelTab::isInFront() const {
    return page_ != nullptr && gtk_widget_get_mapped(page_);
}

void PanelTab::setPanel(platform::View& root, PanelMirror::Shown shown, std::function<void()> picked) {
    mirror_ = std::make_unique<PanelMirror>(root, std::move(shown), std::move(picked));
    gtk_box_pack_start(content_, mirror_->widget(), FALSE, FALSE, 0);
    gtk_box_reorder_child(content_, mirror_->widget(), 0); // above the details
}

void PanelTab::setDetails(platform::Disclosure* details) {
    if (details_ != nullptr) gtk_widget_destroy(details_->widget());
    details_.reset();
    if (details == nullptr || page_ == nullptr) return;
    details_ = std::make_unique<DisclosureMirror>(*details);
    gtk_box_pack_start(content_, details_->widget(), FALSE, FALSE, 0);
    fitHeight();
}

void PanelTab::refresh() {
    if (mirror_ != nullptr) mirror_->refresh();
    if (details_ != nullptr) details_->refresh();
    if (page_ != nullptr) fitHeight();
}

void PanelTab::setLine(const std::string& text, bool offersUndo) {
    if (page_ == nullptr) return;
    gtk_label_set_text(line_, text.c_str());
    gtk_widget_set_tooltip_text(GTK_WIDGET(line_), text.c_str());
    gtk_widget_set_visible(undoButton_, offersUndo ? TRUE : FALSE);
    gtk_widget_set_visible(lineBox_, text.empty() ? FALSE : TRUE);
    fitHeight();
}

void PanelTab::fitHeight() {
    int natural = 0;
    gtk_widget_get_preferred_height(GTK_WIDGET(content_), nullptr, &natural);
    const int most = static_cast<int>(kMostOfScreen * screenHeight(page_));
    gtk_scrolled_window_set_min_content_height(scroller_, std::min(natural, most));
}

} // namespace orvan
