// What a test does with a toolkit's widgets, for each toolkit in its own way: Gtk3/Widgets.cpp,
// Gtk4/Widgets.cpp.
#pragma once

#include <gtk/gtkunixprint.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace orvan::test {

// The environment variable by which an application finds the module, and its value.
std::pair<std::string, std::string> moduleVariable(const std::filesystem::path& module);

bool startToolkit();
void forEachChild(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit);
void closeWindow(GtkWindow* window);
std::pair<int, int> sizeOf(GtkWindow* window);
// How far from another widget's left edge the widget begins.
int leftEdge(GtkWidget* widget, GtkWidget* within);

// Chooses the printer in the dialog's list; false while it is not there.
bool choosePrinter(GtkPrintUnixDialog* dialog, const std::string& queue);

// A pop-up: its entries, the one that it shows (-1 for none), and a pick of another one.
bool isPopUp(GtkWidget* widget);
std::vector<std::string> entriesOf(GtkWidget* popUp);
int shownEntry(GtkWidget* popUp);
void pickEntry(GtkWidget* popUp, int entry);
// A person opens its list and picks the entry that it shows.
void pickTheShown(GtkWidget* popUp);

// What a button says, and a click on it.
std::string titleOf(GtkWidget* button);
void click(GtkWidget* button);
void writeInto(GtkWidget* entry, const std::string& text);

// The widget and all that is in it.
inline void forEach(GtkWidget* widget, const std::function<void(GtkWidget*)>& visit) {
    visit(widget);
    forEachChild(widget, [&visit](GtkWidget* child) { forEach(child, visit); });
}

// Null when there is none.
template <class T>
T* firstOf(GtkWidget* root, const std::function<bool(GtkWidget*)>& is) {
    T* found = nullptr;
    forEach(root, [&](GtkWidget* widget) {
        if (found == nullptr && is(widget)) found = reinterpret_cast<T*>(widget);
    });
    return found;
}

} // namespace orvan::test
