#include "PrintDialog/Host/TabText.h"

#include "Formats/OneLine.h"
#include "Platform/Controls.h"

#include <algorithm>
#include <cstddef>

namespace orvan {
namespace {

std::string menuText(const platform::Menu& menu) {
    std::string text = platform::onOneLine(menu.title().text);
    if (!menu.isEnabled()) return text + " (not available)";
    const platform::MenuEntry* const selected = menu.selectedEntry();
    const auto lines = std::ranges::count(menu.entries(), true, &platform::MenuEntry::isLine);
    return text.append(" [")
        .append(selected != nullptr ? platform::onOneLine(selected->title) : "")
        .append("]  of ")
        .append(std::to_string(menu.entries().size() - static_cast<std::size_t>(lines)));
}

void append(const platform::View& view, const std::string& indent, std::string& text) {
    const auto line = [&](const std::string& words) { text.append(indent).append(words).append("\n"); };
    if (view.isHidden()) return;
    if (const auto* field = dynamic_cast<const platform::TextField*>(&view))
        return line(platform::onOneLine(field->stringValue()));
    if (const auto* level = dynamic_cast<const platform::LevelIndicator*>(&view))
        return line(platform::onOneLine(level->stringValue()));
    if (const auto* button = dynamic_cast<const platform::Button*>(&view))
        return line("<" + button->title().text + ">");
    if (const auto* entry = dynamic_cast<const platform::TextEntry*>(&view))
        return line("[" + platform::onOneLine(entry->stringValue()) + "]");
    if (const auto* menu = dynamic_cast<const platform::Menu*>(&view)) return line(menuText(*menu));
    if (const auto* form = dynamic_cast<const platform::Form*>(&view)) {
        for (const auto& row : form->menus())
            append(*row, indent, text);
        return;
    }
    const auto* const disclosure = dynamic_cast<const platform::Disclosure*>(&view);
    if (disclosure != nullptr) line(disclosure->title().text);
    for (const auto& child : view.subviews())
        append(*child, disclosure != nullptr ? indent + "  " : indent, text);
}

} // namespace

std::string tabText(const platform::View& view) {
    std::string text;
    append(view, "", text);
    return text;
}

} // namespace orvan
