#include "Common/PPDUtilities.h"

#include "Formats/TextEncoding.h"

#include <algorithm>
#include <span>

namespace orvan {
namespace {

std::span<ppd_choice_t> records(const ppd_option_t& option) {
    return {option.choices, static_cast<std::size_t>(std::max(option.num_choices, 0))};
}

} // namespace

std::optional<std::string> titleIn(std::string_view field, std::size_t fieldSize) {
    auto title = platform::decodeUTF8(field);
    if (title || field.size() + 1 < fieldSize) return title;
    constexpr auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80; };
    while (!field.empty() && isContinuation(field.back()))
        field.remove_suffix(1);
    if (!field.empty()) field.remove_suffix(1);
    return platform::decodeUTF8(field);
}

std::unique_ptr<PDEChoiceList> ArrayFromPPDOption(const ppd_option_t* option) {
    if (option == nullptr) return nullptr;
    auto list = std::make_unique<PDEChoiceList>();
    list->reserve(records(*option).size());
    for (ppd_choice_t& choice : records(*option))
        list->push_back(PDEChoice::choiceWithChoice(&choice));
    return list;
}

std::int64_t FindIndexForChoice(std::optional<std::string_view> choiceKeyword, const PDEChoiceList& choices) {
    const auto qualifies = [&](const std::shared_ptr<PDEChoice>& entry) {
        if (!choiceKeyword) return entry->isDefaultChoice();
        const std::string* keyword = entry->ppdTitle();
        return keyword != nullptr && *keyword == *choiceKeyword;
    };
    const auto found = std::find_if(choices.begin(), choices.end(), qualifies);
    return found == choices.end() ? -1 : found - choices.begin();
}

std::shared_ptr<PDEChoice> FindChoiceForString(
    std::optional<std::string_view> choiceKeyword, const PDEChoiceList& choices) {
    const std::int64_t index = FindIndexForChoice(choiceKeyword, choices);
    return index < 0 ? nullptr : choices[static_cast<std::size_t>(index)];
}

bool HasOptionKey(const ppd_option_t* option, std::string_view choiceKeyword) {
    if (option == nullptr) return false;
    const auto matches = [&](const ppd_choice_t& c) { return fieldText(c.choice) == choiceKeyword; };
    return std::ranges::any_of(records(*option), matches);
}

std::optional<std::string> CreateOptionTitle(const ppd_option_t& option) {
    return titleIn(option.text);
}

} // namespace orvan
