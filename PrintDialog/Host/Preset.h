// A preset: a named set of choices for a printer, and what becomes of it on a printer that has changed since.
#pragma once

#include "BiDi/StoredAnswers.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "PrintDialog/Host/QueuePPD.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace orvan {

// The printer that a preset is for.
struct PresetPrinter {
    std::string queue;
    std::string model;  // the PPD's; "" where nothing says
    std::string device; // the queue's URI; "" where nothing says

    // Whether what was saved for the other one is for this one: it has the same queue, or is the same printer
    // under another name.
    bool hasPresetsOf(const PresetPrinter& other) const;
};

// The queue's, before its parts go elsewhere.
PresetPrinter presetPrinter(const OpenedQueue& opened);

struct Preset {
    std::string name;
    PresetPrinter printer;                      // that it was saved for; the store's own fills that in
    std::map<std::string, std::string> choices; // option to choice, keywords of the PPD
    std::string paper; // the office's own name for the chosen paper; "" for a paper of the PPD's
};

// The options that a preset has beside the panel's: those of size, duplex and tray.
inline constexpr std::array<const char*, 3> kOptionsBesideThePanel{kPageSizeOption, "Duplex", "InputSlot"};

// What is marked now in these options of the panel and in those beside it, as far as the PPD has them.
Preset presetOf(const std::string& name, const std::vector<std::string>& panelOptions, const DialogPPD& ppd,
    const std::vector<StoredAnswer>& answers);
// The PPD's defaults of the same options, without the size of the paper, which is the document's.
Preset defaultPreset(const std::vector<std::string>& panelOptions, const DialogPPD& ppd);

// What a preset comes to now.
struct PresetChoices {
    std::map<std::string, std::string> choices; // that the PPD has
    std::string text; // for people: what is other than when it was saved; "" for nothing
};
// A paper of the office's is the one of that name, whatever its type is; else the one of that type, whose
// new name is told; else it is said to be gone. Where the printer has told no papers, it is that type.
PresetChoices choicesNow(
    const Preset& preset, const DialogPPD& ppd, const std::vector<StoredAnswer>& answers);

} // namespace orvan
