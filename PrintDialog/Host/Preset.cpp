#include "PrintDialog/Host/Preset.h"

#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/PrinterPage.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

constexpr const char* kPaperOption = "MediaType";
constexpr std::string_view kTypePrefix = "CustomType";

std::vector<CustomPaper> papersIn(const std::vector<StoredAnswer>& answers) {
    std::vector<platform::PropertyList> lists;
    for (const StoredAnswer& answer : answers)
        if (answer.list) lists.push_back(*answer.list);
    return customPapers(lists);
}

std::string typeOf(const std::string& choice) {
    return choice.starts_with(kTypePrefix) ? choice.substr(kTypePrefix.size()) : std::string();
}

std::vector<std::string> optionsOf(std::vector<std::string> panelOptions) {
    panelOptions.insert(panelOptions.end(), kOptionsBesideThePanel.begin(), kOptionsBesideThePanel.end());
    return panelOptions;
}

class Sentences {
public:
    void add(const std::string& sentence) { text_.append(text_.empty() ? "" : " ").append(sentence); }
    std::string take() { return std::move(text_); }

private:
    std::string text_;
};

// The choice that the preset's paper is now; "" when it is gone, which is said.
std::string paperNow(
    const Preset& preset, const DialogPPD& ppd, const std::vector<CustomPaper>& papers, Sentences& said) {
    const std::string& saved = preset.choices.at(kPaperOption);
    if (preset.paper.empty() || papers.empty()) return saved;
    const std::string type = typeOf(saved);
    const auto is = [&](const CustomPaper& paper) {
        return paper.name == preset.paper && paper.type == type;
    };
    auto found = std::ranges::find_if(papers, is);
    if (found == papers.end()) found = std::ranges::find(papers, preset.paper, &CustomPaper::name);
    if (found == papers.end()) {
        found = std::ranges::find(papers, type, &CustomPaper::type);
        if (found == papers.end()) {
            said.add(hostText(ppd.language(), "The printer has no paper “%1” any more.", {preset.paper}));
            return {};
        }
        said.add(hostText(ppd.language(), "“%1” is now called “%2”.", {preset.paper, found->name}));
    }
    return std::string(kTypePrefix) + found->type;
}

} // namespace

bool PresetPrinter::hasPresetsOf(const PresetPrinter& other) const {
    if (queue == other.queue) return true;
    return !device.empty() && device == other.device && model == other.model;
}

PresetPrinter presetPrinter(const OpenedQueue& opened) {
    const char* const model = opened.ppd->record()->modelname;
    return {.queue = opened.fetched.queue.name,
        .model = model != nullptr ? model : "",
        .device = opened.fetched.queue.deviceURI};
}

Preset presetOf(const std::string& name, const std::vector<std::string>& panelOptions, const DialogPPD& ppd,
    const std::vector<StoredAnswer>& answers) {
    Preset preset{.name = name, .printer = {}, .choices = {}, .paper = {}};
    for (const std::string& option : optionsOf(panelOptions))
        if (std::string choice = ppd.choiceOf(option); !choice.empty())
            preset.choices.emplace(option, std::move(choice));
    const auto paper = preset.choices.find(kPaperOption);
    if (paper == preset.choices.end() || typeOf(paper->second).empty()) return preset;
    const std::vector<CustomPaper> papers = papersIn(answers);
    const auto found = std::ranges::find(papers, typeOf(paper->second), &CustomPaper::type);
    if (found != papers.end())
        preset.paper = found->name;
    else if (ppd.isRenamed(kPaperOption, paper->second))
        preset.paper = ppd.choiceTitle(kPaperOption, paper->second);
    return preset;
}

Preset defaultPreset(const std::vector<std::string>& panelOptions, const DialogPPD& ppd) {
    Preset preset;
    for (const std::string& option : optionsOf(panelOptions))
        if (std::string choice = ppd.defaultChoiceOf(option); !choice.empty() && option != kPageSizeOption)
            preset.choices.emplace(option, std::move(choice));
    return preset;
}

PresetChoices choicesNow(
    const Preset& preset, const DialogPPD& ppd, const std::vector<StoredAnswer>& answers) {
    Sentences said;
    PresetChoices now;
    for (const auto& [option, saved] : preset.choices) {
        std::string choice = saved;
        if (option == kPaperOption) choice = paperNow(preset, ppd, papersIn(answers), said);
        if (choice.empty()) continue;
        if (ppd.isInFile(option, choice))
            now.choices.emplace(option, std::move(choice));
        else if (ppd.choiceOf(option).empty())
            said.add(hostText(ppd.language(), "This queue’s driver has no option %1 any more.", {option}));
        else
            said.add(hostText(ppd.language(), "This queue’s driver has no choice “%2” of %1 any more.",
                {ppd.optionTitle(option), choice}));
    }
    now.text = said.take();
    return now;
}

} // namespace orvan
