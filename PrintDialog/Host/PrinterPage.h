// What printers answered about their trays and supplies, put into words by their PPDs: what the status page,
// the line of a printer and the metrics show.
#pragma once

#include "Formats/PropertyList.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <cstdint>
#include <optional>
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

// The names that were published for the queue and are not those of the papers of these types any more.
std::vector<std::string> outdatedTitles(const DialogPPD& ppd, const std::vector<CustomPaper>& papers);
// Those whose type the PPD has no choice for, so that nobody can ask the printer for them; those
// without a type as well.
std::vector<CustomPaper> papersUnknownTo(const DialogPPD& ppd, const std::vector<CustomPaper>& papers);

struct Level {
    std::optional<std::int64_t> percent; // nothing when it is not known
    std::string word;                    // the printer's, when that says no number; may be empty
    bool isLow = false;                  // or empty

    bool isEmpty() const { return percent == 0; }
};

// Texts are for people, on one line; "" for what is not known.
struct Tray {
    std::string name;
    Level level;
    std::string paper; // the office's own name for a custom one
    std::string size;
    std::string mediaType; // the PPD's choices for them
    std::string pageSize;
};
struct Supply {
    std::string name;
    std::string colorant; // "cyan", "magenta", "yellow" or "black"; "" for another
    Level level;
};

struct PrinterPage {
    std::optional<std::vector<Tray>> trays; // nothing when the printer did not tell
    std::optional<std::vector<Supply>> supplies;
    std::vector<CustomPaper> papers;

    // Whether a tray or a supply is low or empty.
    bool needsHand() const;
};

// `ppd` (may be null) has the titles.
PrinterPage pageOf(const std::vector<platform::PropertyList>& responses, const DialogPPD* ppd);

} // namespace orvan
