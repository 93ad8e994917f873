#include "PrintDialog/Host/PickNotice.h"

#include "PrintDialog/Host/HostText.h"

namespace orvan {
namespace {

std::string joined(const std::string& text, const std::string& sentence) {
    return text + (text.empty() || sentence.empty() ? "" : " ") + sentence;
}

std::string textOf(const DialogPPD& ppd, const MarkResult& result, const std::string& asked) {
    std::string text;
    const auto add = [&text](const std::string& sentence) { text = joined(text, sentence); };
    for (const ChoiceChange& change : result.changes) {
        if (change.option == asked) continue;
        add(hostText(ppd.language(), "%1 changed from “%2” to “%3”.",
            {ppd.optionTitle(change.option), ppd.choiceTitle(change.option, change.from),
                ppd.choiceTitle(change.option, change.to)}));
    }
    for (const auto& [option, choice] : result.conflicts) {
        if (option == asked) continue;
        add(hostText(ppd.language(), "This does not go together with %1: “%2”.",
            {ppd.optionTitle(option), ppd.choiceTitle(option, choice)}));
    }
    return text;
}

} // namespace

PickNotice pickNotice(const DialogPPD& ppd, const MarkResult& result, const std::string& asked) {
    const bool changedOthers = result.changes.size() > 1 && result.changes.front().option == asked;
    return {textOf(ppd, result, asked), changedOthers && asked != kPageSizeOption};
}

PickNotice presetNotice(const DialogPPD& ppd, const PresetChoices& wanted, const MarkResult& settled) {
    return {joined(wanted.text, textOf(ppd, settled, "")), false};
}

std::string lineOf(const PickNotice& notice, const std::string& notLoaded, const std::string& names) {
    const std::string line = joined(notice.text, notLoaded);
    return line.empty() ? names : line;
}

} // namespace orvan
