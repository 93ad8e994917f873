#include "Tools/Orvan/StatusReport.h"

#include "CommandFilter/TicketVocabulary.h"
#include "Common/Utilities/OneLine.h"
#include "Tools/Orvan/PropertyListJson.h"

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
    const PropertyList* const value = record.find(key);
    const std::string* const string = value != nullptr ? value->asString() : nullptr;
    return string != nullptr ? *string : "";
}

std::string text(const PropertyList& record, std::string_view key) {
    return onOneLine(textAsItIs(record, key));
}

// "[########------------]  40 %", or "unknown".
std::string level(const PropertyList& record, std::string_view key) {
    const PropertyList* const value = record.find(key);
    const auto number = value != nullptr ? value->asInteger() : std::nullopt;
    if (!number || *number < 0) return "unknown";
    const std::int64_t percent = std::min(*number, kFull);
    const auto filled = static_cast<std::size_t>(percent) * kBarWidth / static_cast<std::size_t>(kFull);
    const std::string figure = std::to_string(percent);
    return "[" + std::string(filled, '#') + std::string(kBarWidth - filled, '-') + "] " +
           std::string(3 - std::min<std::size_t>(figure.size(), 3), ' ') + figure + " %";
}

std::string orElse(const std::string& value, const char* otherwise) {
    return value.empty() ? otherwise : value;
}

// A custom paper by the name that the printer was given for it.
std::string paperName(const std::string& mediaType, const Papers& papers) {
    if (!mediaType.starts_with(kCustomType)) return mediaType;
    const auto paper = std::ranges::find(papers, mediaType.substr(kCustomType.size()), &CustomPaper::type);
    return paper != papers.end() && !paper->name.empty() ? onOneLine(paper->name) : mediaType;
}

void writeTray(const PropertyList& tray, const Papers& papers, std::ostream& out) {
    out << std::left << std::setw(kNameWidth) << orElse(text(tray, OVCPSSTrayName), "(no name)")
        << level(tray, OVCPSSTrayLevel);
    if (const PropertyList* media = tray.find(OVCPSSMedia))
        out << "  " << orElse(paperName(text(*media, kMediaType), papers), "paper unknown") << ", "
            << orElse(text(*media, kPageSize), "size unknown");
}

void writeSupply(const PropertyList& supply, const Papers&, std::ostream& out) {
    const std::string type = text(supply, OVCPSSColorantType);
    out << std::left << std::setw(kNameWidth)
        << orElse(text(supply, OVCPSSColorant), "(no name)") + (type.empty() ? "" : " " + type)
        << level(supply, OVCPSSColorantLevel);
}

void writePaper(const PropertyList& paper, const Papers&, std::ostream& out) {
    out << orElse(text(paper, OVOVGCustomPaperTypeName), "(no name)") << "  type "
        << orElse(text(paper, OVOVGCustomPaperTypeIndex), "unknown") << ", base class "
        << orElse(text(paper, OVOVGCustomPaperTypeBase), "unknown");
}

void writeJob(const PropertyList& job, const Papers&, std::ostream& out) {
    out << orElse(text(job, kJobName), "(no name)") << "  " << text(job, kJobID) << "  "
        << text(job, kSaveContext);
}

void writeColorMode(const PropertyList& mode, const Papers&, std::ostream& out) {
    const PropertyList::Dictionary* const properties = mode.asDictionary();
    if (properties == nullptr) return;
    const char* separator = "";
    for (const auto& [name, value] : *properties) {
        out << separator << onOneLine(name) << ": " << text(mode, name);
        separator = ", ";
    }
}

void writePermission(const PropertyList& permission, const Papers&, std::ostream& out) {
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
    void (*write)(const PropertyList& record, const Papers& papers, std::ostream& out);
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
    const Section& section, const PropertyList::List& records, const Papers& papers, std::ostream& out) {
    out << section.heading << '\n';
    if (records.empty()) out << "  (none)\n";
    for (const PropertyList& record : records) {
        out << "  ";
        section.write(record, papers, out);
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

void writeStatus(const std::vector<PropertyList>& responses, std::ostream& out) {
    const Papers papers = customPapers(responses);
    for (const Section& section : kSections)
        for (const PropertyList& response : responses)
            if (const PropertyList* value = response.find(section.key);
                value != nullptr && value->asList() != nullptr)
                writeSection(section, *value->asList(), papers, out);
    for (const PropertyList& response : responses) {
        const PropertyList::Dictionary* const entries = response.asDictionary();
        if (entries == nullptr) {
            out << onOneLine(jsonFromPropertyList(response).dump()) << '\n';
            continue;
        }
        for (const auto& [key, value] : *entries)
            if (sectionFor(key, value) == nullptr)
                out << onOneLine(headingFor(key)) << "\n  " << onOneLine(jsonFromPropertyList(value).dump())
                    << '\n';
    }
}

} // namespace orvan
