// The paper options in one of GTK's print dialogs.
#pragma once

#include "PrintDialog/Gtk/AcceptedChoices.h"
#include "PrintDialog/Gtk/DialogOptions.h"
#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Gtk/TabPage.h"
#include "PrintDialog/Host/DialogTab.h"

#include <gtk/gtkunixprint.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace orvan {

// Owned by the dialog. GTK's thread.
class DialogAttachment final : public ToolkitDialog {
public:
    // Attaches to the dialog, once; the attachment ends with the dialog. Does nothing when one is there
    // already. `preset`: see DialogTab.
    static void attach(GtkPrintUnixDialog* dialog, std::optional<std::string> preset);
    // Null when nothing is attached to the dialog.
    static DialogAttachment* of(GtkPrintUnixDialog* dialog);

    // The person pressed Print (or Preview): what is marked now is for the job.
    void accepted();

    ~DialogAttachment() override;
    DialogAttachment(const DialogAttachment&) = delete;
    DialogAttachment& operator=(const DialogAttachment&) = delete;

private:
    explicit DialogAttachment(GtkPrintUnixDialog* dialog);

    void printerSelected();

    void showTab(const std::string& title, std::shared_ptr<platform::View> tree) override;
    void hideTab() override { page_.disappear(); }
    bool isTabInFront() const override { return page_.isInFront(); }
    void treeChanged() override;
    bool isBusy() const override;
    const platform::View* focusedView() const override;
    void focus(const platform::View& view) override;
    std::string takenLetters() const override;
    void openOptions() override;
    void closeOptions() override { options_.reset(); }
    std::map<std::string, std::string> optionValues() const override;
    void writeOption(const std::string& keyword, const std::string& choice) override;
    std::optional<PaperSize> paper() const override;
    bool setPaper(const std::string& pageSize, const std::string& title, const PaperSize& size) override;

    GtkPrintUnixDialog* dialog_;
    TabPage page_;
    std::unique_ptr<DialogOptions> options_;
    SignalConnection printerConnection_;
    SignalConnection pageSetupConnection_;
    std::unique_ptr<DialogTab> tab_; // ends first
};

} // namespace orvan
