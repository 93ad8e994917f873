// What the tab shows below the panel's rows, folded away: the printer's trays and supplies, and the panel's
// summary.
#pragma once

#include "BiDi/StoredAnswers.h"
#include "Platform/Controls.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "PrintDialog/Host/PanelSession.h"

#include <vector>

namespace orvan {

// Brings the disclosure's views up to date with what the printer has answered and with what is marked: a text
// a tray, a level a supply, a text of when the printer told that, a text a line of the summary. A view of
// the same kind in the same place stays, with another text.
void updatePrinterDetails(platform::Disclosure& details, const std::vector<StoredAnswer>& answers,
    const DialogPPD& ppd, const PanelSession::Summary& summary);

} // namespace orvan
