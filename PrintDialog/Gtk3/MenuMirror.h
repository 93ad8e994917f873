// A menu as a GTK control: a combo box, or where that is too small for the entries a button with a list.
#pragma once

#include "PrintDialog/Gtk3/ViewMirror.h"

#include <memory>
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
};

class MenuMirror final : public ViewMirror {
public:
    explicit MenuMirror(const std::shared_ptr<platform::Menu>& menu);

    bool isOpen() const override { return control_->isOpen(); }
    GtkWidget* control() const override { return control_->widget(); }

private:
    void update() override;

    platform::Menu& menu_;
    std::unique_ptr<MenuControl> control_;
    bool isList_ = false;
    std::vector<platform::MenuEntry> shown_;
};

} // namespace orvan
