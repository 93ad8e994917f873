#include "Formats/OneLine.h"
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/SchedulerPatience.h"
#include "OrvanPaperOptions/Source/OptionRows.h"
#include "PrintDialog/Host/AdministratorSettings.h"
#include "PrintDialog/Host/PickNotice.h"
#include "PrintDialog/Host/PresetStore.h"
#include "PrintDialog/Host/QueuePPD.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kEnglish = "en";

// The queue, as far as the scheduler knows it.
struct PresetsQueue {
    std::string name;
    std::optional<OpenedQueue> opened; // nothing when it is gone, or the scheduler is
    platform::Failure problem;         // why

    PresetStore store() const {
        return PresetStore(opened ? presetPrinter(*opened) : PresetPrinter{name, {}, {}});
    }
};

int done(const PresetProblem& problem) {
    return problem.kind == PresetProblem::Kind::none ? kDone : cannot(problem.text(kEnglish));
}

void complain(const PresetStore::Listing& listing) {
    for (const auto& file : listing.unreadable)
        say("the preset " + file.string() + " cannot be read and is left alone");
}

Json presetJson(const Preset& preset) {
    return {
        {"choices", preset.choices}, {"paper", preset.paper.empty() ? Json(nullptr) : Json(preset.paper)}};
}

Json listedJson(const PresetStore::Listed& listed) {
    Json json{{"name", listed.preset.name}, {"administrator", listed.isFixed}};
    json.update(presetJson(listed.preset));
    return json;
}

int list(const PresetsQueue& queue, const Arguments& arguments) {
    const PresetStore::Listing listing = queue.store().list();
    complain(listing);
    if (arguments.has("--json")) {
        Json presets = Json::array();
        for (const PresetStore::Listed& listed : listing.presets)
            presets.push_back(listedJson(listed));
        const Json lastUsed = listing.lastUsed ? presetJson(*listing.lastUsed) : Json(nullptr);
        std::cout << jsonText(Json{{"schemaVersion", 1}, {"queue", queue.name},
                         {"presets", std::move(presets)}, {"lastUsed", lastUsed}})
                  << '\n';
        return kDone;
    }
    for (const PresetStore::Listed& listed : listing.presets)
        std::cout << listed.preset.name << (listed.isFixed ? " (the administrator's)" : "") << '\n';
    return kDone;
}

int show(const PresetsQueue& queue, const Arguments& arguments) {
    const std::string name = arguments.text("NAME");
    const PresetStore::Listing listing = queue.store().list();
    complain(listing);
    const PresetStore::Listed* const listed = listing.find(name);
    if (listed == nullptr) return done({PresetProblem::Kind::missing, name});
    if (arguments.has("--json")) {
        Json json{{"schemaVersion", 1}, {"queue", queue.name}};
        json.update(listedJson(*listed));
        std::cout << jsonText(json) << '\n';
        return kDone;
    }
    for (const auto& [option, choice] : listed->preset.choices) {
        const bool isPaper = option == "MediaType" && !listed->preset.paper.empty();
        std::cout << option << '=' << choice
                  << (isPaper ? "  " + platform::onOneLine(listed->preset.paper) : "") << '\n';
    }
    return kDone;
}

std::vector<std::string> panelOptions() {
    std::vector<std::string> options;
    options.reserve(kOptionRows.size());
    for (const OptionRowSpec& row : kOptionRows)
        options.emplace_back(row.keyword);
    return options;
}

int save(PresetsQueue& queue, const Arguments& arguments) {
    if (!queue.opened) return cannot(queue.problem.value_or(""));
    DialogPPD& ppd = *queue.opened->ppd;
    std::map<std::string, std::string> choices;
    for (const std::string& set : arguments.all("--set")) {
        const std::size_t equals = set.find('=');
        const std::string option = set.substr(0, equals);
        const std::string choice = set.substr(equals + 1);
        if (!ppd.isInFile(option, choice))
            return cannot("cannot set " + set + ": the PPD of queue " + queue.name + " has no such " +
                          (ppd.choiceOf(option).empty() ? "option" : "choice"));
        choices[option] = choice;
    }
    const PickNotice notice = pickNotice(ppd, ppd.markAll(choices), "");
    if (!notice.text.empty()) say(platform::onOneLine(notice.text));
    Preset preset = presetOf(arguments.text("NAME"), panelOptions(), ppd, storedAnswers(ppd.record()));
    std::erase_if(preset.choices, [&choices](const auto& choice) {
        return choice.first == kPageSizeOption && !choices.contains(choice.first);
    });
    return done(queue.store().save(std::move(preset)));
}

int runPresets(const Arguments& arguments) {
    const std::string doing = arguments.text("DOING");
    if (doing != "list" && !arguments.has("NAME")) {
        say("\"orvan presets " + doing + "\" needs the name of a preset");
        return kWrongUsage;
    }
    if (doing != "save" && arguments.has("--set")) {
        say("--set is for \"orvan presets save\"");
        return kWrongUsage;
    }
    if (const AdministratorSettings settings = administratorSettings(); !settings.hasPresets)
        return cannot("presets are switched off (" + settings.file + ")");
    const auto time = SchedulerPatience(timeoutIn(arguments)).time();
    SchedulerProblem problem;
    const auto name = queueIn(arguments, time, problem);
    if (!name) return cannot(problem.text);
    PresetsQueue queue{.name = *name, .opened = {}, .problem = {}};
    queue.opened = fetchQueue(*name, time, queue.problem);
    if (!queue.opened && doing != "save") say(*queue.problem + "; going by the queue's name alone");
    if (doing == "list") return list(queue, arguments);
    if (doing == "show") return show(queue, arguments);
    if (doing == "save") return save(queue, arguments);
    return done(queue.store().remove(arguments.text("NAME")));
}

std::string checkDoing(const std::string& doing) {
    constexpr std::array<std::string_view, 4> kDoings{"list", "show", "save", "delete"};
    return std::ranges::find(kDoings, doing) != kDoings.end()
               ? ""
               : "\"" + doing + "\" is none of list, show, save and delete";
}

constexpr ArgumentSpec kPresetsArguments[]{
    kQueueOption,
    {.name = "DOING",
        .text = "list, show, save or delete",
        .count = ArgumentSpec::Count::required,
        .check = checkDoing},
    {.name = "NAME", .text = "The preset; not for list"},
    {.name = "--set",
        .text = "With save: a choice that is not the PPD's default; repeatable",
        .value = "KEYWORD=CHOICE",
        .count = ArgumentSpec::Count::repeatable,
        .check = checkSet},
    kServerOption,
    kTimeoutOption,
    kJSONFlag,
};

} // namespace

const Command kPresetsCommand{
    .name = "presets",
    .text = "List, show, save and delete the named sets of choices for a queue",
    .arguments = kPresetsArguments,
    .footer =
        "Examples:\n"
        "  orvan presets -q Office list\n"
        "  orvan presets -q Office save \"Certificates\" --set MediaType=CustomType3 --set Duplex=None\n"
        "  orvan presets -q Office show \"Certificates\" --json",
    .run = runPresets,
};

} // namespace orvan
