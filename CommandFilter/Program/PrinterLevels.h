// Trays and supplies for every other client of the scheduler.
#pragma once

#include "Common/TicketVocabulary.h"

#include <string>

namespace orvan {

struct PrinterLevels {
    // marker-names, marker-types, marker-colors and marker-levels of the printer's supplies, as a filter
    // tells them. A level that is not known is -2 (RFC 3805, prtMarkerSuppliesLevel): that of a supply whose
    // status is a word (ToldLevels.h). "" when the ticket has no supplies.
    std::string attributes;
    // Reasons of the printer's state for what is low or empty, and those that are over, comma-separated; of
    // trays and supplies that the ticket says nothing of, all are over.
    std::string reasonsThatHold;
    std::string reasonsThatAreOver;
};

PrinterLevels levelsIn(const Ticket& ticket);

// The attributes of a printer that tells no supplies any more: the scheduler keeps what it was told last, and
// takes no empty ones.
inline constexpr const char* kNoMarkers =
    "marker-names='\"Supplies not told\"' marker-types=other marker-colors=none marker-levels=-2";

} // namespace orvan
