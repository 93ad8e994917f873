#include "PrintDialog/Host/PrinterPage.h"

#include "Common/PPDUtilities.h"
#include "Common/PublishedTitles.h"
#include "Common/TicketVocabulary.h"
#include "Common/ToldLevels.h"
#include "Formats/OneLine.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace orvan {
namespace {

using platform::PropertyList;

constexpr std::int64_t kFull = 100;                      // levels are per cent; below 0 they are unknown
constexpr std::string_view kCustomType = "CustomType";   // and the paper's number: a PPD choice
constexpr std::string_view kUnspecified = "Unspecified"; // what the ticket has for a word that nobody knows
constexpr std::string_view kUnknown = "Unknown";

std::string textAsItIs(const PropertyList& record, std::string_view key) {
    const std::string* const string = record.findString(key);
    return string != nullptr ? *string : "";
}

std::string lineIn(const PropertyList& record, std::string_view key) {
    return platform::onOneLine(textAsItIs(record, key));
}

const PropertyList::List* listIn(const PropertyList& response, std::string_view key) {
    const PropertyList* const value = response.find(key);
    return value != nullptr ? value->asList() : nullptr;
}

// The printer's own words for a record; an empty dictionary where an answer has none.
const PropertyList& wordsOf(const PropertyList& response, std::string_view key, std::size_t i) {
    static const PropertyList kNone{PropertyList::Dictionary()};
    const PropertyList::List* const words = listIn(response, key);
    return words != nullptr && i < words->size() ? (*words)[i] : kNone;
}

Level levelOf(std::optional<std::int64_t> percent, std::int64_t low, const std::string& word) {
    Level level;
    if (percent && *percent >= 0) level.percent = std::min(*percent, kFull);
    level.isLow = level.percent && *level.percent <= low;
    if (!level.percent && word != kUnknown) level.word = word;
    return level;
}

std::optional<std::int64_t> integerIn(const PropertyList& record, std::string_view key) {
    const PropertyList* const value = record.find(key);
    return value != nullptr ? value->asInteger() : std::nullopt;
}

// The choice that a record has; "" for a word that nobody knows.
std::string choiceIn(const PropertyList& record, std::string_view key) {
    std::string choice = lineIn(record, key);
    return choice == kUnspecified ? std::string() : choice;
}

// A choice's title; what the printer said where the PPD has none.
std::string titleOf(
    const DialogPPD* ppd, const char* option, const std::string& choice, const std::string& word) {
    const bool isKnown = !choice.empty();
    if (isKnown && ppd != nullptr && ppd->isInFile(option, choice))
        return platform::onOneLine(ppd->choiceTitle(option, choice));
    if (!word.empty()) return word == kUnknown ? "" : word;
    return isKnown ? choice : "";
}

// A custom paper by the name that the printer was given for it.
std::string paperTitle(const DialogPPD* ppd, const std::string& type, const std::string& word,
    const std::vector<CustomPaper>& papers) {
    if (type.starts_with(kCustomType)) {
        const auto paper = std::ranges::find(papers, type.substr(kCustomType.size()), &CustomPaper::type);
        if (paper != papers.end() && !paper->name.empty()) return platform::onOneLine(paper->name);
    }
    return titleOf(ppd, "MediaType", type, word);
}

Tray trayOf(const PropertyList& record, const PropertyList& words, const DialogPPD* ppd,
    const std::vector<CustomPaper>& papers) {
    Tray tray;
    tray.name = titleOf(ppd, "InputSlot", choiceIn(record, OVCPSSTrayName), lineIn(words, kWordName));
    tray.level = levelOf(integerIn(record, OVCPSSTrayLevel), kLowTray, lineIn(words, kWordStatus));
    static const PropertyList kNoMedia{PropertyList::Dictionary()};
    const PropertyList* const found = record.find(OVCPSSMedia);
    const PropertyList& media = found != nullptr ? *found : kNoMedia;
    tray.mediaType = choiceIn(media, kMediaType);
    tray.pageSize = choiceIn(media, kPageSize);
    tray.paper = paperTitle(ppd, tray.mediaType, lineIn(words, kWordPaperType), papers);
    tray.size = titleOf(ppd, kPageSizeOption, tray.pageSize, lineIn(words, kWordPaperSize));
    return tray;
}

Supply supplyOf(const PropertyList& record, const PropertyList& words) {
    Supply supply;
    supply.colorant = lineIn(record, OVCPSSColorant);
    supply.name = lineIn(words, kWordName);
    if (supply.name.empty()) {
        const std::string type = lineIn(record, OVCPSSColorantType);
        supply.name = supply.colorant + (type.empty() ? "" : " ") + type;
        if (!supply.name.empty())
            supply.name.front() =
                static_cast<char>(std::toupper(static_cast<unsigned char>(supply.name.front())));
    }
    const std::string* const status = words.findString(kWordStatus);
    const auto percent = status != nullptr ? levelInWord(*status) : integerIn(record, OVCPSSColorantLevel);
    supply.level = levelOf(percent, kLowSupply, lineIn(words, kWordStatus));
    return supply;
}

void addTrays(const PropertyList& response, const DialogPPD* ppd, PrinterPage& page) {
    const PropertyList::List* const records = listIn(response, OVCPSSInputTrays);
    if (records == nullptr) return;
    if (!page.trays) page.trays.emplace();
    for (std::size_t i = 0; i < records->size(); ++i)
        page.trays->push_back(trayOf((*records)[i], wordsOf(response, kToldTrays, i), ppd, page.papers));
}

void addSupplies(const PropertyList& response, PrinterPage& page) {
    const PropertyList::List* const records = listIn(response, OVCPSSColorantHousing);
    if (records == nullptr) return;
    if (!page.supplies) page.supplies.emplace();
    for (std::size_t i = 0; i < records->size(); ++i)
        page.supplies->push_back(supplyOf((*records)[i], wordsOf(response, kToldSupplies, i)));
    if (const PropertyList::List* const others = listIn(response, kToldOtherSupplies))
        for (const PropertyList& words : *others)
            page.supplies->push_back(supplyOf(PropertyList(PropertyList::Dictionary()), words));
}

} // namespace

std::vector<CustomPaper> customPapers(const std::vector<PropertyList>& responses) {
    std::vector<CustomPaper> papers;
    for (const PropertyList& response : responses)
        if (const PropertyList::List* const list = listIn(response, OVOVGCustomPaperTypes))
            for (const PropertyList& paper : *list)
                papers.push_back({textAsItIs(paper, OVOVGCustomPaperTypeName),
                    textAsItIs(paper, OVOVGCustomPaperTypeIndex),
                    textAsItIs(paper, OVOVGCustomPaperTypeBase)});
    return papers;
}

std::vector<std::string> outdatedTitles(const DialogPPD& ppd, const std::vector<CustomPaper>& papers) {
    std::vector<std::string> outdated;
    for (const auto& [choice, title] : ppd.publishedTitles()) {
        const auto paper = std::ranges::find(papers, choice.substr(kCustomType.size()), &CustomPaper::type);
        if (paper == papers.end() || publishedTitle(paper->name) != title) outdated.push_back(title);
    }
    return outdated;
}

std::vector<CustomPaper> papersUnknownTo(const DialogPPD& ppd, const std::vector<CustomPaper>& papers) {
    std::vector<CustomPaper> unknown;
    for (const CustomPaper& paper : papers)
        if (paper.type.empty() || !ppd.isInFile("MediaType", std::string(kCustomType) + paper.type))
            unknown.push_back(paper);
    return unknown;
}

bool PrinterPage::needsHand() const {
    const auto isLow = [](const auto& thing) { return thing.level.isLow; };
    return (trays && std::ranges::any_of(*trays, isLow)) ||
           (supplies && std::ranges::any_of(*supplies, isLow));
}

PrinterPage pageOf(const std::vector<PropertyList>& responses, const DialogPPD* ppd) {
    PrinterPage page;
    page.papers = customPapers(responses);
    for (const PropertyList& response : responses) {
        addTrays(response, ppd, page);
        addSupplies(response, page);
    }
    return page;
}

} // namespace orvan
