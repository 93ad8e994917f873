#include "CommandFilter/OVOVGParser.h"

#include "CommandFilter/OVGChildren.h"
#include "Formats/LeadingInteger.h"
#include "Platform/LogLimit.h"
#include "Platform/SystemLog.h"

#include <array>
#include <utility>

namespace orvan {
namespace {

using platform::PropertyList;
using List = PropertyList::List;

// System loggers cut longer messages.
constexpr std::size_t kLoggedText = 8000;

void store(Ticket& ticket, std::string_view key, PropertyList value) {
    ticket.insert_or_assign(std::string(key), std::move(value));
}

const char* yesOrNo(bool value) {
    return value ? "YES" : "NO";
}

using PrinterReader = void (OVOVGParser::*)(Ticket&, const platform::XMLNode&) const;
struct Section {
    std::string_view name;
    PrinterReader read;
};
// Sections that speak of "printer" elements, and those that speak for themselves.
constexpr std::array<Section, 3> kPrinterSections{{
    {"deviceStatus", &OVOVGParser::fillDictionaryWithStatus},
    {OVOVGCustomPaperTypes, &OVOVGParser::fillDictionaryWithCustomTypes},
    {"storedJobs", &OVOVGParser::fillDictionaryWithSavedJobs},
}};
constexpr std::array<Section, 2> kWholeSections{{
    {"MULTIRSP", &OVOVGParser::fillDictionaryWithVCDs},
    {"permissions", &OVOVGParser::fillDictionaryWithColorPermissions},
}};

} // namespace

std::unique_ptr<OVOVGParser> OVOVGParser::initWithDocument(std::shared_ptr<const platform::XMLDocument> doc) {
    return std::unique_ptr<OVOVGParser>(new OVOVGParser(std::move(doc)));
}

std::unique_ptr<OVOVGParser> OVOVGParser::initWithData(
    std::string_view data, platform::Failure& error, const std::string& charset) {
    auto doc = platform::XMLDocument::parse(data, error, charset);
    if (doc != nullptr) return initWithDocument(std::move(doc));
    platform::systemLog("Could not parse " + *error);
    return nullptr;
}

void OVOVGParser::writeToURL(std::string_view) const {}

void OVOVGParser::writeToTicket(Ticket& ticket) const {
    if (_doc == nullptr) return;
    forEachElement(*_doc->rootElement(), [&](const Element& child) {
        for (const Section& section : kWholeSections)
            if (child.name() == section.name) (this->*section.read)(ticket, child);
        for (const Section& section : kPrinterSections)
            if (child.name() == section.name)
                forEachElement(child, [&](const Element& printer) {
                    if (printer.name() == "printer") (this->*section.read)(ticket, printer);
                });
    });
}

void OVOVGParser::fillDictionaryWithStatus(Ticket& ticket, const Element& printer) const {
    forEachElement(printer, [&](const Element& child) {
        const bool areTrays = child.name() == "inputTrays";
        if (!areTrays && child.name() != "supplies") return;
        List records;
        records.reserve(child.childCount());
        forEachElement(child, [&](const Element& element) {
            if (areTrays)
                records.emplace_back(trayForValue(element));
            else if (auto supply = supplyForValue(element))
                records.emplace_back(*std::move(supply));
        });
        store(ticket, areTrays ? OVCPSSInputTrays : OVCPSSColorantHousing, std::move(records));
    });
}

void OVOVGParser::fillDictionaryWithCustomTypes(Ticket& ticket, const Element& printer) const {
    List types;
    types.reserve(printer.childCount());
    forEachElement(printer, [&](const Element& child) {
        if (child.name() != OVOVGCustomPaperType) return;
        Ticket type;
        forEachElement(
            child, [&](const Element& property) { store(type, property.name(), textOf(property)); });
        types.emplace_back(std::move(type));
    });
    store(ticket, OVOVGCustomPaperTypes, std::move(types));
}

void OVOVGParser::fillDictionaryWithSavedJobs(Ticket& ticket, const Element& printer) const {
    List jobs;
    platform::LogLimit log(platform::systemLog);
    const auto logNode = [&log](const char* what, const platform::XMLNode& node) {
        if (log.takesOne()) platform::systemLogContent(what, [&node] { return node.xmlText(kLoggedText); });
    };
    logNode("saved job", printer);
    for (const Element* child = printer.firstChild(); child != nullptr; child = child->nextSibling()) {
        logNode("child job", *child);
        const bool arePersonal = child->name() == "personalJobs";
        if (!arePersonal && child->name() != "sharedJobs") continue;
        forEachElement(*child, [&](const Element& element) {
            Ticket job = jobForValue(element);
            store(job, kSaveContext, arePersonal ? kPrivateContext : kPublicContext);
            jobs.emplace_back(std::move(job));
        });
    }
    store(ticket, kSavedJobs, std::move(jobs));
}

void OVOVGParser::fillDictionaryWithVCDs(Ticket& ticket, const Element& multirsp) const {
    List modes;
    const std::int32_t count =
        platform::leadingInteger(multirsp.attributeForName("ColorModeCount").value_or(""));
    // The first child is not a color mode.
    for (std::int32_t position = 1; position <= count; ++position) {
        const Element* const mode = multirsp.childAtIndex(static_cast<std::size_t>(position));
        if (mode == nullptr) break;
        forEachElement(*mode, [&](const Element& instance) {
            if (instance.name() != "INSTANCE") return;
            Ticket record;
            forEachElement(instance, [&](const Element& property) {
                if (property.attributeCount() != 0)
                    store(record, property.attributeAtIndex(0).value, textOf(property));
            });
            modes.emplace_back(std::move(record));
        });
    }
    store(ticket, kColorModes, std::move(modes));
}

void OVOVGParser::fillDictionaryWithColorPermissions(Ticket& ticket, const Element& permissions) const {
    bool isColorShown = true;
    bool isBlackAndWhiteOnly = false;
    for (const Element* child = permissions.firstChild(); child != nullptr; child = child->nextSibling()) {
        const bool isNo = child->stringValue() == "NO";
        if (child->name() == "colorAccessPinSet" && isNo) {
            isColorShown = false;
            break;
        }
        if (child->name() == "userColorPermissions") isBlackAndWhiteOnly = isNo;
    }
    Ticket access;
    store(access, kShowColorAccess, yesOrNo(isColorShown));
    Ticket color;
    store(color, kBlackAndWhiteOnly, yesOrNo(isBlackAndWhiteOnly));
    List both;
    both.emplace_back(std::move(access));
    both.emplace_back(std::move(color));
    store(ticket, kColorPermissions, std::move(both));
}

} // namespace orvan
