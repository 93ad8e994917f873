// Reads the words in which the printer itself told its trays and supplies.
#pragma once

#include "Common/TicketVocabulary.h"
#include "Formats/XMLDocument.h"

namespace orvan {

// Adds the words of a status document to its ticket.
void addPrinterWords(const platform::XMLDocument& document, Ticket& ticket);

// Whether the document has any of the sections of a status document, even an empty one.
bool isStatusDocument(const platform::XMLDocument& document);

} // namespace orvan
