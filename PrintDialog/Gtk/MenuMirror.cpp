#include "PrintDialog/Gtk/MenuMirror.h"

#include "PrintDialog/Gtk/Widgets.h"

namespace orvan {

MenuMirror::MenuMirror(const std::shared_ptr<platform::Menu>& menu)
    : ViewMirror(menu, gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0)), menu_(*menu) {}

void MenuMirror::update() {
    if (control_ == nullptr || !control_->suits(menu_)) {
        if (control_ != nullptr) removeFrom(GTK_BOX(widget()), control_->widget());
        control_ = makeMenuControl(menu_);
        append(GTK_BOX(widget()), control_->widget(), true);
    }
    control_->show(menu_.entries(), menu_.selected());
    gtk_widget_set_sensitive(control_->widget(), menu_.isEnabled() ? TRUE : FALSE);
}

} // namespace orvan
