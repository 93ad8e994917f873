// A tab of a print dialog that mirrors a tree of views.
#pragma once

#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Gtk/ViewMirror.h"

#include <gtk/gtkunixprint.h>

#include <functional>
#include <memory>
#include <string>

namespace orvan {

// GTK's tabs cannot be taken out of a dialog, so this one stays and is hidden while there is nothing to show.
// The dialog is no larger with it than without; what does not fit is scrolled to. Owned by whoever attaches
// to the dialog; the widgets belong to the dialog. GTK's thread.
class TabPage {
public:
    // `shown` is told each time the tab comes to the front.
    TabPage(GtkPrintUnixDialog* dialog, std::function<void()> shown);
    ~TabPage();
    TabPage(const TabPage&) = delete;
    TabPage& operator=(const TabPage&) = delete;

    // Shows the tab under the name, with the view. It comes as soon as the dialog has the size that it asked
    // for: a dialog that changes while it is still being resized is drawn too small once, and GTK complains.
    void appear(const std::string& name, const std::shared_ptr<platform::View>& view);
    // Hides the tab and lets go of the view's mirror.
    void disappear();
    bool isInFront() const;
    bool isIn(GtkWidget* widget) const;

    // Null while there is nothing to show.
    ViewMirror* mirror() const { return mirror_.get(); }

private:
    void ensureWidgets();
    void keepDialogsWidth();
    void showWhenSettled();
    void stopWaiting();

    GtkPrintUnixDialog* dialog_;
    std::function<void()> shown_;
    GtkBox* page_ = nullptr; // the dialog's, null until the tab first appears
    GtkLabel* name_ = nullptr;
    std::unique_ptr<ViewMirror> mirror_;
    std::unique_ptr<SignalConnection> mapConnection_;
    guint tick_ = 0; // while it waits for the dialog's size
    int ticks_ = 0;  // how many frames it has waited
};

} // namespace orvan
