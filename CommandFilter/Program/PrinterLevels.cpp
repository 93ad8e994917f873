#include "CommandFilter/Program/PrinterLevels.h"

#include "CommandFilter/WordTable.h"
#include "Common/ToldLevels.h"

#include <algorithm>

namespace orvan {
namespace {

using platform::PropertyList;

constexpr std::int64_t kUnknownMarkerLevel = -2;
constexpr std::int64_t kFullMarker = 100;

struct Colorant {
    std::string_view name; // for people
    std::string_view color;
};
constexpr std::array<WordRow<Colorant>, 4> kColorants{{
    {OVCPSSCyanColorant, {"Cyan", "#00FFFF"}},
    {OVCPSSMagentaColorant, {"Magenta", "#FF00FF"}},
    {OVCPSSYellowColorant, {"Yellow", "#FFFF00"}},
    {OVCPSSBlackColorant, {"Black", "#000000"}},
}};
constexpr auto kSortedColorants = sortedForLookUp(kColorants);

struct MarkerType {
    std::string_view name; // for people
    std::string_view keyword;
};
constexpr std::array<WordRow<MarkerType>, 2> kMarkerTypes{{
    {OVCPSSTonerColorantType, {" toner", "toner"}},
    {OVCPSSSolidInkColorantType, {" solid ink", "solid-wax"}},
}};
constexpr auto kSortedMarkerTypes = sortedForLookUp(kMarkerTypes);
constexpr MarkerType kOtherMarker{"", "other"};

const PropertyList::List* listIn(const Ticket& ticket, std::string_view key) {
    const auto found = ticket.find(key);
    return found != ticket.end() ? found->second.asList() : nullptr;
}

std::string_view textIn(const PropertyList& record, std::string_view key) {
    const std::string* const text = record.findString(key);
    return text != nullptr ? std::string_view(*text) : std::string_view();
}

std::optional<std::int64_t> levelIn(const PropertyList& record, std::string_view key) {
    const PropertyList* const value = record.find(key);
    return value != nullptr ? value->asInteger() : std::nullopt;
}

MarkerType markerType(const PropertyList& supply) {
    return valueFor(kSortedMarkerTypes, textIn(supply, OVCPSSColorantType)).value_or(kOtherMarker);
}

// A reason that can hold or be over.
struct Reason {
    const char* keyword;
    bool holds = false;
};

void judge(const std::optional<std::int64_t>& level, std::int64_t low, Reason& isLow, Reason& isEmpty) {
    if (!level || *level < 0) return;
    isEmpty.holds = isEmpty.holds || *level == 0;
    isLow.holds = isLow.holds || (*level > 0 && *level <= low);
}

void addWord(std::string& list, std::string_view word) {
    list.append(list.empty() ? "" : ",").append(word);
}

void addReasons(PrinterLevels& levels, std::initializer_list<Reason> reasons) {
    for (const Reason& reason : reasons)
        addWord(reason.holds ? levels.reasonsThatHold : levels.reasonsThatAreOver, reason.keyword);
}

void readTrays(const PropertyList::List& trays, PrinterLevels& levels) {
    Reason low{"media-low-report"};
    Reason empty{"media-empty-warning"};
    for (const PropertyList& tray : trays)
        judge(levelIn(tray, OVCPSSTrayLevel), kLowTray, low, empty);
    addReasons(levels, {low, empty});
}

// A supply's; nothing when its word says none.
std::optional<std::int64_t> supplyLevel(
    const Ticket& ticket, const PropertyList::List& supplies, std::size_t i) {
    const PropertyList::List* const words = listIn(ticket, kToldSupplies);
    if (words != nullptr && i < words->size())
        if (const std::string* status = (*words)[i].findString(kWordStatus)) return levelInWord(*status);
    return levelIn(supplies[i], OVCPSSColorantLevel);
}

void readSupplyReasons(const Ticket& ticket, const PropertyList::List& supplies, PrinterLevels& levels) {
    Reason lowToner{"toner-low-report"};
    Reason noToner{"toner-empty-warning"};
    Reason lowOther{"marker-supply-low-report"};
    Reason noOther{"marker-supply-empty-warning"};
    for (std::size_t i = 0; i < supplies.size(); ++i) {
        const bool isToner = textIn(supplies[i], OVCPSSColorantType) == OVCPSSTonerColorantType;
        judge(supplyLevel(ticket, supplies, i), kLowSupply, isToner ? lowToner : lowOther,
            isToner ? noToner : noOther);
    }
    addReasons(levels, {lowToner, noToner, lowOther, noOther});
}

std::string markerAttributes(const Ticket& ticket, const PropertyList::List& supplies) {
    std::string names;
    std::string types;
    std::string colors;
    std::string levels;
    for (std::size_t i = 0; i < supplies.size(); ++i) {
        const PropertyList& supply = supplies[i];
        const auto colorant = valueFor(kSortedColorants, textIn(supply, OVCPSSColorant));
        if (!colorant) continue;
        const MarkerType type = markerType(supply);
        addWord(names, '"' + std::string(colorant->name).append(type.name) + '"');
        addWord(types, type.keyword);
        addWord(colors, colorant->color);
        const auto level = supplyLevel(ticket, supplies, i);
        addWord(levels,
            std::to_string(!level || *level < 0 ? kUnknownMarkerLevel : std::min(*level, kFullMarker)));
    }
    if (names.empty()) return {};
    return "marker-names='" + names + "' marker-types=" + types + " marker-colors=" + colors +
           " marker-levels=" + levels;
}

} // namespace

PrinterLevels levelsIn(const Ticket& ticket) {
    static const PropertyList::List kNone;
    PrinterLevels levels;
    const PropertyList::List* const trays = listIn(ticket, OVCPSSInputTrays);
    readTrays(trays != nullptr ? *trays : kNone, levels);
    const PropertyList::List* const supplies = listIn(ticket, OVCPSSColorantHousing);
    readSupplyReasons(ticket, supplies != nullptr ? *supplies : kNone, levels);
    levels.attributes = markerAttributes(ticket, supplies != nullptr ? *supplies : kNone);
    return levels;
}

} // namespace orvan
