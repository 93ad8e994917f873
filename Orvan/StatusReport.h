// What a printer answered, for people.
#pragma once

#include "Formats/PropertyList.h"
#include "PrintDialog/Host/PrinterPage.h"

#include <ostream>
#include <string>
#include <vector>

namespace orvan {

// Trays, supplies, custom papers, stored jobs and permissions, each under its heading, and all else by its
// key. `ppd` (may be null) has the titles; `decorated`: with bars and colors, for a terminal.
void writeStatus(const std::vector<platform::PropertyList>& responses, const DialogPPD* ppd, bool decorated,
    std::ostream& out);

// "4 trays, Tray 3 low; Yellow Toner 7 %": what there is, and what needs a hand; "" when nothing was told.
std::string summaryOf(const PrinterPage& page);

} // namespace orvan
