// A tree of views as GTK widgets.
#pragma once

#include "Platform/Controls.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>

namespace orvan {

// One view's widget, and those of the views below it. The widget is owned by whichever container it is put
// into and may go before the mirror is told; the mirror keeps the view. GTK's thread.
class ViewMirror {
public:
    virtual ~ViewMirror() = default;
    ViewMirror(const ViewMirror&) = delete;
    ViewMirror& operator=(const ViewMirror&) = delete;

    const platform::View& view() const { return *view_; }
    GtkWidget* widget() const { return widget_; }

    // Brings the widget, and those below, up to date with the view. New views get widgets.
    void refresh();
    // Calls the function with this mirror and with all below it.
    virtual void visit(const std::function<void(ViewMirror&)>& function) { function(*this); }
    // Whether a person is about to pick in it: its menu is open.
    virtual bool isOpen() const { return false; }
    // What takes the keyboard; null for a widget that does not.
    virtual GtkWidget* control() const { return nullptr; }

protected:
    ViewMirror(std::shared_ptr<platform::View> view, GtkWidget* widget)
        : view_(std::move(view)), widget_(widget) {}
    virtual void update() = 0;

private:
    std::shared_ptr<platform::View> view_;
    GtkWidget* widget_;
};

// The mirror of a view; null for a kind that is not shown.
std::unique_ptr<ViewMirror> mirrorOf(const std::shared_ptr<platform::View>& view);

} // namespace orvan
