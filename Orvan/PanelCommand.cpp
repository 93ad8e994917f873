#include "BiDi/StoredAnswers.h"
#include "Formats/OneLine.h"
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/Interruption.h"
#include "Orvan/PPDArgument.h"
#include "Orvan/PrinterQuery.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/TabJson.h"
#include "Orvan/Waiting.h"
#include "OrvanPaperOptions/Source/OptionRows.h"
#include "Platform/Input.h"
#include "PrintDialog/Host/AdministratorSettings.h"
#include "PrintDialog/Host/DialogPrinter.h"
#include "PrintDialog/Host/InstalledFiles.h"
#include "PrintDialog/Host/LoadedPaper.h"
#include "PrintDialog/Host/PanelSession.h"
#include "PrintDialog/Host/PaperNames.h"
#include "PrintDialog/Host/PickNotice.h"
#include "PrintDialog/Host/PresetMenu.h"
#include "PrintDialog/Host/QueuePPD.h"
#include "PrintDialog/Host/TabText.h"
#include "PrintDialog/Host/TabTree.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace orvan {
namespace {

using Json = nlohmann::ordered_json;

struct PanelArguments {
    std::string ppdFile; // "" for a queue's
    std::string queue;
    std::string preset; // "" for none
    std::vector<std::string> sets;
    std::string release;
    std::vector<std::string> responses;
    std::chrono::duration<double> timeout{};
    bool json = false;
};

// One row of the panel as it is shown.
struct ShownRow {
    const OptionRowSpec& spec;
    platform::TextField* label;
    platform::PopUpButton* popUp;

    static ShownRow of(platform::View& root, const OptionRowSpec& spec) {
        return {spec, dynamic_cast<platform::TextField*>(root.viewWithTag(spec.labelTag())),
            dynamic_cast<platform::PopUpButton*>(root.viewWithTag(spec.popUpTag()))};
    }
};

// Whole points without a fraction.
Json points(double value) {
    const auto whole = static_cast<std::int64_t>(value);
    return static_cast<double>(whole) == value ? Json(whole) : Json(value);
}

Json pointJson(const platform::View* view) {
    const platform::Point origin = view != nullptr ? view->frame().origin : platform::Point{};
    return Json::array({points(origin.x), points(origin.y)});
}

Json rowJson(PanelSession& session, const ShownRow& row) {
    Json items = Json::array();
    Json selected = nullptr;
    if (row.popUp != nullptr) {
        const ShownPopUp shown = session.shown(*row.popUp);
        for (std::size_t i = 0; i < shown.items.size(); ++i) {
            if (static_cast<std::int64_t>(i) == shown.selected) selected = items.size();
            const ShownItem& item = shown.items[i];
            if (!item.isLine) items.push_back({{"title", item.title}, {"keyword", item.keyword}});
        }
    }
    return {{"row", row.spec.row}, {"keyword", row.spec.keyword},
        {"label", row.label != nullptr ? row.label->stringValue() : ""},
        {"enabled", row.popUp != nullptr && row.popUp->isEnabled()},
        {"hidden", row.popUp == nullptr || row.popUp->isHidden()}, {"labelOrigin", pointJson(row.label)},
        {"popUpOrigin", pointJson(row.popUp)}, {"items", std::move(items)},
        {"selected", std::move(selected)}};
}

void printJson(PanelSession& session, platform::View& root, const TabTree& tab) {
    platform::PDEPanel& panel = session.panel();
    Json summary = Json::object();
    for (const auto& [title, value] : session.summary())
        summary[title] = value;
    Json rows = Json::array();
    for (const OptionRowSpec& spec : kOptionRows)
        rows.push_back(rowJson(session, ShownRow::of(root, spec)));
    const Json answer{{"schemaVersion", 1}, {"kind", panel.panelKind()}, {"name", panel.panelName()},
        {"supportedPPDOptionKeys", panel.supportedPPDOptionKeys()}, {"height", points(root.frame().height)},
        {"rows", std::move(rows)}, {"summary", std::move(summary)}, {"tab", tabJson(*tab.root())}};
    std::cout << jsonText(answer) << '\n';
}

void printText(PanelSession& session, const TabTree& tab) {
    std::cout << session.panel().panelName() << "\n\n";
    std::istringstream lines(tabText(*tab.root()));
    for (std::string line; std::getline(lines, line);)
        std::cout << "  " << line << '\n';
}

// Picks the choice through its pop-up. Answers what is wrong, or nothing.
std::optional<std::string> pick(platform::View& root, const std::string& option, const std::string& choice) {
    const auto spec = std::ranges::find(kOptionRows, option, &OptionRowSpec::keyword);
    if (spec == kOptionRows.end()) {
        std::string known;
        for (const OptionRowSpec& row : kOptionRows)
            known += std::string(known.empty() ? "" : ", ") + row.keyword;
        return "the panel has no option " + option + "; it has " + known;
    }
    platform::PopUpButton* const popUp = ShownRow::of(root, *spec).popUp;
    if (popUp == nullptr || !popUp->isEnabled() || popUp->isHidden())
        return "this printer has no option " + option;
    if (popUp->items().empty()) return "option " + option + " has no choices";
    const auto& items = popUp->items();
    const auto item = std::ranges::find(items, choice, &platform::MenuItem::keyword);
    if (item == items.end() || !popUp->pick(item - items.begin())) {
        std::string known;
        for (const platform::MenuItem& other : items)
            known += (known.empty() ? "" : ", ") + other.keyword;
        return "option " + option + " has no choice " + choice + "; it has " + known;
    }
    return std::nullopt;
}

// Hands the panel a property list as the printer's answer. Answers what is wrong, or nothing.
std::optional<std::string> deliver(platform::PDEPanel& panel, const std::string& file) {
    platform::Failure error;
    const std::optional<std::string> bytes = platform::readFile(file, error);
    if (!bytes) return *error;
    const std::optional<platform::PropertyList> response = platform::PropertyList::read(*bytes, error);
    if (!response) return platform::nameOfInput(file) + " is no property list: " + *error;
    panel.receivedPrinterAnswer(*response);
    return std::nullopt;
}

// A panel, and what is known of its printer.
struct AskedPanel {
    std::unique_ptr<PanelSession> session;
    std::shared_ptr<DialogPrinter> printer; // null for a PPD without a queue
    std::unique_ptr<PaperNames> names;      // null without a printer
    std::unique_ptr<PresetMenu> presets;    // null without a printer, or where there are none

    std::vector<StoredAnswer> answers() const {
        return names != nullptr ? names->answers() : storedAnswers(session->ppd().record());
    }
    Preset current(const std::string& name) const {
        return presetOf(name, session->panel().supportedPPDOptionKeys(), session->ppd(), answers());
    }
};

// As a dialog shows it.
void willShow(AskedPanel& panel) {
    PanelSession& session = *panel.session;
    if (panel.names != nullptr)
        panel.names->willShow();
    else if (session.panel().awaitsPrinter()) // in vain
        for (const StoredAnswer& answer : storedAnswers(session.ppd().record()))
            if (answer.list) session.panel().receivedPrinterAnswer(*answer.list);
    session.willShow();
}

// The tab, for a document of the marked size.
void fillTab(TabTree& tab, AskedPanel& panel, const PickNotice& notice) {
    PanelSession& session = *panel.session;
    const std::vector<StoredAnswer> answers = panel.answers();
    if (panel.presets != nullptr) panel.presets->update(panel.current("").choices);
    tab.showPanel(session, panel.presets.get(), "");
    tab.setLine(lineOf(notice, notLoadedText(answers, session.ppd(), session.ppd().choiceOf(kPageSizeOption)),
                    panel.names != nullptr ? panel.names->line() : ""),
        notice.canBeUndone);
    tab.update(answers);
}

// As a person would in the tab. Answers what is wrong, or nothing.
std::optional<std::string> choosePreset(AskedPanel& panel, const std::string& name, PickNotice& notice) {
    if (panel.presets == nullptr) return "presets are switched off (" + administratorSettings().file + ")";
    const PresetStore::Listed* const listed = panel.presets->listing().find(name);
    if (listed == nullptr)
        return "queue " + panel.presets->store().printer().queue + " has no preset \"" + name +
               "\" (\"orvan presets list\" lists them)";
    DialogPPD& ppd = panel.session->ppd();
    const PresetChoices wanted = choicesNow(listed->preset, ppd, panel.answers());
    const MarkResult settled = panel.session->markElsewhere(wanted.choices);
    notice = presetNotice(ppd, wanted, settled);
    if (!notice.text.empty()) say(platform::onOneLine(notice.text));
    panel.presets->applied(listed->preset, panel.current("").choices);
    return std::nullopt;
}

int showPanel(AskedPanel& panel, const PanelArguments& arguments) {
    PanelSession& session = *panel.session;
    for (const std::string& file : arguments.responses)
        if (const auto problem = deliver(session.panel(), file)) return cannot(*problem);
    willShow(panel);
    // What the dialog would say of each pick.
    PickNotice notice;
    session.setPickHandler([&](const std::string& option, const std::string&, const MarkResult& result) {
        notice = pickNotice(session.ppd(), result, option);
        if (!notice.text.empty()) say(platform::onOneLine(notice.text));
    });
    platform::View* const root = session.panel().panelView();
    if (root == nullptr)
        return cannot("the panel's view resource cannot be loaded; is the package installed whole?");
    if (!arguments.preset.empty())
        if (const auto problem = choosePreset(panel, arguments.preset, notice)) return cannot(*problem);
    for (const std::string& set : arguments.sets) {
        const std::size_t equals = set.find('=');
        if (const auto problem = pick(*root, set.substr(0, equals), set.substr(equals + 1)))
            return cannot("cannot set " + set + ": " + *problem);
    }
    TabTree tab({});
    fillTab(tab, panel, notice);
    arguments.json ? printJson(session, *root, tab) : printText(session, tab);
    for (const std::string& set : arguments.sets) {
        const std::size_t equals = set.find('=');
        const std::string option = set.substr(0, equals);
        const std::string now = session.ppd().choiceOf(option);
        if (now == set.substr(equals + 1)) continue;
        std::string problem = set;
        problem.append(" was undone by another pick: it is ").append(option).append("=").append(now);
        return cannot(problem + " now");
    }
    return kDone;
}

// False, and a message is written, when the person interrupts.
bool waitForPrinter(const AskedPanel& panel, const PanelArguments& arguments) {
    const platform::PDEPanel& asked = panel.session->panel();
    waitForPrinters([&asked] { return !asked.awaitsPrinter(); }, arguments.timeout,
        [&arguments] { return "Waiting for printer " + arguments.queue; });
    // Its answer comes too late for anybody, and its job keeps the next question waiting.
    const bool isGivenUp = arguments.timeout.count() > 0 && asked.awaitsPrinter();
    if (panel.printer != nullptr && (wasInterrupted() || isGivenUp))
        panel.printer->printer().takeBack(SchedulerPatience(arguments.timeout).time());
    if (!wasInterrupted()) return true;
    cannot("interrupted; the printer is not asked any more");
    return false;
}

int runPanel(const PanelArguments& arguments) {
    // Before the bundle is loaded: the release is asked for once.
    setSystemRelease(arguments.release);

    platform::Failure error;
    AskedPanel panel;
    std::unique_ptr<DialogPPD> ppd;
    PresetPrinter presetsOf;
    if (arguments.ppdFile.empty()) {
        const auto time = SchedulerPatience(arguments.timeout).time();
        if (auto opened = fetchQueue(arguments.queue, time, error)) {
            presetsOf = presetPrinter(*opened);
            ppd = std::move(opened->ppd);
            panel.printer = std::make_shared<DialogPrinter>(std::make_unique<SchedulerPrinter>(
                std::move(opened->fetched), SchedulerPrinterOptions{.deadline = time}));
        }
    } else {
        ppd = openPPD(arguments.ppdFile, error);
    }
    if (ppd == nullptr) return cannot(*error);
    const auto bundle = platform::Bundle::open(paperOptionsBundleFolder(), error);
    if (bundle == nullptr) return cannot(*error);
    const InterruptionGuard guard; // the panel asks the printer when it is created
    PaperNames::Start start{.language = ppd->language(),
        .stored = storedAnswers(ppd->record()),
        .hasCommands = ppdFindAttr(ppd->record(), "cupsCommands", nullptr) != nullptr};
    panel.session = PanelSession::create(bundle, std::move(ppd), panel.printer, error);
    if (panel.session != nullptr && panel.printer != nullptr)
        panel.names = std::make_unique<PaperNames>(
            panel.session->panel(), panel.printer, std::move(start), [] {}, [] {});
    if (panel.names != nullptr && administratorSettings().hasPresets)
        panel.presets = std::make_unique<PresetMenu>(PresetStore(presetsOf),
            defaultPreset(panel.session->panel().supportedPPDOptionKeys(), panel.session->ppd()),
            panel.session->ppd().language(), PresetMenu::Actions{});
    if (panel.session != nullptr && !waitForPrinter(panel, arguments)) return kNotDone;
    if (panel.session != nullptr) return showPanel(panel, arguments);
    if (error) return cannot(*error);

    if (arguments.json) std::cout << jsonText(Json{{"schemaVersion", 1}, {"panel", nullptr}}) << '\n';
    return cannot("the PPD has none of the panel's options, so there is no panel for it");
}

int showPanelFor(const Arguments& arguments) {
    SchedulerProblem problem;
    std::optional<std::string> queue;
    if (!arguments.has("--ppd"))
        queue = queueIn(arguments, SchedulerPatience(timeoutIn(arguments)).time(), problem);
    if (problem.kind != SchedulerProblem::Kind::none) return cannot(problem.text);
    if (!queue && arguments.has("--preset"))
        return cannot("a preset belongs to a queue; name it with -q instead of a PPD file");
    return runPanel({.ppdFile = arguments.text("--ppd"),
        .queue = queue.value_or(""),
        .preset = arguments.text("--preset"),
        .sets = arguments.all("--set"),
        .release = arguments.text("--release"),
        .responses = arguments.all("--response"),
        .timeout = timeoutIn(arguments),
        .json = arguments.has("--json")});
}

constexpr ArgumentSpec kPanelArguments[]{
    {.name = "--ppd",
        .text = "The printer's PPD file; - is standard input",
        .value = "FILE",
        .check = checkFile,
        .group = "printer"},
    inGroup(kQueueOption, "printer"),
    {.name = "--preset", .text = "Choose a preset of the queue's first (\"orvan presets\")", .value = "NAME"},
    {.name = "--set",
        .text = "Pick a choice in the panel, as a person would; repeatable",
        .value = "KEYWORD=CHOICE",
        .count = ArgumentSpec::Count::repeatable,
        .check = checkSet},
    kServerOption,
    kReleaseOption,
    {.name = "--response",
        .text =
            "A property list to hand to the panel as the printer's answer; repeatable, - is standard input",
        .value = "FILE",
        .count = ArgumentSpec::Count::repeatable},
    kTimeoutOption,
    kJSONFlag,
};

} // namespace

const Command kPanelCommand{
    .name = "panel",
    .text = "Show the paper options panel for a printer, without a display",
    .arguments = kPanelArguments,
    .footer = "Examples:\n  orvan panel -q Office\n"
              "  orvan panel --ppd Orvan-4500.ppd --set MediaType=Transparency --json",
    .run = showPanelFor,
};

} // namespace orvan
