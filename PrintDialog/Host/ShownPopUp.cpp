#include "PrintDialog/Host/ShownPopUp.h"

#include "PrintDialog/Host/HostText.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace orvan {

namespace {

void putNamedFirst(ShownPopUp& shown, const std::string& option, const DialogPPD& ppd) {
    if (option.empty()) return;
    const auto isNamed = [&](const ShownItem& item) {
        return !item.keyword.empty() && ppd.isRenamed(option, item.keyword);
    };
    const std::int64_t selected =
        shown.selected >= 0 ? shown.items[static_cast<std::size_t>(shown.selected)].place : -1;
    const auto others = std::stable_partition(shown.items.begin(), shown.items.end(), isNamed);
    if (others == shown.items.begin() || others == shown.items.end()) return;
    ShownItem line;
    line.isLine = true;
    line.enabled = false;
    shown.items.insert(others, std::move(line));
    if (selected < 0) return;
    const auto now = std::ranges::find(shown.items, selected, &ShownItem::place);
    shown.selected = now - shown.items.begin();
}

} // namespace

ShownPopUp shownPopUp(const platform::PopUpButton& popUp, const DialogPPD& ppd) {
    ShownPopUp shown;
    const std::string& option = popUp.optionKeyword();
    const std::string marked = option.empty() ? std::string() : ppd.choiceOf(option);
    std::set<std::string_view> keywords;
    std::int64_t place = -1;
    shown.items.reserve(popUp.items().size() + 1);
    for (const platform::MenuItem& item : popUp.items()) {
        ++place;
        if (!item.keyword.empty() && !keywords.insert(item.keyword).second) continue;
        const bool isKnown = option.empty() || item.keyword.empty() || ppd.isInFile(option, item.keyword);
        const bool isMarked = marked.empty() ? place == popUp.indexOfSelectedItem() : item.keyword == marked;
        if (isMarked) shown.selected = static_cast<std::int64_t>(shown.items.size());
        shown.items.push_back(
            {isKnown ? item.title
                     : hostText(ppd.language(), "%1 (not known to this queue\u2019s driver)", {item.title}),
                item.keyword, item.enabled, place});
    }
    putNamedFirst(shown, option, ppd);
    if (marked.empty() || shown.selected >= 0 || popUp.items().empty()) return shown;
    shown.selected = static_cast<std::int64_t>(shown.items.size());
    shown.items.push_back(
        {hostText(ppd.language(), "%1 (not in the printer\u2019s list)", {ppd.choiceTitle(option, marked)}),
            marked, true, -1});
    return shown;
}

} // namespace orvan
