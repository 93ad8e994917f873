#include "PrintDialog/Host/LoadedPaper.h"

#include "Common/TicketVocabulary.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/PrinterPage.h"

#include <algorithm>
#include <utility>

namespace orvan {
namespace {

using platform::PropertyList;

constexpr const char* kInputSlot = "InputSlot";
constexpr const char* kPaper = "MediaType";

bool isOfNow(const StoredAnswer& answer) {
    const auto now = std::chrono::system_clock::now();
    return answer.askedAt && now - *answer.askedAt <= kTraysStayAsTheyAre;
}

// What the printer told just now of its trays and papers; without trays when it did not.
PrinterPage pageOfNow(const std::vector<StoredAnswer>& answers, const DialogPPD& ppd) {
    std::vector<PropertyList> lists;
    for (const StoredAnswer& answer : answers) {
        const bool hasTrays = answer.list && answer.list->find(OVCPSSInputTrays) != nullptr;
        if (answer.list && (!hasTrays || isOfNow(answer))) lists.push_back(*answer.list);
    }
    return pageOf(lists, &ppd);
}

bool isKnown(const Tray& tray) {
    return !tray.mediaType.empty() && !tray.pageSize.empty() && tray.level.percent;
}

std::string contentsOf(const Tray& tray, const std::string& language) {
    return tray.level.isEmpty() ? hostText(language, "%1 is empty", {tray.name})
                                : hostText(language, "%1 holds “%2” %3", {tray.name, tray.paper, tray.size});
}

} // namespace

std::string notLoadedText(
    const std::vector<StoredAnswer>& answers, const DialogPPD& ppd, const std::string& size) {
    const std::string paper = ppd.choiceOf(kPaper);
    if (size.empty() || paper.empty() || ppd.choiceOf(kInputSlot) != ppd.defaultChoiceOf(kInputSlot))
        return {};
    const PrinterPage page = pageOfNow(answers, ppd);
    if (!page.trays || page.trays->empty() || !std::ranges::all_of(*page.trays, isKnown)) return {};
    std::string trays;
    for (const Tray& tray : *page.trays) {
        if (!tray.level.isEmpty() && tray.mediaType == paper && tray.pageSize == size) return {};
        trays.append(trays.empty() ? "" : ", ").append(contentsOf(tray, ppd.language()));
    }
    return hostText(ppd.language(), "No tray holds “%1” in %2; %3.",
        {ppd.choiceTitle(kPaper, paper), ppd.choiceTitle(kPageSizeOption, size), trays});
}

} // namespace orvan
