// Trays and supplies for every other client of the scheduler.
#pragma once

#include "CommandFilter/TicketVocabulary.h"

#include <cstdint>
#include <string>

namespace orvan {

// Up to these levels, in per cent, a tray or a supply is low.
inline constexpr std::int64_t kLowTray = 30; // what a tray that is nearly empty has
inline constexpr std::int64_t kLowSupply = 10;

struct PrinterLevels {
    // marker-names, marker-types, marker-colors and marker-levels of the printer's supplies, as a filter
    // tells them; empty when the ticket has no supplies. A level that is not known is -2 (RFC 3805,
    // prtMarkerSuppliesLevel).
    std::string attributes;
    // Reasons of the printer's state for what is low or empty, and those that are over, comma-separated.
    // Trays and supplies that the ticket says nothing of are in neither.
    std::string reasonsThatHold;
    std::string reasonsThatAreOver;
};

PrinterLevels levelsIn(const Ticket& ticket);

} // namespace orvan
