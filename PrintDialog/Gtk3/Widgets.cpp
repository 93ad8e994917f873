#include "PrintDialog/Gtk/Widgets.h"

#include "PrintDialog/Gtk/Guarded.h"

#include <utility>

namespace orvan {
namespace {

constexpr int kPolite = 1; // ATK_LIVE_POLITE

} // namespace

void forEachChild(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit) {
    if (!GTK_IS_CONTAINER(widget)) return;
    const auto call = [](GtkWidget* child, gpointer data) {
        (*static_cast<const std::function<void(GtkWidget*)>*>(data))(child);
    };
    gtk_container_forall(GTK_CONTAINER(widget), call, const_cast<std::function<void(GtkWidget*)>*>(&visit));
}

void append(GtkBox* box, GtkWidget* child, bool grows) {
    gtk_box_pack_start(box, child, grows ? TRUE : FALSE, TRUE, 0);
    gtk_widget_show(child);
}

void removeFrom(GtkBox*, GtkWidget* child) {
    gtk_widget_destroy(child);
}

void clear(GtkBox* box) {
    const auto end = [](GtkWidget* child, gpointer) { gtk_widget_destroy(child); };
    gtk_container_foreach(GTK_CONTAINER(box), end, nullptr);
}

const bool kReadsFirstAttachedFirst = false;

void attachRow(GtkGrid* grid, GtkWidget* label, GtkWidget* control, int row) {
    gtk_grid_attach(grid, control, 1, row, 1, 1);
    gtk_grid_attach(grid, label, 0, row, 1, 1);
    gtk_widget_show(control);
    gtk_widget_show(label);
}

GtkWidget* makeScroller(GtkWidget* content) {
    GtkWidget* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
    gtk_widget_set_can_focus(scroller, FALSE);
    gtk_container_add(GTK_CONTAINER(scroller), content);
    gtk_widget_show(content);
    return scroller;
}

void setContent(GtkExpander* expander, GtkWidget* content) {
    gtk_container_add(GTK_CONTAINER(expander), content);
}

void setBorder(GtkBox* box, int pixels) {
    gtk_container_set_border_width(GTK_CONTAINER(box), static_cast<guint>(pixels));
}

bool hasItsSize(GtkWidget* window) {
    GtkRequisition minimum{};
    gtk_widget_get_preferred_size(window, &minimum, nullptr);
    return gtk_widget_get_allocated_width(window) >= minimum.width &&
           gtk_widget_get_allocated_height(window) >= minimum.height;
}

int leastWidth(GtkWidget* widget) {
    int least = 0;
    gtk_widget_get_preferred_width(widget, &least, nullptr);
    return least;
}

void breakLines(GtkLabel* label, int lines) {
    gtk_label_set_line_wrap(label, TRUE);
    gtk_label_set_lines(label, lines);
}

std::string textOf(GtkEntry* entry) {
    return gtk_entry_get_text(entry);
}

void setText(GtkEntry* entry, const std::string& text) {
    gtk_entry_set_text(entry, text.c_str());
}

void onEscape(GtkEntry* entry, std::function<void()> pressed) {
    using Pressed = std::function<void()>;
    const auto onKey = [](GtkWidget*, const GdkEventKey* event, const Pressed* function) -> gboolean {
        if (event->keyval != GDK_KEY_Escape) return FALSE;
        guarded([function] { (*function)(); });
        return TRUE;
    };
    const auto end = [](gpointer data, GClosure*) { delete static_cast<Pressed*>(data); };
    g_signal_connect_data(entry, "key-press-event", G_CALLBACK(+onKey), new Pressed(std::move(pressed)), end,
        static_cast<GConnectFlags>(0));
}

void setAccessibleName(GtkWidget* widget, const std::string& name) {
    atk_object_set_name(gtk_widget_get_accessible(widget), name.c_str());
}

// GTK 3 tells it by itself.
void labelFor(GtkLabel* label, GtkWidget* control) {
    gtk_label_set_mnemonic_widget(label, control);
}

GtkLabel* makeStatusLabel() {
    GtkWidget* const label = gtk_label_new(nullptr);
    atk_object_set_role(gtk_widget_get_accessible(label), ATK_ROLE_STATUSBAR);
    return GTK_LABEL(label);
}

void announce(GtkWidget* widget, const std::string& text) {
    AtkObject* const object = gtk_widget_get_accessible(widget);
    if (g_signal_lookup("notification", G_OBJECT_TYPE(object)) != 0) // since ATK 2.50
        g_signal_emit_by_name(object, "notification", text.c_str(), kPolite);
}

void addStyle(GtkWidget* widget, const std::string& sheet) {
    const GObjectRef<GtkCssProvider> provider(gtk_css_provider_new());
    gtk_css_provider_load_from_data(provider.get(), sheet.c_str(), -1, nullptr);
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider.get()),
        GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

bool isButtonHeld(GtkWidget* dialog) {
    GdkWindow* const window = gtk_widget_get_window(dialog);
    if (window == nullptr) return false;
    GdkSeat* const seat = gdk_display_get_default_seat(gdk_window_get_display(window));
    GdkDevice* const pointer = seat != nullptr ? gdk_seat_get_pointer(seat) : nullptr;
    if (pointer == nullptr) return false;
    GdkModifierType held{};
    gdk_window_get_device_position(window, pointer, nullptr, nullptr, &held);
    return (held & (GDK_BUTTON1_MASK | GDK_BUTTON2_MASK | GDK_BUTTON3_MASK)) != 0;
}

} // namespace orvan
