// What a person typed behind a command.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// The values of a command's arguments, which were checked. An argument goes by the last of its names
// ("--queue"). To ask for one that the command does not have is a mistake of ours: std::logic_error.
class Arguments {
public:
    using Values = std::vector<std::string>;

    // Whether the command has it.
    bool knows(std::string_view name) const { return values_.contains(name); }
    // Whether it was given.
    bool has(std::string_view name) const;
    // All that was given for it, in order.
    const Values& all(std::string_view name) const;
    // Its value; "" when it was not given.
    std::string text(std::string_view name) const;
    std::optional<std::string> optionalText(std::string_view name) const;
    // Its value as a number; nothing when it was not given.
    std::optional<double> number(std::string_view name) const;

    void set(std::string name, Values values) {
        values_.insert_or_assign(std::move(name), std::move(values));
    }

private:
    std::map<std::string, Values, std::less<>> values_;
};

// The whole text as a decimal number, whatever the locale; nothing when it is none.
std::optional<double> numberIn(std::string_view text);

} // namespace orvan
