#include "PrintDialog/Gtk3/DialogAttachment.h"

#include "Common/Utilities/DeviceChecks.h"
#include "Platform/SystemLog.h"
#include "PrintDialog/Gtk3/Guarded.h"
#include "PrintDialog/Host/AdministratorSettings.h"
#include "PrintDialog/Host/DialogMemory.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/InstalledFiles.h"
#include "PrintDialog/Host/LoadedPaper.h"
#include "PrintDialog/Host/PrinterDetails.h"

#include <cmath>
#include <string_view>
#include <utility>

namespace orvan {
namespace {

constexpr const char* kDataKey = "orvan-paper-options";
constexpr const char* kPageSize = "PageSize";
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

void DialogAttachment::attach(GtkPrintUnixDialog* dialog) {
    if (g_object_get_data(G_OBJECT(dialog), kDataKey) != nullptr) return;
    std::shared_ptr<platform::Bundle> bundle = paperOptionsBundle();
    if (bundle == nullptr || !administratorSettings().showsTab) return;
    auto* const attachment = new DialogAttachment(dialog, std::move(bundle));
    // "destroy" comes while the dialog's widgets are still there; it can come more than once.
    g_object_set_data(G_OBJECT(dialog), kDataKey, attachment);
    const auto onDestroy = [](GtkPrintUnixDialog* self, gpointer) {
        guarded(
            [self] { delete static_cast<DialogAttachment*>(g_object_steal_data(G_OBJECT(self), kDataKey)); });
    };
    g_signal_connect(dialog, "destroy", G_CALLBACK(+onDestroy), nullptr);
    attachment->printerSelected();
}

DialogAttachment* DialogAttachment::of(GtkPrintUnixDialog* dialog) {
    return static_cast<DialogAttachment*>(g_object_get_data(G_OBJECT(dialog), kDataKey));
}

DialogAttachment::DialogAttachment(GtkPrintUnixDialog* dialog, std::shared_ptr<platform::Bundle> bundle)
    : dialog_(dialog),
      bundle_(std::move(bundle)),
      tab_(
          dialog, [this] { tabShown(); }, [this] { undo(); }),
      printerConnection_(dialog, "notify::selected-printer",
          G_CALLBACK(+[](GObject*, GParamSpec*, gpointer self) {
              guarded([self] { static_cast<DialogAttachment*>(self)->printerSelected(); });
          }),
          this),
      pageSetupConnection_(dialog, "notify::page-setup",
          G_CALLBACK(+[](GObject*, GParamSpec*, gpointer self) {
              guarded([self] { static_cast<DialogAttachment*>(self)->pageSetupChanged(); });
          }),
          this) {}

DialogAttachment::~DialogAttachment() {
    endSession();
}

void DialogAttachment::printerSelected() {
    request_.drop();
    isReplacing_ = false;
    endSession();
    GtkPrinter* const printer = gtk_print_unix_dialog_get_selected_printer(dialog_);
    queue_ = printer != nullptr && !gtk_printer_is_virtual(printer) ? gtk_printer_get_name(printer) : "";
    if (queue_.empty()) return;
    request_ = openQueue(queue_, SchedulerWorker::kDialogDeadline,
        [this](std::optional<OpenedQueue> opened, const QueueFailure& failure) {
            queueArrived(std::move(opened), failure);
        });
}

void DialogAttachment::queueArrived(std::optional<OpenedQueue> opened, const QueueFailure& failure) {
    if (!opened) {
        if (failure.isTrouble)
            logOnce("no paper options for printer " + queue_ + ": " + failure.problem.text);
        return;
    }
    if (auto session = openSession(
            *std::move(opened), administratorSettings().asksPrinter ? Question::asked : Question::forbidden))
        startSession(std::move(session));
}

std::unique_ptr<PanelSession> DialogAttachment::openSession(OpenedQueue opened, Question question) {
    ppd_file_t* const record = opened.ppd->record();
    if (MyCheckPDEContextCUPS(record) != kPDEContextValid) return nullptr;
    PaperNames::Start start{.stored = storedAnswers(record, kAnswerBudget),
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

void DialogAttachment::startSession(std::unique_ptr<PanelSession> session) {
    const auto& keys = session->panel().supportedPPDOptionKeys();
    carried_ = {keys.begin(), keys.end()};
    useSession(std::move(session));
    options_ = std::make_unique<DialogOptions>(dialog_,
        [this](const std::string& keyword, const std::string& choice) { changedInDialog(keyword, choice); });

    // What the application remembered is where the marks start.
    std::map<std::string, std::string> initial = options_->values();
    if (std::string size = pageSizeChoice(); !size.empty()) initial[kPageSize] = std::move(size);
    const MarkResult started = session_->markElsewhere(initial);
    tab_.appear(session_->panel().panelName());
    lineTimer_ = platform::RepeatingTimer::schedule(
        kLineInterval, [this](platform::RepeatingTimer&) { updateLine(); }, "line");
    writeToDialog(started, "");
    report(started, "");
    if (tab_.isInFront()) tabShown();
}

void DialogAttachment::useSession(std::unique_ptr<PanelSession> session) {
    session_ = std::move(session);
    session_->setPickHandler([this](const std::string& option, const std::string& choice,
                                 const MarkResult& result) { pickedInPanel(option, choice, result); });
}

void DialogAttachment::namesChanged() {
    updateLine();
    if (tab_.isInFront() && !tab_.hasPanel()) tabShown();
}

// Called again and again until it is done. The new panel's question is the one that was just answered.
void DialogAttachment::replaceSession() {
    if (isReplacing_ || tab_.isBusy()) return;
    isReplacing_ = true;
    request_ = openQueue(queue_, SchedulerWorker::kDialogDeadline,
        [this](std::optional<OpenedQueue> opened, const QueueFailure&) {
            if (!opened) return; // and nobody is asked again and again
            isReplacing_ = false;
            if (tab_.isBusy()) return;
            const DialogPPD::Marks marks = session_->ppd().marks();
            const std::string focused = tab_.focusedOption();
            names_.reset();
            tab_.dropPanel();
            auto session = openSession(*std::move(opened), Question::answered);
            if (session == nullptr) return endSession();
            useSession(std::move(session));
            session_->markElsewhere(marks);
            updateLine();
            if (!tab_.isInFront()) return;
            tabShown();
            tab_.focus(focused);
        });
}

void DialogAttachment::endSession() {
    tab_.disappear();
    details_.reset();
    options_.reset();
    if (lineTimer_ != nullptr) lineTimer_->stop();
    lineTimer_.reset();
    notice_.clear();
    undoable_.reset();
    names_.reset();
    session_.reset();
    carried_.clear();
}

void DialogAttachment::tabShown() {
    if (session_ == nullptr) return;
    updateLine();
    if (!names_->isReady()) return;
    if (!session_->wasShown()) names_->willShow();
    session_->willShow();
    platform::View* const root = session_->panel().panelView();
    if (details_ == nullptr) makeDetails();
    if (!tab_.hasPanel() && root != nullptr)
        tab_.setPanel(
            *root, [this](const platform::PopUpButton& popUp) { return session_->shown(popUp); },
            [this] { refreshTab(); });
    refreshTab();
}

void DialogAttachment::pageSetupChanged() {
    if (session_ == nullptr) return;
    updateLine();
    if (const std::string size = pageSizeChoice(); !size.empty()) changedInDialog(kPageSize, size);
}

void DialogAttachment::pickedInPanel(
    const std::string& option, const std::string& choice, const MarkResult& result) {
    // A pick of what was marked already is one as well: it is no longer left to the printer.
    if (session_->ppd().choiceOf(option) == choice) writeToDialog(option, choice);
    writeToDialog(result, option);
    report(result, result.changes.empty() ? "" : result.changes.front().option);
    if (!session_->ppd().isInFile(option, choice))
        notice_ = hostText("The driver of this queue cannot name %1 to the printer.",
            {session_->ppd().choiceTitle(option, choice)});
    updateLine();
}

void DialogAttachment::changedInDialog(const std::string& keyword, const std::string& choice) {
    if (session_ == nullptr) return;
    DialogPPD& ppd = session_->ppd();
    const std::string marked = choice.empty() ? ppd.defaultChoiceOf(keyword) : choice;
    const MarkResult result = session_->markElsewhere(keyword, marked);
    if (result.changes.empty() && result.conflicts.empty()) return;
    writeToDialog(result, keyword);
    report(result, keyword);
    refreshTab();
}

void DialogAttachment::writeToDialog(const MarkResult& result, const std::string& except) {
    for (const ChoiceChange& change : result.changes)
        if (change.option != except) writeToDialog(change.option, change.to);
}

void DialogAttachment::writeToDialog(const std::string& option, const std::string& choice) {
    carried_.insert(option);
    // A choice that GTK does not know must not leave another one in its place.
    if (!options_->write(option, choice)) options_->write(option, std::string(kAsPrinterIsSet));
}

void DialogAttachment::report(const MarkResult& result, const std::string& asked) {
    notice_ = noticeText(session_->ppd(), result, asked);
    const bool changedOthers = result.changes.size() > 1 && result.changes.front().option == asked;
    // The size of the paper is the application's.
    undoable_ = changedOthers && asked != kPageSize ? std::optional(result) : std::nullopt;
    updateLine();
}

void DialogAttachment::undo() {
    if (session_ == nullptr || !undoable_) return;
    const MarkResult pick = *std::exchange(undoable_, std::nullopt);
    writeToDialog(session_->takeBack(pick), "");
    notice_.clear();
    refreshTab();
    updateLine();
    tab_.focus(pick.changes.front().option);
}

void DialogAttachment::updateLine() {
    if (session_ == nullptr || names_ == nullptr) return;
    std::string line = notice_;
    const std::string loaded = notLoadedText(names_->answers(), session_->ppd(), pageSizeChoice());
    if (!loaded.empty()) line.append(line.empty() ? "" : " ").append(loaded);
    tab_.setLine(line.empty() ? names_->line() : line, undoable_.has_value());
}

void DialogAttachment::refreshTab() {
    if (session_ == nullptr || details_ == nullptr) return; // it was never in front
    updatePrinterDetails(*details_, names_->answers(), session_->ppd(), session_->summary());
    tab_.refresh();
}

void DialogAttachment::makeDetails() {
    details_ = makePrinterDetails();
    details_->setUnfolded(remembersUnfoldedDetails());
    details_->setAction([this](platform::Disclosure& details) {
        rememberUnfoldedDetails(details.isUnfolded());
        tab_.refresh();
    });
    tab_.setDetails(details_.get());
}

void DialogAttachment::accepted() {
    AcceptedDialog dialog;
    dialog.queue = queue_;
    const GObjectRef<GtkPrintSettings> settings(gtk_print_unix_dialog_get_settings(dialog_));
    for (const std::string& keyword : carried_) {
        const std::string marked = session_->ppd().choiceOf(keyword);
        const char* const gtkValue = gtk_print_settings_get(settings.get(), ("cups-" + keyword).c_str());
        if (marked.empty()) continue;
        dialog.choices.emplace(
            keyword, AcceptedDialog::Choice{marked, marked == session_->ppd().defaultChoiceOf(keyword),
                         gtkValue != nullptr ? gtkValue : ""});
    }
    AcceptedChoices::shared().add(std::move(dialog));
}

// The PPD's page size that the dialog's paper is, "" when it is none of the PPD's.
std::string DialogAttachment::pageSizeChoice() {
    GtkPageSetup* const setup = gtk_print_unix_dialog_get_page_setup(dialog_);
    if (setup == nullptr) return {};
    GtkPaperSize* const paper = gtk_page_setup_get_paper_size(setup);
    return session_->ppd().pageSizeOf(
        gtk_paper_size_get_width(paper, GTK_UNIT_POINTS), gtk_paper_size_get_height(paper, GTK_UNIT_POINTS));
}

} // namespace orvan
