#include "BiDi/StoredAnswers.h"

#include "BiDi/Common/SupportedCommands.h"
#include "BiDi/ResponseEntries.h"
#include "Common/CommandJob.h"
#include "Common/TicketVocabulary.h"

#include <algorithm>
#include <charconv>

namespace orvan {
namespace {

using Clock = std::chrono::system_clock;

std::string_view attributeOf(ppd_file_t* ppd, const std::string& command, const char* ending) {
    const char* const value = ppdx_get_chunk_ppd(ppd, (command + ending).c_str());
    return value != nullptr ? value : "";
}

// Nothing when the text is not a whole number above 0.
template <class Number>
std::optional<Number> numberIn(std::string_view text) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number <= 0) return std::nullopt;
    return number;
}

std::optional<Clock::time_point> timeIn(std::string_view text) {
    const auto seconds = numberIn<std::int64_t>(text);
    if (!seconds || *seconds > Clock::to_time_t(Clock::now())) return std::nullopt;
    return Clock::from_time_t(static_cast<std::time_t>(*seconds));
}

} // namespace

std::vector<StoredAnswer> storedAnswers(ppd_file_t* ppd, std::size_t limit) {
    const PpdxMessages silence(
        [](const std::string&) {}); // of what is damaged, whoever decodes it next tells
    std::vector<StoredAnswer> answers;
    for (const std::string& command : supportedCommandsInPPD(ppd).value_or(CommandList())) {
        if (!command.starts_with(kFamilyCommandPrefix)) continue;
        StoredAnswer& answer = answers.emplace_back(StoredAnswer{.command = command});
        std::size_t size = 0;
        const PpdxData data = ppdxReadData(ppd, command.c_str(), ppdx_get_chunk_ppd, &size, limit);
        if (data != nullptr) {
            limit -= size;
            answer.list = platform::PropertyList::read({data.get(), size});
        }
        answer.isDamaged = !answer.list && !attributeOf(ppd, command, "0000").empty();
        answer.askedAt = timeIn(attributeOf(ppd, command, kAnswerTime));
        answer.job = numberIn<int>(attributeOf(ppd, command, kAnswerJob)).value_or(0);
        const std::string_view failure = attributeOf(ppd, command, kAnswerProblem);
        const std::size_t colon = std::min(failure.find(':'), failure.size());
        answer.failedJob = numberIn<int>(failure.substr(0, colon)).value_or(0);
        if (answer.failedJob != 0 && colon < failure.size()) answer.failure = failure.substr(colon + 1);
    }
    return answers;
}

const StoredAnswer* answerWithPapers(const std::vector<StoredAnswer>& answers) {
    const auto found = std::ranges::find_if(answers, [](const StoredAnswer& answer) {
        return answer.list && answer.list->find(OVOVGCustomPaperTypes) != nullptr;
    });
    return found != answers.end() ? &*found : nullptr;
}

} // namespace orvan
