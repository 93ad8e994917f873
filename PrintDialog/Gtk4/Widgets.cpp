#include "PrintDialog/Gtk/Widgets.h"

#include "PrintDialog/Gtk/Guarded.h"

#include <dlfcn.h>

#include <utility>

namespace orvan {
namespace {

constexpr int kMediumPriority = 1; // GTK_ACCESSIBLE_ANNOUNCEMENT_PRIORITY_MEDIUM

void addProvider(GtkWidget* widget, GtkStyleProvider* provider) {
    gtk_style_context_add_provider(
        gtk_widget_get_style_context(widget), provider, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    forEachChild(widget, [provider](GtkWidget* part) { addProvider(part, provider); });
}

} // namespace

void forEachChild(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit) {
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child))
        visit(child);
}

void append(GtkBox* box, GtkWidget* child, bool grows) {
    if (grows)
        gtk_orientable_get_orientation(GTK_ORIENTABLE(box)) == GTK_ORIENTATION_HORIZONTAL
            ? gtk_widget_set_hexpand(child, TRUE)
            : gtk_widget_set_vexpand(child, TRUE);
    gtk_box_append(box, child);
}

// The child lives until the main loop comes round: it may be what a person has just used.
void removeFrom(GtkBox* box, GtkWidget* child) {
    g_idle_add_once(g_object_unref, g_object_ref(child));
    gtk_box_remove(box, child);
}

void clear(GtkBox* box) {
    while (GtkWidget* const child = gtk_widget_get_first_child(GTK_WIDGET(box)))
        removeFrom(box, child);
}

const bool kReadsFirstAttachedFirst = true;

void attachRow(GtkGrid* grid, GtkWidget* label, GtkWidget* control, int row) {
    gtk_grid_attach(grid, label, 0, row, 1, 1);
    gtk_grid_attach(grid, control, 1, row, 1, 1);
}

GtkWidget* makeScroller(GtkWidget* content) {
    GtkWidget* const scroller = gtk_scrolled_window_new();
    gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller), content);
    return scroller;
}

void setContent(GtkExpander* expander, GtkWidget* content) {
    gtk_expander_set_child(expander, content);
}

void setBorder(GtkBox* box, int pixels) {
    gtk_widget_set_margin_start(GTK_WIDGET(box), pixels);
    gtk_widget_set_margin_end(GTK_WIDGET(box), pixels);
    gtk_widget_set_margin_top(GTK_WIDGET(box), pixels);
    gtk_widget_set_margin_bottom(GTK_WIDGET(box), pixels);
}

bool hasItsSize(GtkWidget* window) {
    GtkRequisition minimum{};
    gtk_widget_get_preferred_size(window, &minimum, nullptr);
    return gtk_widget_get_width(window) >= minimum.width && gtk_widget_get_height(window) >= minimum.height;
}

int leastWidth(GtkWidget* widget) {
    int least = 0;
    gtk_widget_measure(widget, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
    return least;
}

void breakLines(GtkLabel* label, int lines) {
    gtk_label_set_wrap(label, TRUE);
    gtk_label_set_lines(label, lines);
}

std::string textOf(GtkEntry* entry) {
    return gtk_editable_get_text(GTK_EDITABLE(entry));
}

void setText(GtkEntry* entry, const std::string& text) {
    gtk_editable_set_text(GTK_EDITABLE(entry), text.c_str());
}

// Before the entry's own text sees the key.
void onEscape(GtkEntry* entry, std::function<void()> pressed) {
    using Pressed = std::function<void()>;
    const auto onKey = [](GtkEventControllerKey*, guint key, guint, GdkModifierType,
                           const Pressed* function) -> gboolean {
        if (key != GDK_KEY_Escape) return FALSE;
        guarded([function] { (*function)(); });
        return TRUE;
    };
    const auto end = [](gpointer data, GClosure*) { delete static_cast<Pressed*>(data); };
    GtkEventController* const keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect_data(keys, "key-pressed", G_CALLBACK(+onKey), new Pressed(std::move(pressed)), end,
        static_cast<GConnectFlags>(0));
    gtk_widget_add_controller(GTK_WIDGET(entry), keys);
}

void setAccessibleName(GtkWidget* widget, const std::string& name) {
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, name.c_str(), -1);
}

void labelFor(GtkLabel* label, GtkWidget* control) {
    gtk_label_set_mnemonic_widget(label, control);
    gtk_accessible_update_relation(
        GTK_ACCESSIBLE(control), GTK_ACCESSIBLE_RELATION_LABELLED_BY, label, nullptr, -1);
}

GtkLabel* makeStatusLabel() {
    return GTK_LABEL(g_object_new(GTK_TYPE_LABEL, "accessible-role", GTK_ACCESSIBLE_ROLE_STATUS, nullptr));
}

// Since GTK 4.14.
void announce(GtkWidget* widget, const std::string& text) {
    using Announce = void (*)(GtkAccessible*, const char*, int);
    static const auto function = reinterpret_cast<Announce>(dlsym(RTLD_DEFAULT, "gtk_accessible_announce"));
    if (function != nullptr) function(GTK_ACCESSIBLE(widget), text.c_str(), kMediumPriority);
}

// A widget's style does not reach its parts, which are widgets themselves.
void addStyle(GtkWidget* widget, const std::string& sheet) {
    const GObjectRef<GtkCssProvider> provider(gtk_css_provider_new());
    gtk_css_provider_load_from_data(provider.get(), sheet.c_str(), -1);
    addProvider(widget, GTK_STYLE_PROVIDER(provider.get()));
}

bool isButtonHeld(GtkWidget* dialog) {
    GdkSurface* const surface = gtk_native_get_surface(GTK_NATIVE(dialog));
    if (surface == nullptr) return false;
    GdkSeat* const seat = gdk_display_get_default_seat(gdk_surface_get_display(surface));
    GdkDevice* const pointer = seat != nullptr ? gdk_seat_get_pointer(seat) : nullptr;
    GdkModifierType held{};
    if (pointer == nullptr ||
        gdk_surface_get_device_position(surface, pointer, nullptr, nullptr, &held) == FALSE)
        return false;
    return (held & (GDK_BUTTON1_MASK | GDK_BUTTON2_MASK | GDK_BUTTON3_MASK)) != 0;
}

} // namespace orvan
