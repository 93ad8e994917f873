// A panel's view as GTK widgets.
#pragma once

#include "Platform/View.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <vector>

namespace orvan {

// Mirrors the labels and pop-ups of a view, which it borrows, and carries a person's picks to it. The rows
// and columns are those of the view's frames, the distances those of the theme and the font, so that nothing
// is clipped. Made after the panel was shown: the places of the controls are taken once. GTK's thread.
class PanelMirror {
public:
    // `picked` is told after the view has been told of a pick.
    PanelMirror(platform::View& root, std::function<void()> picked);
    ~PanelMirror();
    PanelMirror(const PanelMirror&) = delete;
    PanelMirror& operator=(const PanelMirror&) = delete;

    // Owned by whichever container it is put into.
    GtkWidget* widget() const { return grid_; }

    // Brings texts, items, selections and states up to date with the view.
    void refresh();

private:
    struct LabelMirror;
    struct PopUpMirror;
    void add(platform::TextField& label, int column, int row);
    void add(platform::PopUpButton& popUp, int column, int row);

    std::function<void()> picked_;
    GtkWidget* grid_;
    std::vector<std::unique_ptr<LabelMirror>> labels_;
    std::vector<std::unique_ptr<PopUpMirror>> popUps_;
};

} // namespace orvan
