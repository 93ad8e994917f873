// The names of custom papers in a queue's PPD, for everybody who reads titles there.
#pragma once

#include "PrintDialog/Host/PrinterPage.h"

#include <chrono>
#include <string>
#include <vector>

namespace orvan {

// Gives the choices of the queue's PPD the papers' names as titles, and none others; takes all of them back.
// Nothing is sent to the scheduler when nothing changes. Answers an exit code, after a message where
// something was wrong.
int publishPapers(
    const std::string& queue, const std::vector<CustomPaper>& papers, std::chrono::duration<double> time);
int unpublishPapers(const std::string& queue, std::chrono::duration<double> time);

} // namespace orvan
