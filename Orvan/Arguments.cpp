#include "Orvan/Arguments.h"

#include <charconv>
#include <stdexcept>

namespace orvan {

std::optional<double> numberIn(std::string_view text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stopped == end ? std::optional(value) : std::nullopt;
}

const Arguments::Values& Arguments::all(std::string_view name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) throw std::logic_error("this command has no argument " + std::string(name));
    return found->second;
}

bool Arguments::has(std::string_view name) const {
    return !all(name).empty();
}

std::string Arguments::text(std::string_view name) const {
    return optionalText(name).value_or("");
}

std::optional<std::string> Arguments::optionalText(std::string_view name) const {
    const Values& values = all(name);
    return values.empty() ? std::nullopt : std::optional(values.front());
}

std::optional<double> Arguments::number(std::string_view name) const {
    const std::optional<std::string> value = optionalText(name);
    return value ? numberIn(*value) : std::nullopt;
}

} // namespace orvan
