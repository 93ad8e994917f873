#include "Orvan/StatusReport.h"

#include "Common/TicketVocabulary.h"
#include "Formats/OneLine.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/Terminal.h"
#include "Orvan/Wrapping.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

using platform::PropertyList;

constexpr std::int64_t kFullBar = 100;
constexpr std::size_t kBarWidth = 20;
constexpr std::size_t kNameWidth = 14; // at least

std::string text(const PropertyList& record, std::string_view key) {
    const std::string* const string = record.findString(key);
    return string != nullptr ? platform::onOneLine(*string) : "";
}

std::string orElse(const std::string& value, const char* otherwise) {
    return value.empty() ? otherwise : value;
}

// What a level looks like, and how many columns that takes.
struct ShownLevel {
    std::string text;
    std::size_t width = 0;
};

// "[########------------]  40 %" in a color, "40 %" without decoration, or the printer's own word.
ShownLevel shownLevel(const Level& level, bool decorated) {
    if (!level.percent) {
        const std::string word = orElse(level.word, "unknown");
        return {word, columnsOf(word)};
    }
    const std::string figure = std::to_string(*level.percent);
    const std::string aligned = std::string(3 - std::min<std::size_t>(figure.size(), 3), ' ') + figure + " %";
    if (!decorated) return {aligned, aligned.size()};
    const auto filled =
        static_cast<std::size_t>(*level.percent) * kBarWidth / static_cast<std::size_t>(kFullBar);
    const Color color = level.isEmpty() ? Color::red : level.isLow ? Color::yellow : Color::green;
    std::string bar = "[" + colored(std::string(filled, '#'), color, filled > 0);
    bar.append(kBarWidth - filled, '-').append("] ").append(colored(aligned, color, level.isLow));
    return {bar, kBarWidth + 3 + aligned.size()};
}

std::string padded(const std::string& text, std::size_t columns) {
    return text + std::string(columns - std::min(columns, columnsOf(text)), ' ');
}

// The column behind the longest name.
template <class Things>
std::size_t nameColumns(const Things& things) {
    std::size_t columns = kNameWidth;
    for (const auto& thing : things)
        columns = std::max(columns, columnsOf(thing.name) + 2);
    return columns;
}

void writeHeading(const char* heading, bool isEmpty, std::ostream& out) {
    out << heading << '\n' << (isEmpty ? "  (none)\n" : "");
}

void writeTrays(const std::vector<Tray>& trays, bool decorated, std::ostream& out) {
    writeHeading("Trays", trays.empty(), out);
    const std::size_t columns = nameColumns(trays);
    // What follows a level begins in one column.
    const std::size_t levelColumns = decorated ? kBarWidth + 10 : 9;
    for (const Tray& tray : trays) {
        const ShownLevel level = shownLevel(tray.level, decorated);
        out << "  " << padded(orElse(tray.name, "(no name)"), columns) << level.text
            << std::string(level.width < levelColumns ? levelColumns - level.width : 2, ' ')
            << orElse(tray.paper, "paper unknown") << ", " << orElse(tray.size, "size unknown") << '\n';
    }
}

void writeSupplies(const std::vector<Supply>& supplies, bool decorated, std::ostream& out) {
    writeHeading("Supplies", supplies.empty(), out);
    const std::size_t columns = nameColumns(supplies);
    for (const Supply& supply : supplies)
        out << "  " << padded(orElse(supply.name, "(no name)"), columns)
            << shownLevel(supply.level, decorated).text << '\n';
}

void writePaper(const PropertyList& paper, std::ostream& out) {
    out << orElse(text(paper, OVOVGCustomPaperTypeName), "(no name)") << "  type "
        << orElse(text(paper, OVOVGCustomPaperTypeIndex), "unknown") << ", base class "
        << orElse(text(paper, OVOVGCustomPaperTypeBase), "unknown");
}

void writeJob(const PropertyList& job, std::ostream& out) {
    out << orElse(text(job, kJobName), "(no name)") << "  " << text(job, kJobID) << "  "
        << text(job, kSaveContext);
}

void writeColorMode(const PropertyList& mode, std::ostream& out) {
    const PropertyList::Dictionary* const properties = mode.asDictionary();
    if (properties == nullptr || properties->empty()) {
        out << "(nothing said)";
        return;
    }
    const char* separator = "";
    for (const auto& [name, value] : *properties) {
        out << separator << platform::onOneLine(name) << ": " << text(mode, name);
        separator = ", ";
    }
}

void writePermission(const PropertyList& permission, std::ostream& out) {
    struct Meaning {
        std::string_view key;
        const char* sentence;
    };
    static constexpr std::array<Meaning, 2> kMeanings{
        {{kShowColorAccess, "Color access is shown: "}, {kBlackAndWhiteOnly, "Black and white only: "}}};
    const char* separator = "";
    for (const Meaning& meaning : kMeanings)
        if (permission.find(meaning.key) != nullptr)
            out << std::exchange(separator, ", ") << meaning.sentence
                << (text(permission, meaning.key) == "YES" ? "yes" : "no");
    if (*separator == '\0') out << "(nothing said)";
}

struct Section {
    std::string_view key;
    const char* heading;
    void (*write)(const PropertyList& record, std::ostream& out);
};
constexpr std::array<Section, 4> kSections{{
    {OVOVGCustomPaperTypes, "Custom papers", writePaper},
    {kSavedJobs, "Stored jobs", writeJob},
    {kColorModes, "Color modes", writeColorMode},
    {kColorPermissions, "Permissions", writePermission},
}};

// Shown elsewhere on the page.
constexpr std::array<std::string_view, 5> kPageKeys{
    OVCPSSInputTrays, OVCPSSColorantHousing, kToldTrays, kToldSupplies, kToldOtherSupplies};

void writeSection(const Section& section, const PropertyList::List& records, std::ostream& out) {
    writeHeading(section.heading, records.empty(), out);
    for (const PropertyList& record : records) {
        out << "  ";
        section.write(record, out);
        out << '\n';
    }
}

bool isShown(std::string_view key, const PropertyList& value) {
    const bool isOfPage = std::ranges::find(kPageKeys, key) != kPageKeys.end();
    const bool isSection = std::ranges::find(kSections, key, &Section::key) != kSections.end();
    return (isOfPage || isSection) && value.asList() != nullptr;
}

// "3 low" or "3 empty".
std::string stateOf(const std::string& name, const Level& level) {
    return name + (level.isEmpty() ? " empty" : " low");
}

std::string supplyState(const Supply& supply) {
    const std::string name = supply.colorant.empty() ? supply.name : supply.colorant;
    return supply.level.isEmpty() ? name + " empty"
                                  : name + " " + std::to_string(supply.level.percent.value_or(0)) + " %";
}

} // namespace

void writeStatus(
    const std::vector<PropertyList>& responses, const DialogPPD* ppd, bool decorated, std::ostream& out) {
    const PrinterPage page = pageOf(responses, ppd);
    if (page.trays) writeTrays(*page.trays, decorated, out);
    if (page.supplies) writeSupplies(*page.supplies, decorated, out);
    for (const Section& section : kSections)
        for (const PropertyList& response : responses)
            if (const PropertyList* value = response.find(section.key);
                value != nullptr && value->asList() != nullptr)
                writeSection(section, *value->asList(), out);
    for (const PropertyList& response : responses) {
        const PropertyList::Dictionary* const entries = response.asDictionary();
        if (entries == nullptr) {
            out << platform::onOneLine(jsonText(jsonFromPropertyList(response))) << '\n';
            continue;
        }
        for (const auto& [key, value] : *entries) {
            if (isShown(key, value)) continue;
            const std::string shown = platform::onOneLine(jsonText(jsonFromPropertyList(value)));
            if (key == OVSNMPJobAccountingOID)
                out << "Job accounting\n  counts " << shown << '\n';
            else
                out << platform::onOneLine(key) << "\n  " << shown << '\n';
        }
    }
}

std::string summaryOf(const PrinterPage& page) {
    std::string text;
    if (page.trays) {
        text = std::to_string(page.trays->size()) + (page.trays->size() == 1 ? " tray" : " trays");
        for (const Tray& tray : *page.trays)
            if (tray.level.isLow) text.append(", ").append(stateOf(tray.name, tray.level));
    }
    const char* separator = text.empty() ? "" : "; ";
    if (page.supplies)
        for (const Supply& supply : *page.supplies)
            if (supply.level.isLow) text.append(std::exchange(separator, ", ")).append(supplyState(supply));
    return text;
}

} // namespace orvan
