#include "BiDi/StoredAnswers.h"

#include "BiDi/Common/SupportedCommands.h"
#include "BiDi/ResponseEntries.h"
#include "Common/CommandJob.h"

#include <algorithm>
#include <charconv>

namespace orvan {
namespace {

using Clock = std::chrono::system_clock;

std::optional<Clock::time_point> timeOf(ppd_file_t* ppd, const std::string& command) {
    const char* const value = ppdx_get_chunk_ppd(ppd, (command + kAnswerTime).c_str());
    if (value == nullptr) return std::nullopt;
    const std::string_view text(value);
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (!isNumber || seconds <= 0 || seconds > Clock::to_time_t(Clock::now())) return std::nullopt;
    return Clock::from_time_t(static_cast<std::time_t>(seconds));
}

} // namespace

std::vector<StoredAnswer> storedAnswers(ppd_file_t* ppd, std::size_t limit) {
    const PpdxMessages silence(
        [](const std::string&) {}); // of what is damaged, whoever decodes it next tells
    std::vector<StoredAnswer> answers;
    for (const std::string& command : supportedCommandsInPPD(ppd).value_or(CommandList())) {
        std::size_t size = 0;
        const PpdxData data = ppdxReadData(ppd, command.c_str(), ppdx_get_chunk_ppd, &size, limit);
        if (data == nullptr) continue;
        limit -= size;
        if (auto list = platform::PropertyList::read({data.get(), size}))
            answers.push_back({command, *std::move(list), timeOf(ppd, command)});
    }
    return answers;
}

const StoredAnswer* answerWithPapers(const std::vector<StoredAnswer>& answers) {
    const auto found = std::ranges::find_if(answers,
        [](const StoredAnswer& answer) { return answer.list.find(kCustomPaperTypesKey) != nullptr; });
    return found != answers.end() ? &*found : nullptr;
}

} // namespace orvan
