#include "Common/PDEChoice.h"

#include "Common/PPDUtilities.h"
#include "Formats/TextEncoding.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace orvan {

namespace {

const std::string* ifPresent(const std::optional<std::string>& text) {
    return text ? &*text : nullptr;
}

} // namespace

const std::string* PDEChoice::userTitle() {
    if (!userTitle_) userTitle_ = titleIn(choice_->text);
    return ifPresent(userTitle_);
}

const std::string* PDEChoice::ppdTitle() {
    if (!ppdTitle_) ppdTitle_ = platform::decodeASCII(fieldText(choice_->choice));
    return ifPresent(ppdTitle_);
}

bool PDEChoice::isDefaultChoice() const {
    return std::strncmp(choice_->choice, choice_->option->defchoice, sizeof choice_->choice) == 0;
}

std::string PDEChoice::description() {
    const auto orNull = [](const std::string* text) { return text != nullptr ? *text : "(null)"; };
    std::array<char, 24> address{};
    std::snprintf(address.data(), address.size(), "%p", static_cast<void*>(this));
    const ppd_option_t* option = choice_->option;
    return std::string("<PDEChoice ") + address.data() + " userTitle:\"" + orNull(userTitle()) +
           "\" ppdTitle:\"" + orNull(ppdTitle()) + "\" marked:" + (choice_->marked != 0 ? "YES" : "NO") +
           " choice:" + std::to_string(choice_ - option->choices + 1) + " of " +
           std::to_string(option->num_choices) + ">";
}

} // namespace orvan
