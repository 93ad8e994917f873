// A panel's view as GTK widgets.
#pragma once

#include "Platform/View.h"
#include "PrintDialog/Host/ShownPopUp.h"

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
    // `shown` says what a pop-up shows. `picked` is told after the view has been told of a pick, also of the
    // item that was shown already.
    using Shown = std::function<ShownPopUp(const platform::PopUpButton&)>;
    PanelMirror(platform::View& root, Shown shown, std::function<void()> picked);
    ~PanelMirror();
    PanelMirror(const PanelMirror&) = delete;
    PanelMirror& operator=(const PanelMirror&) = delete;

    // Owned by whichever container it is put into.
    GtkWidget* widget() const { return grid_; }

    // Whether a person is about to pick: a menu is open.
    bool isMenuOpen() const;
    // The option of the pop-up that has the keyboard; "" for none. And the other way round.
    std::string focusedOption() const;
    void focus(const std::string& option);

    // Brings texts, items, selections and states up to date with the view.
    void refresh();

private:
    struct LabelMirror;
    struct PopUpMirror;
    void add(platform::TextField& label, int column, int row);
    void add(platform::PopUpButton& popUp, int column, int row);

    Shown shown_;
    std::function<void()> picked_;
    GtkWidget* grid_;
    std::vector<std::unique_ptr<LabelMirror>> labels_;
    std::vector<std::unique_ptr<PopUpMirror>> popUps_;
};

} // namespace orvan
