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

// What the PPD has of one command.
struct StoredAnswer {
    std::string command;
    // Nothing when there is none that can be read.
    std::optional<platform::PropertyList> list = {};
    // When the printer was asked; nothing when that is not known, or would be in the future.
    std::optional<std::chrono::system_clock::time_point> askedAt = {};
    // The job that brought it; 0 when that is not known.
    int job = 0;
    // The newest job that brought none, and the filter's word for why (Common/CommandJob.h); 0 and "" when
    // none is known.
    int failedJob = 0;
    std::string failure = {};
    // Whether there is one that cannot be read.
    bool isDamaged = false;
};

// The prefix of the commands that this printer family answers in chunks; CUPS's own are not.
inline constexpr std::string_view kFamilyCommandPrefix = "com.orvan.";

// One for each of the family's commands in the PPD's "cupsCommands"; lists until they are more than `limit`
// bytes.
std::vector<StoredAnswer> storedAnswers(ppd_file_t* ppd, std::size_t limit = kPpdxMaximumSize);

// The one that has the custom papers; null when there is none.
const StoredAnswer* answerWithPapers(const std::vector<StoredAnswer>& answers);

} // namespace orvan
