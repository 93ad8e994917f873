#include "Tools/Orvan/StatusReport.h"

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
constexpr const char* kCustomPapersKey = "customPaperTypes";

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

void writeTray(const PropertyList& tray, std::ostream& out) {
    out << std::left << std::setw(kNameWidth) << orElse(text(tray, "tray-name"), "(no name)")
        << level(tray, "tray-level");
    if (const PropertyList* media = tray.find("media-col"))
        out << "  " << orElse(text(*media, "MediaType"), "paper unknown") << ", "
            << orElse(text(*media, "PageSize"), "size unknown");
}

void writeSupply(const PropertyList& supply, std::ostream& out) {
    const std::string type = text(supply, "colorant-type");
    out << std::left << std::setw(kNameWidth)
        << orElse(text(supply, "colorant"), "(no name)") + (type.empty() ? "" : " " + type)
        << level(supply, "colorant-level");
}

void writePaper(const PropertyList& paper, std::ostream& out) {
    out << orElse(text(paper, "name"), "(no name)") << "  type " << orElse(text(paper, "type"), "unknown")
        << ", base class " << orElse(text(paper, "baseClass"), "unknown");
}

void writeJob(const PropertyList& job, std::ostream& out) {
    out << orElse(text(job, "OVJobName"), "(no name)") << "  " << text(job, "OVJobID") << "  "
        << text(job, "OVSaveContext");
}

void writePermission(const PropertyList& permission, std::ostream& out) {
    struct Meaning {
        const char* key;
        const char* sentence;
    };
    static constexpr std::array<Meaning, 2> kMeanings{
        {{"showColorAccess", "Color access is shown: "}, {"bBWOnly", "Black and white only: "}}};
    for (const Meaning& meaning : kMeanings)
        if (permission.find(meaning.key) != nullptr)
            out << meaning.sentence << (text(permission, meaning.key) == "YES" ? "yes" : "no");
}

struct Section {
    const char* key;
    const char* heading;
    void (*write)(const PropertyList& record, std::ostream& out);
};
constexpr std::array<Section, 5> kSections{{
    {"input-trays-col", "Trays", writeTray},
    {"colorant-housing-col", "Supplies", writeSupply},
    {kCustomPapersKey, "Custom papers", writePaper},
    {"OVSavedJobs", "Stored jobs", writeJob},
    {"colorPermissions", "Permissions", writePermission},
}};

void writeSection(const Section& section, const PropertyList::List& records, std::ostream& out) {
    out << section.heading << '\n';
    if (records.empty()) out << "  (none)\n";
    for (const PropertyList& record : records) {
        out << "  ";
        section.write(record, out);
        out << '\n';
    }
}

const Section* sectionFor(std::string_view key, const PropertyList& value) {
    const auto section =
        std::ranges::find(kSections, key, [](const Section& s) { return std::string_view(s.key); });
    return section != kSections.end() && value.asList() != nullptr ? &*section : nullptr;
}

} // namespace

std::vector<CustomPaper> customPapers(const std::vector<PropertyList>& responses) {
    std::vector<CustomPaper> papers;
    for (const PropertyList& response : responses) {
        const PropertyList* const value = response.find(kCustomPapersKey);
        const PropertyList::List* const list = value != nullptr ? value->asList() : nullptr;
        if (list == nullptr) continue;
        for (const PropertyList& paper : *list)
            papers.push_back(
                {textAsItIs(paper, "name"), textAsItIs(paper, "type"), textAsItIs(paper, "baseClass")});
    }
    return papers;
}

void writeStatus(const std::vector<PropertyList>& responses, std::ostream& out) {
    for (const Section& section : kSections)
        for (const PropertyList& response : responses)
            if (const PropertyList* value = response.find(section.key);
                value != nullptr && value->asList() != nullptr)
                writeSection(section, *value->asList(), out);
    for (const PropertyList& response : responses) {
        const PropertyList::Dictionary* const entries = response.asDictionary();
        if (entries == nullptr) {
            out << onOneLine(jsonFromPropertyList(response).dump()) << '\n';
            continue;
        }
        for (const auto& [key, value] : *entries)
            if (sectionFor(key, value) == nullptr)
                out << onOneLine(key) << "\n  " << onOneLine(jsonFromPropertyList(value).dump()) << '\n';
    }
}

} // namespace orvan
