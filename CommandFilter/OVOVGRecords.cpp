// Single records of the status document, and its words.
#include "CommandFilter/OVGChildren.h"
#include "CommandFilter/OVGWords.h"
#include "CommandFilter/OVOVGParser.h"
#include "Formats/LeadingInteger.h"

#include <utility>

namespace orvan {
namespace {

constexpr std::string_view kUnspecified = "Unspecified";
constexpr std::int32_t kUnknownLevel = -1;
constexpr std::int32_t kFullSupply = 100;

constexpr auto kSortedTrays = sortedForLookUp(kTrayWords);
constexpr auto kSortedStatus = sortedForLookUp(kStatusWords);
constexpr auto kSortedSupplies = sortedForLookUp(kSupplyWords);
constexpr auto kSortedTypes = sortedForLookUp(kTypeWords);
constexpr auto kSortedSizes = sortedForLookUp(kSizeWords);
constexpr auto kSortedLevels = sortedForLookUp(kTrayLevels);

// Parts of a supply's name; the first that is found counts.
constexpr std::array<WordPair, 4> kColorants{{
    {"Cyan", OVCPSSCyanColorant},
    {"Magenta", OVCPSSMagentaColorant},
    {"Yellow", OVCPSSYellowColorant},
    {"Black", OVCPSSBlackColorant},
}};
constexpr std::array<WordPair, 2> kColorantTypes{{
    {"Toner", OVCPSSTonerColorantType},
    {"Solid Ink", OVCPSSSolidInkColorantType},
}};

template <std::size_t count>
void storeFirstFound(
    Ticket& record, std::string_view key, const std::array<WordPair, count>& words, std::string_view text) {
    for (const WordPair& word : words) {
        if (text.find(word.key) == std::string_view::npos) continue;
        record.insert_or_assign(std::string(key), word.value);
        return;
    }
}

} // namespace

Ticket OVOVGParser::trayForValue(const Element& tray) const {
    Ticket record;
    Ticket media;
    forEachElement(tray, [&](const Element& child) {
        const std::string_view name = child.name();
        const std::string_view text = child.stringValue();
        if (name == "name")
            record.insert_or_assign(std::string(OVCPSSTrayName), keyForTray(text));
        else if (name == "status")
            record.insert_or_assign(std::string(OVCPSSTrayLevel), levelForTrayStatus(text));
        else if (name == "paperSize")
            media.insert_or_assign(std::string(kPageSize), keyForSize(text));
        else if (name == "paperType")
            media.insert_or_assign(std::string(kMediaType), keyForType(text));
    });
    if (!media.empty()) record.insert_or_assign(std::string(OVCPSSMedia), std::move(media));
    return record;
}

std::optional<Ticket> OVOVGParser::supplyForValue(const Element& supply) const {
    Ticket record;
    forEachElement(supply, [&](const Element& child) {
        const std::string_view text = child.stringValue();
        if (child.name() == "name") {
            storeFirstFound(record, OVCPSSColorant, kColorants, text);
            storeFirstFound(record, OVCPSSColorantType, kColorantTypes, text);
        } else if (child.name() == "status") {
            record.insert_or_assign(std::string(OVCPSSColorantLevel),
                text == "OK" ? kFullSupply : platform::leadingInteger(text));
        }
    });
    if (!record.contains(OVCPSSColorant)) return std::nullopt;
    return record;
}

Ticket OVOVGParser::jobForValue(const Element& job) const {
    Ticket record;
    forEachElement(job, [&](const Element& child) {
        if (child.name() == "name") record.insert_or_assign(std::string(kJobName), textOf(child));
        if (child.name() == "id") record.insert_or_assign(std::string(kJobID), textOf(child));
    });
    return record;
}

std::int32_t OVOVGParser::levelForTrayStatus(Text status) const {
    return valueFor(kSortedLevels, status).value_or(kUnknownLevel);
}

std::string_view OVOVGParser::keyForStatus(Text status) const {
    return valueFor(kSortedStatus, status).value_or(kUnspecified);
}

std::string_view OVOVGParser::keyForSize(Text size) const {
    return valueFor(kSortedSizes, size).value_or(kUnspecified);
}

std::string_view OVOVGParser::keyForType(Text type) const {
    return valueFor(kSortedTypes, type).value_or(kUnspecified);
}

std::string_view OVOVGParser::keyForSupply(Text supply) const {
    return valueFor(kSortedSupplies, supply).value_or(kUnspecified);
}

std::string_view OVOVGParser::keyForTray(Text tray) const {
    return valueFor(kSortedTrays, tray).value_or(kUnspecified);
}

} // namespace orvan
