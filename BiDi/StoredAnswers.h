// The answers of earlier questions, which the scheduler keeps in the queue's PPD.
#pragma once

#include "BiDi/ppdx.h"
#include "Formats/PropertyList.h"

#include <cups/ppd.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// The key of an answer's list of custom papers, which are dictionaries with a "name" and a "type".
inline constexpr std::string_view kCustomPaperTypesKey = "customPaperTypes";

struct StoredAnswer {
    std::string command;
    platform::PropertyList list;
    // When the printer was asked; nothing when that is not known, or would be in the future.
    std::optional<std::chrono::system_clock::time_point> askedAt;
};

// Those to the commands of the PPD's "cupsCommands" that can be read, until they are more than `limit` bytes.
std::vector<StoredAnswer> storedAnswers(ppd_file_t* ppd, std::size_t limit = kPpdxMaximumSize);

// The one that has the custom papers; null when there is none.
const StoredAnswer* answerWithPapers(const std::vector<StoredAnswer>& answers);

} // namespace orvan
