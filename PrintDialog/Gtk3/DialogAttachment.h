// The paper options in one print dialog.
#pragma once

#include "Platform/Bundle.h"
#include "Platform/RunLoop.h"
#include "PrintDialog/Gtk3/AcceptedChoices.h"
#include "PrintDialog/Gtk3/DialogOptions.h"
#include "PrintDialog/Gtk3/GObjectRef.h"
#include "PrintDialog/Gtk3/PanelTab.h"
#include "PrintDialog/Host/PanelSession.h"
#include "PrintDialog/Host/PaperNames.h"
#include "PrintDialog/Host/QueuePPD.h"

#include <gtk/gtkunixprint.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace orvan {

// Follows the dialog's selected printer. While it is one of the family, the panel is there as a tab, and the
// panel's marks and GTK's own options are kept the same. Owned by the dialog. GTK's thread.
class DialogAttachment {
public:
    // Attaches to the dialog, once; the attachment ends with the dialog. Does nothing when one is there
    // already.
    static void attach(GtkPrintUnixDialog* dialog);
    // Null when nothing is attached to the dialog.
    static DialogAttachment* of(GtkPrintUnixDialog* dialog);

    // The person pressed Print (or Preview): what is marked now is for the job.
    void accepted();

    ~DialogAttachment();
    DialogAttachment(const DialogAttachment&) = delete;
    DialogAttachment& operator=(const DialogAttachment&) = delete;

private:
    DialogAttachment(GtkPrintUnixDialog* dialog, std::shared_ptr<platform::Bundle> bundle);

    void printerSelected();
    void queueArrived(std::optional<OpenedQueue> opened, const QueueFailure& failure);
    // Null, and one line in the log, when there is no panel for the queue.
    enum class Question { asked, forbidden, answered };
    std::unique_ptr<PanelSession> openSession(OpenedQueue opened, Question question);
    void startSession(std::unique_ptr<PanelSession> session);
    void endSession();
    void tabShown();
    // The paper names of the panel that is shown are no longer the printer's: a new panel takes its place.
    void replaceSession();
    void namesChanged();
    void useSession(std::unique_ptr<PanelSession> session);
    void pageSetupChanged();

    // One direction each, and neither answers itself: what the panel picked goes to GTK's options, what was
    // changed there goes to the panel.
    void pickedInPanel(const std::string& option, const std::string& choice, const MarkResult& result);
    void changedInDialog(const std::string& keyword, const std::string& choice);
    void writeToDialog(const MarkResult& result, const std::string& except);
    void writeToDialog(const std::string& option, const std::string& choice);
    void report(const MarkResult& result, const std::string& asked);
    void undo();
    // The one line that matters now: what a pick changed and what is not loaded, else the age of the names.
    void updateLine();
    void refreshTab();
    void makeDetails();
    std::string pageSizeChoice();

    GtkPrintUnixDialog* dialog_;
    std::shared_ptr<platform::Bundle> bundle_;
    std::string queue_;
    SchedulerRequest request_; // for the queue, before there is a session
    PanelTab tab_;
    std::unique_ptr<PanelSession> session_;
    std::unique_ptr<PaperNames> names_; // the session's
    std::shared_ptr<platform::Disclosure> details_;
    bool isReplacing_ = false; // the session: the queue is being opened anew
    std::unique_ptr<DialogOptions> options_;
    std::set<std::string> carried_; // the options that the job is told of
    std::string notice_;            // of the newest pick
    std::optional<MarkResult> undoable_;
    std::shared_ptr<platform::RepeatingTimer> lineTimer_; // what was told of the trays grows old
    SignalConnection printerConnection_;
    SignalConnection pageSetupConnection_;
};

} // namespace orvan
