// What the tab's line says.
#pragma once

#include "PrintDialog/Host/DialogPPD.h"
#include "PrintDialog/Host/Preset.h"

#include <string>

namespace orvan {

// What marking a choice led to, for people.
struct PickNotice {
    std::string text;         // "" when there is nothing to say
    bool canBeUndone = false; // others have changed with what was asked for
};

// What changed in other options than the one that was asked for ("" for none), and what contradicts it still.
// The size of the paper is the application's, which nobody undoes here.
PickNotice pickNotice(const DialogPPD& ppd, const MarkResult& result, const std::string& asked);

// What choosing a preset led to.
PickNotice presetNotice(const DialogPPD& ppd, const PresetChoices& wanted, const MarkResult& settled);

// The one line that matters now: the newest pick's notice and what is not loaded, else `names`, the age of
// the paper names; "" for none.
std::string lineOf(const PickNotice& notice, const std::string& notLoaded, const std::string& names);

} // namespace orvan
