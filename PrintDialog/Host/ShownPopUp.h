// What a pop-up of a panel shows: its items, and what the dialog knows beside them.
#pragma once

#include "Platform/View.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvan {

struct ShownItem {
    std::string title;
    std::string keyword;
    bool enabled = true;
    std::int64_t place = -1; // in the panel's pop-up; -1 for a choice that the panel does not offer
    bool isLine = false;     // between groups of items; no item, nothing to pick
    bool operator==(const ShownItem&) const = default;
};

struct ShownPopUp {
    std::vector<ShownItem> items;
    std::int64_t selected = -1; // among these items; -1 for none
};

// The panel's items, of several for one choice the first alone. What the office has named itself comes first,
// with a line below it. A choice that the queue's own PPD does not
// have is shown with a remark, as it cannot be said to the printer. A choice that is marked and that the
// panel does not offer is the last item, with a remark, and is the selected one.
ShownPopUp shownPopUp(const platform::PopUpButton& popUp, const DialogPPD& ppd);

} // namespace orvan
