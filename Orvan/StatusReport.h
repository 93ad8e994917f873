// What a printer answered, for people.
#pragma once

#include "Formats/PropertyList.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <ostream>
#include <string>
#include <vector>

namespace orvan {

// One of the printer's custom paper types; "" for what it did not say.
struct CustomPaper {
    std::string name;
    std::string type;
    std::string baseClass;
    bool operator==(const CustomPaper&) const = default;
};

// Those of all responses, in order.
std::vector<CustomPaper> customPapers(const std::vector<platform::PropertyList>& responses);

// Those whose type the PPD has no choice for, so that nobody can ask the printer for them; those
// without a type as well.
std::vector<CustomPaper> papersUnknownTo(const DialogPPD& ppd, const std::vector<CustomPaper>& papers);

// Trays, supplies, custom papers, stored jobs and permissions, each under its heading, and all else by its
// key. `decorated`: with bars and colors, for a terminal.
void writeStatus(const std::vector<platform::PropertyList>& responses, bool decorated, std::ostream& out);

} // namespace orvan
