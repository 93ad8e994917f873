#include "Platform/View.h"

namespace platform {

View* View::viewWithTag(std::int64_t tag) {
    if (tag_ == tag) return this;
    for (const std::shared_ptr<View>& child : subviews_)
        if (View* found = child->viewWithTag(tag)) return found;
    return nullptr;
}

void PopUpButton::removeAllItems() {
    items_.clear();
    selected_ = -1;
}

const MenuItem* PopUpButton::itemAtIndex(std::int64_t index) const {
    if (index < 0 || static_cast<std::uint64_t>(index) >= items_.size()) return nullptr;
    return &items_[static_cast<std::size_t>(index)];
}

void PopUpButton::selectItemAtIndex(std::int64_t index) {
    if (itemAtIndex(index) != nullptr) selected_ = index;
}

bool PopUpButton::pick(std::int64_t index) {
    const MenuItem* item = itemAtIndex(index);
    if (!enabled_ || isHidden() || item == nullptr || !item->enabled) return false;
    selected_ = index;
    // The action may replace the action (or end the panel that set it), so it runs on a copy.
    if (const Action action = action_) action(*this);
    return true;
}

} // namespace platform
