// What is in the printer's trays against what is picked.
#pragma once

#include "BiDi/StoredAnswers.h"
#include "PrintDialog/Host/DialogPPD.h"

#include <chrono>
#include <string>
#include <vector>

namespace orvan {

// How old an answer about trays may be to say anything of now.
inline constexpr std::chrono::minutes kTraysStayAsTheyAre{10};

// For people: that no tray holds the marked paper in `size` (the document's, a choice of the PPD's PageSize),
// and what the trays hold instead. "" when one does, and whenever that is not certain: the size is "", a tray
// was picked, the printer did not tell its trays within the last ten minutes, or told of any of them no
// paper, size or level that is known.
std::string notLoadedText(
    const std::vector<StoredAnswer>& answers, const DialogPPD& ppd, const std::string& size);

} // namespace orvan
