#include "CommandFilter/PrinterWords.h"

#include "CommandFilter/OVGChildren.h"
#include "CommandFilter/OVOVGParser.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvan {
namespace {

using platform::PropertyList;
using platform::XMLNode;

constexpr std::array<std::string_view, 4> kWords{kWordName, kWordStatus, kWordPaperSize, kWordPaperType};
constexpr std::array<std::string_view, 5> kSections{
    "deviceStatus", OVOVGCustomPaperTypes, "storedJobs", "MULTIRSP", "permissions"};

PropertyList wordsOf(const XMLNode& record) {
    PropertyList::Dictionary words;
    forEachElement(record, [&](const XMLNode& child) {
        const auto key = std::ranges::find(kWords, child.name());
        if (key != kWords.end()) words.insert_or_assign(std::string(*key), textOf(child));
    });
    return PropertyList(std::move(words));
}

void addTrays(const XMLNode& trays, Ticket& ticket) {
    PropertyList::List words;
    forEachElement(trays, [&](const XMLNode& tray) { words.push_back(wordsOf(tray)); });
    ticket.insert_or_assign(std::string(kToldTrays), PropertyList(std::move(words)));
}

void addSupplies(const XMLNode& supplies, Ticket& ticket) {
    const auto records = OVOVGParser::initWithDocument(nullptr);
    PropertyList::List listed;
    PropertyList::List others;
    forEachElement(supplies, [&](const XMLNode& supply) {
        (records->supplyForValue(supply) ? listed : others).push_back(wordsOf(supply));
    });
    ticket.insert_or_assign(std::string(kToldSupplies), PropertyList(std::move(listed)));
    ticket.insert_or_assign(std::string(kToldOtherSupplies), PropertyList(std::move(others)));
}

} // namespace

void addPrinterWords(const platform::XMLDocument& document, Ticket& ticket) {
    forEachElement(*document.rootElement(), [&](const XMLNode& section) {
        if (section.name() != "deviceStatus") return;
        forEachElement(section, [&](const XMLNode& printer) {
            if (printer.name() != "printer") return;
            forEachElement(printer, [&](const XMLNode& list) {
                if (list.name() == "inputTrays") addTrays(list, ticket);
                if (list.name() == "supplies") addSupplies(list, ticket);
            });
        });
    });
}

bool isStatusDocument(const platform::XMLDocument& document) {
    bool isOne = false;
    forEachElement(*document.rootElement(), [&](const XMLNode& section) {
        isOne = isOne || std::ranges::find(kSections, section.name()) != kSections.end();
    });
    return isOne;
}

} // namespace orvan
