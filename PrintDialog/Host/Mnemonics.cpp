#include "PrintDialog/Host/Mnemonics.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace orvan {
namespace {

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool beginsWord(std::string_view text, std::size_t place) {
    return place == 0 || text[place - 1] == ' ' || text[place - 1] == '-';
}

std::optional<std::size_t> freeLetterIn(std::string_view text, const std::set<char>& taken, bool ofWords) {
    for (std::size_t place = 0; place < text.size(); ++place)
        if (isLetter(text[place]) && !taken.contains(lowered(text[place])) &&
            (!ofWords || beginsWord(text, place)))
            return place;
    return std::nullopt;
}

} // namespace

platform::ControlTitle Mnemonics::titled(const std::string& title, std::string_view latin) {
    platform::ControlTitle titled{.text = title};
    const bool hasLetters = std::ranges::any_of(title, isLetter);
    const std::string_view source = hasLetters ? std::string_view(title) : latin;
    std::optional<std::size_t> place = freeLetterIn(source, taken_, true);
    if (!place) place = freeLetterIn(source, taken_, false);
    if (!place) return titled;
    titled.letter = lowered(source[*place]);
    if (hasLetters) titled.place = place;
    taken_.insert(titled.letter);
    return titled;
}

} // namespace orvan
