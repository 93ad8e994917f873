// Which letters reach the controls of a tab by the keyboard.
#pragma once

#include "Platform/Controls.h"

#include <set>
#include <string>
#include <string_view>

namespace orvan {

// Gives every title a letter of its own, as long as there are any.
class Mnemonics {
public:
    // `taken`: letters that the dialog around the tab has, in lower case.
    explicit Mnemonics(std::string_view taken) : taken_(taken.begin(), taken.end()) {}

    // The letter begins a word of the title where that is free, and else stands anywhere in it. A title
    // without letters of the keyboard gets one of `latin`'s behind it.
    platform::ControlTitle titled(const std::string& title, std::string_view latin);

private:
    std::set<char> taken_;
};

} // namespace orvan
