// The words in which the printer itself told its trays and supplies, beside their records in the ticket: a
// record has no place for words that nobody knows.
#pragma once

#include "CommandFilter/TicketVocabulary.h"
#include "Formats/XMLDocument.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace orvan {

// Lists of dictionaries of texts, one for each record of "input-trays-col" and of "colorant-housing-col", in
// their order; and one for each supply without a record.
inline constexpr std::string_view kToldTrays = "OVTrayWords";
inline constexpr std::string_view kToldSupplies = "OVSupplyWords";
inline constexpr std::string_view kToldOtherSupplies = "OVOtherSupplies";
// The keys of a dictionary, each there when the printer said it.
inline constexpr std::string_view kWordName = "name";
inline constexpr std::string_view kWordStatus = "status";
inline constexpr std::string_view kWordPaperSize = "paperSize";
inline constexpr std::string_view kWordPaperType = "paperType";

// Adds the words of a status document to its ticket.
void addPrinterWords(const platform::XMLDocument& document, Ticket& ticket);

// Whether the document has any of the sections of a status document, even an empty one.
bool isStatusDocument(const platform::XMLDocument& document);

// Per cent, where the word for a supply's status says how much there is: "OK" is all, and a number that it
// begins with is itself.
std::optional<std::int64_t> levelInWord(std::string_view status);

} // namespace orvan
