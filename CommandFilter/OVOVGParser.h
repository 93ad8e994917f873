// The printer's own status document, which is called OVG here: one XML file.
#pragma once

#include "Common/TicketVocabulary.h"
#include "Formats/Failure.h"
#include "Formats/XMLDocument.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orvan {

// Reads the XML document in which a printer reports trays, supplies, custom paper types, stored jobs, colour
// modes and colour permissions, and writes what it finds into a ticket. Names of elements are compared
// exactly, and elements of other names passed over; "text" is all text within an element. Texts are copied
// unchanged, nothing of the document stays in the ticket.
//
// A section that the document does not have leaves its key of the ticket alone; one that comes again replaces
// what was there. One thread at a time.
class OVOVGParser {
public:
    using Element = platform::XMLNode;
    using Text = std::optional<std::string_view>;

    // A parser of a null document writes nothing.
    static std::unique_ptr<OVOVGParser> initWithDocument(std::shared_ptr<const platform::XMLDocument> doc);
    // Null, and a line in the system log, when the bytes are no document (XMLDocument::parse); error then
    // says what is wrong with them, and where. The charset is that of the web server's answer
    // (FetchResult::charset).
    static std::unique_ptr<OVOVGParser> initWithData(std::string_view data,
        platform::Failure& error = platform::ignoredFailure(), const std::string& charset = {});

    // What it reads; null for a null document.
    const platform::XMLDocument* document() const { return _doc.get(); }

    // Writes nothing: there is no form of output for it. Of the given vocabulary; nothing here calls it.
    void writeToURL(std::string_view url) const;
    // May be called more than once; each call writes all entries again.
    void writeToTicket(Ticket& ticket) const;

    // The sections, of a "printer" element each, or of the section's own element in the last two.
    void fillDictionaryWithStatus(Ticket& ticket, const Element& printer) const;
    void fillDictionaryWithCustomTypes(Ticket& ticket, const Element& printer) const;
    // Writes the element, and each of its children, to the system log (of a long one the beginning).
    void fillDictionaryWithSavedJobs(Ticket& ticket, const Element& printer) const;
    // The color modes, which are called VCDs.
    void fillDictionaryWithVCDs(Ticket& ticket, const Element& multirsp) const;
    void fillDictionaryWithColorPermissions(Ticket& ticket, const Element& permissions) const;

    // One record. Only keys whose element was there are in it.
    Ticket trayForValue(const Element& tray) const;
    // Nothing when its name names none of the four colorants.
    std::optional<Ticket> supplyForValue(const Element& supply) const;
    Ticket jobForValue(const Element& job) const;

    // Per cent; -1 for any other word, and for none.
    std::int32_t levelForTrayStatus(Text status) const;

    // What a word of the printer's is in the ticket: "Unspecified" for words that are not known, and for
    // none.
    std::string_view keyForStatus(Text status) const;
    std::string_view keyForSize(Text size) const;
    std::string_view keyForType(Text type) const;
    std::string_view keyForSupply(Text supply) const;
    std::string_view keyForTray(Text tray) const;
    // States are the same on both sides. Of the given vocabulary; nothing here calls it.
    const platform::PropertyList* keyForState(const platform::PropertyList* state) const { return state; }

private:
    explicit OVOVGParser(std::shared_ptr<const platform::XMLDocument> doc) : _doc(std::move(doc)) {}

    std::shared_ptr<const platform::XMLDocument> _doc;
};

} // namespace orvan
