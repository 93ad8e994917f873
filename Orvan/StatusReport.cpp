#include "Orvan/StatusReport.h"

#include "CommandFilter/Program/PrinterLevels.h"
#include "CommandFilter/TicketVocabulary.h"
#include "Formats/OneLine.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/Terminal.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iomanip>
#include <string_view>

namespace orvan {
namespace {

using platform::PropertyList;

constexpr std::int64_t kFull = 100; // levels are per cent; below 0 they are unknown
constexpr std::size_t kBarWidth = 20;
constexpr int kNameWidth = 14;
constexpr std::string_view kCustomType = "CustomType"; // and the paper's number: a PPD choice

using Papers = std::vector<CustomPaper>;

std::string textAsItIs(const PropertyList& record, std::string_view key) {
    const std::string* const string = record.findString(key);
    return string != nullptr ? *string : "";
}

std::string text(const PropertyList& record, std::string_view key) {
    return platform::onOneLine(textAsItIs(record, key));
}

// What the sections are written with.
struct Style {
    Papers papers; // for the names of loaded papers
    bool decorated = false;
};

// What a level looks like, and how many columns that takes.
struct Level {
    std::string text;
    std::size_t width = 0;
};

// "[########------------]  40 %" in a color, "40 %" without decoration, or "unknown".
Level level(const PropertyList& record, std::string_view key, std::int64_t low, const Style& style) {
    static constexpr std::string_view kUnknown = "unknown";
    const PropertyList* const value = record.find(key);
    const auto number = value != nullptr ? value->asInteger() : std::nullopt;
    if (!number || *number < 0) return {std::string(kUnknown), kUnknown.size()};
    const std::int64_t percent = std::min(*number, kFull);
    const std::string figure = std::to_string(percent);
    const std::string aligned = std::string(3 - std::min<std::size_t>(figure.size(), 3), ' ') + figure + " %";
    if (!style.decorated) return {aligned, aligned.size()};
    const auto filled = static_cast<std::size_t>(percent) * kBarWidth / static_cast<std::size_t>(kFull);
    const Color color = percent == 0 ? Color::red : percent <= low ? Color::yellow : Color::green;
    return {"[" + colored(std::string(filled, '#'), color, filled > 0) +
                std::string(kBarWidth - filled, '-') + "] " + colored(aligned, color, percent <= low),
        kBarWidth + 3 + aligned.size()};
}

// What follows a level begins in one column.
std::string padding(const Level& shown, const Style& style) {
    const std::size_t column = style.decorated ? kBarWidth + 10 : 9;
    return std::string(column - std::min(column, shown.width), ' ');
}

std::string orElse(const std::string& value, const char* otherwise) {
    return value.empty() ? otherwise : value;
}

// A custom paper by the name that the printer was given for it.
std::string paperName(const std::string& mediaType, const Papers& papers) {
    if (!mediaType.starts_with(kCustomType)) return mediaType;
    const auto paper = std::ranges::find(papers, mediaType.substr(kCustomType.size()), &CustomPaper::type);
    return paper != papers.end() && !paper->name.empty() ? platform::onOneLine(paper->name) : mediaType;
}

void writeTray(const PropertyList& tray, const Style& style, std::ostream& out) {
    const Level shown = level(tray, OVCPSSTrayLevel, kLowTray, style);
    out << std::left << std::setw(kNameWidth) << orElse(text(tray, OVCPSSTrayName), "(no name)")
        << shown.text;
    if (const PropertyList* media = tray.find(OVCPSSMedia))
        out << padding(shown, style)
            << orElse(paperName(text(*media, kMediaType), style.papers), "paper unknown") << ", "
            << orElse(text(*media, kPageSize), "size unknown");
}

void writeSupply(const PropertyList& supply, const Style& style, std::ostream& out) {
    const std::string type = text(supply, OVCPSSColorantType);
    out << std::left << std::setw(kNameWidth)
        << orElse(text(supply, OVCPSSColorant), "(no name)") + (type.empty() ? "" : " " + type)
        << level(supply, OVCPSSColorantLevel, kLowSupply, style).text;
}

void writePaper(const PropertyList& paper, const Style&, std::ostream& out) {
    out << orElse(text(paper, OVOVGCustomPaperTypeName), "(no name)") << "  type "
        << orElse(text(paper, OVOVGCustomPaperTypeIndex), "unknown") << ", base class "
        << orElse(text(paper, OVOVGCustomPaperTypeBase), "unknown");
}

void writeJob(const PropertyList& job, const Style&, std::ostream& out) {
    out << orElse(text(job, kJobName), "(no name)") << "  " << text(job, kJobID) << "  "
        << text(job, kSaveContext);
}

void writeColorMode(const PropertyList& mode, const Style&, std::ostream& out) {
    const PropertyList::Dictionary* const properties = mode.asDictionary();
    if (properties == nullptr) return;
    const char* separator = "";
    for (const auto& [name, value] : *properties) {
        out << separator << platform::onOneLine(name) << ": " << text(mode, name);
        separator = ", ";
    }
}

void writePermission(const PropertyList& permission, const Style&, std::ostream& out) {
    struct Meaning {
        std::string_view key;
        const char* sentence;
    };
    static constexpr std::array<Meaning, 2> kMeanings{
        {{kShowColorAccess, "Color access is shown: "}, {kBlackAndWhiteOnly, "Black and white only: "}}};
    for (const Meaning& meaning : kMeanings)
        if (permission.find(meaning.key) != nullptr)
            out << meaning.sentence << (text(permission, meaning.key) == "YES" ? "yes" : "no");
}

struct Section {
    std::string_view key;
    const char* heading;
    void (*write)(const PropertyList& record, const Style& style, std::ostream& out);
};
constexpr std::array<Section, 6> kSections{{
    {OVCPSSInputTrays, "Trays", writeTray},
    {OVCPSSColorantHousing, "Supplies", writeSupply},
    {OVOVGCustomPaperTypes, "Custom papers", writePaper},
    {kSavedJobs, "Stored jobs", writeJob},
    {kColorModes, "Color modes", writeColorMode},
    {kColorPermissions, "Permissions", writePermission},
}};

std::string_view headingFor(std::string_view key) {
    return key == OVSNMPJobAccountingOID ? "Job accounting" : key;
}

void writeSection(
    const Section& section, const PropertyList::List& records, const Style& style, std::ostream& out) {
    out << section.heading << '\n';
    if (records.empty()) out << "  (none)\n";
    for (const PropertyList& record : records) {
        out << "  ";
        section.write(record, style, out);
        out << '\n';
    }
}

const Section* sectionFor(std::string_view key, const PropertyList& value) {
    const auto section = std::ranges::find(kSections, key, &Section::key);
    return section != kSections.end() && value.asList() != nullptr ? &*section : nullptr;
}

} // namespace

std::vector<CustomPaper> customPapers(const std::vector<PropertyList>& responses) {
    std::vector<CustomPaper> papers;
    for (const PropertyList& response : responses) {
        const PropertyList* const value = response.find(OVOVGCustomPaperTypes);
        const PropertyList::List* const list = value != nullptr ? value->asList() : nullptr;
        if (list == nullptr) continue;
        for (const PropertyList& paper : *list)
            papers.push_back({textAsItIs(paper, OVOVGCustomPaperTypeName),
                textAsItIs(paper, OVOVGCustomPaperTypeIndex), textAsItIs(paper, OVOVGCustomPaperTypeBase)});
    }
    return papers;
}

std::vector<CustomPaper> papersUnknownTo(const DialogPPD& ppd, const std::vector<CustomPaper>& papers) {
    std::vector<CustomPaper> unknown;
    for (const CustomPaper& paper : papers)
        if (paper.type.empty() || !ppd.isInFile("MediaType", std::string(kCustomType) + paper.type))
            unknown.push_back(paper);
    return unknown;
}

void writeStatus(const std::vector<PropertyList>& responses, bool decorated, std::ostream& out) {
    const Style style{customPapers(responses), decorated};
    for (const Section& section : kSections)
        for (const PropertyList& response : responses)
            if (const PropertyList* value = response.find(section.key);
                value != nullptr && value->asList() != nullptr)
                writeSection(section, *value->asList(), style, out);
    for (const PropertyList& response : responses) {
        const PropertyList::Dictionary* const entries = response.asDictionary();
        if (entries == nullptr) {
            out << platform::onOneLine(jsonText(jsonFromPropertyList(response))) << '\n';
            continue;
        }
        for (const auto& [key, value] : *entries)
            if (sectionFor(key, value) == nullptr)
                out << platform::onOneLine(headingFor(key)) << "\n  "
                    << platform::onOneLine(jsonText(jsonFromPropertyList(value))) << '\n';
    }
}

} // namespace orvan
