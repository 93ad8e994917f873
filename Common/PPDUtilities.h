// Lists of PPD choices, and look-ups in them.
#pragma once

#include "Common/PDEChoice.h"

#include <cups/ppd.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orvan {

// The text of a fixed-size field of a CUPS record, without its terminator and never past its end.
template <std::size_t size>
std::string_view fieldText(const char (&field)[size]) {
    return {field, ::strnlen(field, size)};
}

// The title in a record's field. libcups cuts what does not fit, perhaps inside a character: that character
// is left out. Nothing for a text that is not UTF-8.
std::optional<std::string> titleIn(std::string_view field, std::size_t fieldSize);
template <std::size_t size>
std::optional<std::string> titleIn(const char (&field)[size]) {
    return titleIn(fieldText(field), size);
}

// One new wrapper for each of the option's choice records, in PPD order; null for a null option.
std::unique_ptr<PDEChoiceList> ArrayFromPPDOption(const ppd_option_t* option);

// The first entry with the choice keyword or, without a keyword, the first that is its option's default; null
// when there is none.
std::shared_ptr<PDEChoice> FindChoiceForString(
    std::optional<std::string_view> choiceKeyword, const PDEChoiceList& choices);

// The position of the entry that FindChoiceForString answers; -1 when there is none.
std::int64_t FindIndexForChoice(std::optional<std::string_view> choiceKeyword, const PDEChoiceList& choices);

// Whether one of the option's records has exactly this keyword; false for a null option.
bool HasOptionKey(const ppd_option_t* option, std::string_view choiceKeyword);

// The option's own title; nothing when its text is not UTF-8.
std::optional<std::string> CreateOptionTitle(const ppd_option_t& option);

} // namespace orvan
