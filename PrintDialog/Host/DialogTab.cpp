#include "PrintDialog/Host/DialogTab.h"

#include "Common/Utilities/DeviceChecks.h"
#include "Platform/SystemLog.h"
#include "PrintDialog/Host/AdministratorSettings.h"
#include "PrintDialog/Host/DialogMemory.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/InstalledFiles.h"
#include "PrintDialog/Host/LoadedPaper.h"

#include <utility>

namespace orvan {
namespace {

constexpr double kLineInterval = 30; // seconds
// Bytes of answers that nobody notices the main loop decode.
constexpr std::size_t kAnswerBudget = std::size_t{512} * 1024;

// The plug-in's bundle, opened with the process's first print dialog; null, with one line in the log, when it
// is not there or damaged. It stays for the life of the process.
std::shared_ptr<platform::Bundle> paperOptionsBundle() {
    static const auto* const bundle = [] {
        platform::Failure error;
        auto opened = platform::Bundle::open(paperOptionsBundleFolder(), error);
        if (opened == nullptr) platform::systemLog("paper options are off: " + *error);
        return new std::shared_ptr<platform::Bundle>(std::move(opened));
    }();
    return *bundle;
}

void logOnce(const std::string& text) {
    static auto* const logged = new std::set<std::string>;
    if (logged->insert(text).second) platform::systemLog(text);
}

} // namespace

std::unique_ptr<DialogTab> DialogTab::create(ToolkitDialog& toolkit, std::optional<std::string> preset) {
    std::shared_ptr<platform::Bundle> bundle = paperOptionsBundle();
    if (bundle == nullptr || !administratorSettings().showsTab) return nullptr;
    return std::unique_ptr<DialogTab>(new DialogTab(toolkit, std::move(bundle), std::move(preset)));
}

DialogTab::DialogTab(
    ToolkitDialog& toolkit, std::shared_ptr<platform::Bundle> bundle, std::optional<std::string> preset)
    : toolkit_(toolkit),
      bundle_(std::move(bundle)),
      tree_({.undo = [this] { undo(); },
          .picked = [this] { updateTree(); },
          .unfolded =
              [this](bool unfolded) {
                  rememberUnfoldedDetails(unfolded);
                  toolkit_.treeChanged();
              }}),
      firstPreset_(std::move(preset)) {}

DialogTab::~DialogTab() {
    endSession();
}

void DialogTab::printerSelected(const std::string& queue) {
    request_.drop();
    isReplacing_ = false;
    endSession();
    queue_ = queue;
    if (queue_.empty()) return;
    request_ = openQueue(queue_, SchedulerWorker::kDialogDeadline,
        [this](std::optional<OpenedQueue> opened, const QueueFailure& failure) {
            queueArrived(std::move(opened), failure);
        });
}

void DialogTab::queueArrived(std::optional<OpenedQueue> opened, const QueueFailure& failure) {
    if (!opened) {
        if (failure.isTrouble)
            logOnce("no paper options for printer " + queue_ + ": " + failure.problem.text);
        return;
    }
    if (auto session = openSession(
            *std::move(opened), administratorSettings().asksPrinter ? Question::asked : Question::forbidden))
        startSession(std::move(session));
}

std::unique_ptr<PanelSession> DialogTab::openSession(OpenedQueue opened, Question question) {
    ppd_file_t* const record = opened.ppd->record();
    printer_ = presetPrinter(opened);
    if (MyCheckPDEContextCUPS(record) != kPDEContextValid) return nullptr;
    PaperNames::Start start{.language = opened.ppd->language(),
        .stored = storedAnswers(record, kAnswerBudget),
        .hasCommands = ppdFindAttr(record, "cupsCommands", nullptr) != nullptr,
        .asksPrinter = question == Question::asked,
        .isAnswered = question == Question::answered};
    const auto printer = std::make_shared<DialogPrinter>(std::make_unique<SchedulerPrinter>(
        std::move(opened.fetched), SchedulerPrinterOptions{.deadline = SchedulerWorker::kDialogDeadline,
                                       .answerBudget = kAnswerBudget,
                                       .asksPrinter = question == Question::asked}));
    platform::Failure error;
    auto session = PanelSession::create(bundle_, std::move(opened.ppd), printer, error);
    if (session == nullptr) {
        if (error) logOnce("paper options are off: " + *error);
        return nullptr;
    }
    printer->printer().setRefusalHandler(
        [queue = queue_](const std::string& why) { logOnce("printer " + queue + " was not asked: " + why); });
    names_ = std::make_unique<PaperNames>(
        session->panel(), printer, std::move(start), [this] { namesChanged(); },
        [this] { replaceSession(); });
    return session;
}

void DialogTab::startSession(std::unique_ptr<PanelSession> session) {
    const auto& keys = session->panel().supportedPPDOptionKeys();
    carried_ = {keys.begin(), keys.end()};
    useSession(std::move(session));
    tree_.setUnfolded(remembersUnfoldedDetails());
    openPresets();
    awaitsFirstPreset_ = firstPreset_.has_value();
    toolkit_.openOptions();

    // What the application remembered is where the marks start.
    std::map<std::string, std::string> initial = toolkit_.optionValues();
    if (std::string size = pageSizeChoice(); !size.empty()) initial[kPageSizeOption] = std::move(size);
    const MarkResult started = session_->markElsewhere(initial);
    toolkit_.showTab(session_->panel().panelName(), tree_.root());
    lineTimer_ = platform::RepeatingTimer::schedule(
        kLineInterval, [this](platform::RepeatingTimer&) { updateLine(); }, "line");
    writeToDialog(started, "");
    report(started, "");
    if (names_->isReady()) chooseFirstPreset();
    if (toolkit_.isTabInFront()) tabShown();
}

void DialogTab::useSession(std::unique_ptr<PanelSession> session) {
    session_ = std::move(session);
    session_->setPickHandler([this](const std::string& option, const std::string& choice,
                                 const MarkResult& result) { pickedInPanel(option, choice, result); });
}

void DialogTab::namesChanged() {
    updateLine();
    if (names_->isReady()) chooseFirstPreset();
    if (toolkit_.isTabInFront() && !tree_.hasPanel()) tabShown();
}

// Called again and again until it is done. The new panel's question is the one that was just answered.
void DialogTab::replaceSession() {
    const auto isBusy = [this] {
        return toolkit_.isBusy() || (presets_ != nullptr && presets_->isEditing());
    };
    if (isReplacing_ || isBusy()) return;
    isReplacing_ = true;
    request_ = openQueue(queue_, SchedulerWorker::kDialogDeadline,
        [this, isBusy](std::optional<OpenedQueue> opened, const QueueFailure&) {
            if (!opened) return; // and nobody is asked again and again
            isReplacing_ = false;
            if (isBusy()) return;
            const DialogPPD::Marks marks = session_->ppd().marks();
            const std::string focused = tree_.optionOf(toolkit_.focusedView());
            names_.reset();
            tree_.dropPanel();
            auto session = openSession(*std::move(opened), Question::answered);
            if (session == nullptr) return endSession();
            useSession(std::move(session));
            session_->markElsewhere(marks);
            updateLine();
            if (!toolkit_.isTabInFront()) return toolkit_.treeChanged();
            tabShown();
            if (const platform::Menu* const menu = tree_.menuOf(focused)) toolkit_.focus(*menu);
        });
}

void DialogTab::endSession() {
    toolkit_.hideTab();
    toolkit_.closeOptions();
    if (lineTimer_ != nullptr) lineTimer_->stop();
    lineTimer_.reset();
    notice_ = {};
    undoable_.reset();
    tree_.dropPanel();
    tree_.setLine("", false);
    presets_.reset();
    names_.reset();
    session_.reset();
    carried_.clear();
}

void DialogTab::tabShown() {
    if (session_ == nullptr) return;
    updateLine();
    if (!names_->isReady()) return;
    chooseFirstPreset();
    if (!session_->wasShown()) names_->willShow();
    session_->willShow();
    if (presets_ != nullptr && !presets_->isEditing()) presets_->reload();
    if (!tree_.hasPanel()) tree_.showPanel(*session_, presets_.get(), toolkit_.takenLetters());
    updateLine(); // the papers have their names now
    updateTree();
}

void DialogTab::paperChanged() {
    if (session_ == nullptr) return;
    updateLine();
    if (const std::string size = pageSizeChoice(); !size.empty()) optionChanged(kPageSizeOption, size);
}

void DialogTab::pickedInPanel(
    const std::string& option, const std::string& choice, const MarkResult& result) {
    // A pick of what was marked already is one as well: it is no longer left to the printer.
    if (session_->ppd().choiceOf(option) == choice) writeToDialog(option, choice);
    writeToDialog(result, option);
    report(result, result.changes.empty() ? "" : result.changes.front().option);
    if (!session_->ppd().isInFile(option, choice))
        notice_.text =
            hostText(session_->ppd().language(), "The driver of this queue cannot name “%1” to the printer.",
                {session_->ppd().choiceTitle(option, choice)});
    updateLine();
}

void DialogTab::optionChanged(const std::string& keyword, const std::string& choice) {
    if (session_ == nullptr) return;
    DialogPPD& ppd = session_->ppd();
    const std::string marked = choice.empty() ? ppd.defaultChoiceOf(keyword) : choice;
    const MarkResult result = session_->markElsewhere(keyword, marked);
    if (result.changes.empty() && result.conflicts.empty()) return;
    writeToDialog(result, keyword);
    report(result, keyword);
    updateTree();
}

void DialogTab::writeToDialog(const MarkResult& result, const std::string& except) {
    for (const ChoiceChange& change : result.changes)
        if (change.option != except) writeToDialog(change.option, change.to);
}

void DialogTab::writeToDialog(const std::string& option, const std::string& choice) {
    carried_.insert(option);
    toolkit_.writeOption(option, choice);
}

void DialogTab::report(const MarkResult& result, const std::string& asked) {
    notice_ = pickNotice(session_->ppd(), result, asked);
    undoable_ = notice_.canBeUndone ? std::optional(result) : std::nullopt;
    updateLine();
}

void DialogTab::undo() {
    if (session_ == nullptr || !undoable_) return;
    const MarkResult pick = *std::exchange(undoable_, std::nullopt);
    for (const ChoiceChange& change : pick.changes)
        if (change.option == kPageSizeOption) setPaper(change.from);
    writeToDialog(session_->takeBack(pick), kPageSizeOption);
    notice_ = {};
    updateLine();
    updateTree();
    if (const platform::Menu* const menu = tree_.menuOf(pick.changes.front().option)) toolkit_.focus(*menu);
}

void DialogTab::updateLine() {
    if (session_ == nullptr || names_ == nullptr) return;
    const std::string line =
        lineOf(notice_, notLoadedText(names_->answers(), session_->ppd(), pageSizeChoice()), names_->line());
    if (tree_.setLine(line, undoable_.has_value())) toolkit_.treeChanged();
}

void DialogTab::updateTree() {
    if (session_ == nullptr) return;
    if (presets_ != nullptr) presets_->update(currentPreset("").choices);
    if (!tree_.hasPanel()) return; // it was never in front
    tree_.update(names_->answers());
    toolkit_.treeChanged();
}

void DialogTab::openPresets() {
    if (!administratorSettings().hasPresets) return;
    PanelSession& session = *session_;
    presets_ = std::make_unique<PresetMenu>(PresetStore(printer_),
        defaultPreset(session.panel().supportedPPDOptionKeys(), session.ppd()), session.ppd().language(),
        PresetMenu::Actions{.chosen = [this](const Preset& preset) { choosePreset(preset); },
            .current = [this](const std::string& name) { return currentPreset(name); },
            .refused =
                [this](const std::string& problem) {
                    notice_ = {problem, false};
                    undoable_.reset();
                    updateLine();
                    toolkit_.treeChanged();
                },
            .changed =
                [this](const platform::View* view) {
                    toolkit_.treeChanged();
                    if (view != nullptr) toolkit_.focus(*view);
                }});
    for (const auto& file : presets_->listing().unreadable)
        logOnce("the preset " + file.string() + " cannot be read and is left alone");
}

Preset DialogTab::currentPreset(const std::string& name) const {
    return presetOf(name, session_->panel().supportedPPDOptionKeys(), session_->ppd(), names_->answers());
}

void DialogTab::choosePreset(const Preset& preset) {
    DialogPPD& ppd = session_->ppd();
    PresetChoices wanted = choicesNow(preset, ppd, names_->answers());
    const DialogPPD::Marks before = ppd.marks();
    const auto size = wanted.choices.find(kPageSizeOption);
    if (size != wanted.choices.end()) {
        setPaper(size->second);
        if (pageSizeChoice() != size->second) { // it is the application's
            if (!wanted.text.empty()) wanted.text += " ";
            wanted.text += hostText(ppd.language(), "The size stays %1.",
                {ppd.choiceTitle(kPageSizeOption, ppd.choiceOf(kPageSizeOption))});
            wanted.choices.erase(size);
        }
    }
    const MarkResult settled = session_->markElsewhere(wanted.choices);
    MarkResult whole{.changes = {}, .conflicts = settled.conflicts};
    for (const auto& [option, choice] : ppd.marks())
        if (const auto was = before.find(option); was == before.end() || was->second != choice)
            whole.changes.push_back({option, was != before.end() ? was->second : "", choice});
    writeToDialog(whole, kPageSizeOption);
    // What was marked already is chosen now, and no longer left to the printer.
    for (const auto& [option, choice] : wanted.choices)
        if (option != kPageSizeOption) writeToDialog(option, ppd.choiceOf(option));
    notice_ = presetNotice(ppd, wanted, settled);
    undoable_ = whole.changes.empty() ? std::nullopt : std::optional(std::move(whole));
    if (undoable_ && notice_.text.empty())
        notice_.text = hostText(ppd.language(), "The preset “%1” is chosen.", {presets_->titleOf(preset)});
    presets_->applied(preset, currentPreset("").choices);
    updateLine();
    updateTree();
    toolkit_.treeChanged();
}

// What the dialog was opened with.
void DialogTab::chooseFirstPreset() {
    if (presets_ == nullptr || !std::exchange(awaitsFirstPreset_, false)) return;
    const std::string& name = *firstPreset_;
    const PresetStore::Listing& listing = presets_->listing();
    if (name.empty()) {
        if (listing.lastUsed) choosePreset(Preset(*listing.lastUsed));
        return;
    }
    if (const PresetStore::Listed* const listed = listing.find(name))
        return choosePreset(Preset(listed->preset));
    const PresetProblem problem{PresetProblem::Kind::missing, name};
    notice_ = {problem.text(session_->ppd().language()), false};
    updateLine();
}

void DialogTab::setPaper(const std::string& pageSize) {
    const DialogPPD& ppd = session_->ppd();
    const auto dimensions = ppd.dimensionsOf(pageSize);
    if (!dimensions || pageSizeChoice() == pageSize) return;
    toolkit_.setPaper(
        pageSize, ppd.choiceTitle(kPageSizeOption, pageSize), {dimensions->first, dimensions->second});
}

void DialogTab::accepted() {
    if (session_ == nullptr || presets_ == nullptr) return;
    chooseFirstPreset();
    const PresetProblem problem = presets_->store().rememberLastUsed(currentPreset(""));
    if (problem.kind != PresetProblem::Kind::none)
        logOnce("what was printed with is not remembered: " + problem.detail);
}

std::map<std::string, DialogTab::MarkedChoice> DialogTab::marked() const {
    std::map<std::string, MarkedChoice> marked;
    for (const std::string& keyword : carried_)
        if (std::string choice = session_->ppd().choiceOf(keyword); !choice.empty()) {
            const bool isDefault = choice == session_->ppd().defaultChoiceOf(keyword);
            marked.emplace(keyword, MarkedChoice{std::move(choice), isDefault});
        }
    return marked;
}

// The PPD's page size that the document's paper is, "" when it is none of the PPD's.
std::string DialogTab::pageSizeChoice() const {
    const std::optional<PaperSize> paper = toolkit_.paper();
    return paper ? session_->ppd().pageSizeOf(paper->width, paper->height) : std::string();
}

} // namespace orvan
