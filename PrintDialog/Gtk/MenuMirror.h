// A menu as a GTK control, of a kind that the toolkit's room decides.
#pragma once

#include "PrintDialog/Gtk/ViewMirror.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace orvan {

// What a menu is shown by. The widget is owned by its container.
class MenuControl {
public:
    virtual ~MenuControl() = default;
    virtual GtkWidget* widget() const = 0;
    virtual void show(
        const std::vector<platform::MenuEntry>& entries, std::optional<std::size_t> selected) = 0;
    virtual bool isOpen() const = 0;
    // Whether it can show the menu as it is now; otherwise another control is to take its place.
    virtual bool suits(const platform::Menu& menu) const = 0;
};

// The control that suits the menu, which must outlive it. Gtk3/MenuControls.cpp or Gtk4/DropDown.cpp.
std::unique_ptr<MenuControl> makeMenuControl(platform::Menu& menu);

class MenuMirror final : public ViewMirror {
public:
    explicit MenuMirror(const std::shared_ptr<platform::Menu>& menu);

    bool isOpen() const override { return control_->isOpen(); }
    GtkWidget* control() const override { return control_->widget(); }

private:
    void update() override;

    platform::Menu& menu_;
    std::unique_ptr<MenuControl> control_;
};

} // namespace orvan
