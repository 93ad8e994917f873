// The paper options in one print dialog, whatever its toolkit is.
#pragma once

#include "Platform/Bundle.h"
#include "Platform/RunLoop.h"
#include "PrintDialog/Host/PanelSession.h"
#include "PrintDialog/Host/PaperNames.h"
#include "PrintDialog/Host/PickNotice.h"
#include "PrintDialog/Host/PresetMenu.h"
#include "PrintDialog/Host/QueuePPD.h"
#include "PrintDialog/Host/TabTree.h"
#include "PrintDialog/Host/ToolkitDialog.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace orvan {

// Follows the dialog's selected printer. While it is one of the family, the panel is there as a tab, and the
// panel's marks and the dialog's own options are kept the same. The toolkit's thread.
class DialogTab {
public:
    // Null when the plug-in is not there or damaged (one line in the log), or the administrator wants no tab.
    // `preset`: the name of one that a printer begins with, "" for what was used last there.
    static std::unique_ptr<DialogTab> create(
        ToolkitDialog& toolkit, std::optional<std::string> preset = std::nullopt);
    ~DialogTab();
    DialogTab(const DialogTab&) = delete;
    DialogTab& operator=(const DialogTab&) = delete;

    // To be told by the toolkit: another printer is selected, "" for none that has a queue; ...
    void printerSelected(const std::string& queue);
    // ... the tab came to the front; the document's paper is another one;
    void tabShown();
    void paperChanged();
    // ... and an option of the dialog's own has another choice, "" for "as the printer is set".
    void optionChanged(const std::string& keyword, const std::string& choice);

    // The person prints: what is marked is remembered as what was used last.
    void accepted();

    // The selected printer's queue.
    const std::string& queue() const { return queue_; }
    // What is marked now, of the options that a job is told of; empty without a panel.
    struct MarkedChoice {
        std::string choice;
        bool isDefault = false; // of the PPD
    };
    std::map<std::string, MarkedChoice> marked() const;

    const TabTree& tree() const { return tree_; }

private:
    DialogTab(
        ToolkitDialog& toolkit, std::shared_ptr<platform::Bundle> bundle, std::optional<std::string> preset);

    void queueArrived(std::optional<OpenedQueue> opened, const QueueFailure& failure);
    // Null, and one line in the log, when there is no panel for the queue.
    enum class Question { asked, forbidden, answered };
    std::unique_ptr<PanelSession> openSession(OpenedQueue opened, Question question);
    void startSession(std::unique_ptr<PanelSession> session);
    void endSession();
    // The paper names of the panel that is shown are no longer the printer's: a new panel takes its place.
    void replaceSession();
    void namesChanged();
    void useSession(std::unique_ptr<PanelSession> session);

    // One direction each, and neither answers itself: what the panel picked goes to the dialog's options,
    // what was changed there goes to the panel.
    void pickedInPanel(const std::string& option, const std::string& choice, const MarkResult& result);
    void writeToDialog(const MarkResult& result, const std::string& except);
    void writeToDialog(const std::string& option, const std::string& choice);
    void report(const MarkResult& result, const std::string& asked);
    void undo();

    void openPresets();
    Preset currentPreset(const std::string& name) const;
    void choosePreset(const Preset& preset);
    void chooseFirstPreset();
    void setPaper(const std::string& pageSize);

    void updateLine();
    void updateTree();
    std::string pageSizeChoice() const;

    ToolkitDialog& toolkit_;
    std::shared_ptr<platform::Bundle> bundle_;
    std::string queue_;
    SchedulerRequest request_; // for the queue, before there is a session
    TabTree tree_;
    PresetPrinter printer_; // that the session is for
    std::optional<std::string> firstPreset_;
    bool awaitsFirstPreset_ = false; // the session
    std::unique_ptr<PanelSession> session_;
    std::unique_ptr<PaperNames> names_;                   // the session's
    std::unique_ptr<PresetMenu> presets_;                 // null where there are none
    bool isReplacing_ = false;                            // the session: the queue is being opened anew
    std::set<std::string> carried_;                       // the options that the job is told of
    PickNotice notice_;                                   // of the newest pick
    std::optional<MarkResult> undoable_;                  // if its notice says so
    std::shared_ptr<platform::RepeatingTimer> lineTimer_; // what was told of the trays grows old
};

} // namespace orvan
