// What the tab shows below the panel's rows, folded away: the printer's trays and supplies, and the panel's
// summary.
#pragma once

#include "BiDi/StoredAnswers.h"
#include "Platform/View.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "PrintDialog/Host/PanelSession.h"

#include <memory>
#include <vector>

namespace orvan {

// The views: texts, a line a tray, and levels, one a supply. Folded, until update() is called nothing is in
// it.
std::shared_ptr<platform::Disclosure> makePrinterDetails();

// Brings them up to date with what the printer has answered and with what is marked.
void updatePrinterDetails(platform::Disclosure& details, const std::vector<StoredAnswer>& answers,
    const DialogPPD& ppd, const PanelSession::Summary& summary);

} // namespace orvan
