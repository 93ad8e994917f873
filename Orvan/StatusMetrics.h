// Printers' answers for monitoring.
#pragma once

#include "Orvan/PrinterQuery.h"

#include <ostream>
#include <vector>

namespace orvan {

// OpenMetrics 1.0 text: whether the scheduler answered, whether each printer did, how old its answer is, and
// the level of each supply and tray, NaN when it is not known. Every series is there once, with other labels
// than all others.
void writeMetrics(bool hasScheduler, const std::vector<PrinterAnswers>& printers, std::ostream& out);

} // namespace orvan
