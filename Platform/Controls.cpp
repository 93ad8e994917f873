#include "Platform/Controls.h"

namespace platform {
namespace {

// Behind the text, but before what a title ends with.
std::string withLetterBehind(const std::string& text, const std::string& letter) {
    const bool hasColon = text.ends_with(':');
    const std::string title = hasColon ? text.substr(0, text.size() - 1) : text;
    std::string whole = title;
    whole.append(" (").append(letter).append(hasColon ? "):" : ")");
    return whole;
}

std::string doubled(const std::string& text, char marker) {
    std::string whole;
    for (const char character : text)
        whole.append(character == marker ? 2 : 1, character);
    return whole;
}

} // namespace

std::string ControlTitle::withMarker(char marker) const {
    if (letter == 0) return doubled(text, marker);
    if (place) return doubled(text.substr(0, *place), marker) + marker + doubled(text.substr(*place), marker);
    const auto upper = static_cast<char>(letter - 'a' + 'A');
    return withLetterBehind(doubled(text, marker), {marker, upper});
}

bool Button::press() {
    if (isHidden()) return false;
    if (const auto action = action_) action();
    return true;
}

void TextEntry::edit(std::string text) {
    stringValue_ = std::move(text);
    if (const auto action = actions_.edited) action();
}

void TextEntry::end() {
    if (const auto action = actions_.ended) action();
}

void TextEntry::leave() {
    if (const auto action = actions_.left) action();
}

void Disclosure::toggle() {
    unfolded_ = !unfolded_;
    if (const auto action = action_) action(*this);
}

const MenuEntry* Menu::selectedEntry() const {
    return selected_ ? &entries_[*selected_] : nullptr;
}

void Menu::setEntries(std::vector<MenuEntry> entries, std::optional<std::size_t> selected) {
    entries_ = std::move(entries);
    selected_ = selected && *selected < entries_.size() ? selected : std::nullopt;
}

bool Menu::pick(std::size_t index) {
    if (!enabled_ || isHidden() || index >= entries_.size() || !entries_[index].enabled) return false;
    // The action may end this menu, so it runs on a copy.
    if (const Action action = action_) action(index);
    return true;
}

Form::Form(std::shared_ptr<View> content, std::vector<std::shared_ptr<Menu>> menus)
    : menus_(std::move(menus)) {
    addSubview(std::move(content));
}

} // namespace platform
