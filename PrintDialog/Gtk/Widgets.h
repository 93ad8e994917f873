// What GTK 3 and GTK 4 do differently with the same widgets. One of the rooms Gtk3 and Gtk4 stands behind it;
// all else in this room is the same for both and is compiled for each.
#pragma once

#include "PrintDialog/Gtk/GObjectRef.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvan {

// All children, the toolkit's own among them.
void forEachChild(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit);

// Puts the child, visible, behind the box's others. One that grows takes the room that is left.
void append(GtkBox* box, GtkWidget* child, bool grows);
// Takes a child out of its box and ends it, and ends all of a box.
void removeFrom(GtkBox* box, GtkWidget* child);
void clear(GtkBox* box);
// A line of a form, visible.
void attachRow(GtkGrid* grid, GtkWidget* label, GtkWidget* control, int row);
// Assistive technology has the lines of a grid in the order in which they were attached, or the other way
// round.
extern const bool kReadsFirstAttachedFirst;

// Around the content, without the keyboard; the controls in it have that.
GtkWidget* makeScroller(GtkWidget* content);
void setContent(GtkExpander* expander, GtkWidget* content);
// On all four sides.
void setBorder(GtkBox* box, int pixels);
// Whether the widget's window has as much room as it asks for, and the width that the widget needs, pixels.
bool hasItsSize(GtkWidget* window);
int leastWidth(GtkWidget* widget);

// Breaks the label's text into at most so many lines.
void breakLines(GtkLabel* label, int lines);

std::string textOf(GtkEntry* entry);
void setText(GtkEntry* entry, const std::string& text);
// Calls the function instead of the entry's own doing when a person presses Escape in it.
void onEscape(GtkEntry* entry, std::function<void()> pressed);

// For assistive technology: its name, what is labelled by what, and a text that it reads by itself when it
// changes.
void setAccessibleName(GtkWidget* widget, const std::string& name);
void labelFor(GtkLabel* label, GtkWidget* control);
GtkLabel* makeStatusLabel();
void announce(GtkWidget* widget, const std::string& text);

// A style sheet for this widget and its parts alone.
void addStyle(GtkWidget* widget, const std::string& sheet);

// Whether a button of the pointer is held over the dialog.
bool isButtonHeld(GtkWidget* dialog);

} // namespace orvan
