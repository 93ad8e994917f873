// The tab of a print dialog that shows the line that matters now, a panel, and what is below it.
#pragma once

#include "Platform/PrintDialog.h"
#include "PrintDialog/Gtk3/DisclosureMirror.h"
#include "PrintDialog/Gtk3/GObjectRef.h"
#include "PrintDialog/Gtk3/PanelMirror.h"

#include <gtk/gtkunixprint.h>

#include <functional>
#include <memory>
#include <string>

namespace orvan {

// GTK's tabs cannot be taken out of a dialog, so this one stays and is hidden while there is nothing to show.
// Owned by whoever attaches to the dialog; the widgets belong to the dialog. GTK's thread.
class PanelTab {
public:
    // `shown` is told each time the tab comes to the front, `undo` when a person wants the newest pick
    // undone.
    PanelTab(GtkPrintUnixDialog* dialog, std::function<void()> shown, std::function<void()> undo);
    ~PanelTab();
    PanelTab(const PanelTab&) = delete;
    PanelTab& operator=(const PanelTab&) = delete;

    // Shows the tab under the name, empty until setPanel. It comes as soon as the dialog has the size that it
    // asked for: a dialog that asks for more while it is still being resized is drawn too small once, and GTK
    // complains.
    void appear(const std::string& name);
    // Hides the tab and lets go of the panel's mirror.
    void disappear();
    bool isInFront() const;

    // Mirrors the panel's view, which stays with the panel and must outlive the mirror (dropPanel,
    // disappear).
    void setPanel(platform::View& root, PanelMirror::Shown shown, std::function<void()> picked);
    void dropPanel();
    bool hasPanel() const { return mirror_ != nullptr; }

    // Whether a person is in the middle of a pick: a menu of the panel's is open, or a button is held.
    bool isBusy() const;
    // The option whose pop-up has the keyboard; "" for none. And the other way round.
    std::string focusedOption() const;
    void focus(const std::string& option);

    // Mirrors what is below the rows, which must outlive the mirror; null for nothing.
    void setDetails(platform::Disclosure* details);

    // Brings the mirrors up to date.
    void refresh();
    // A line above the rows, or in their place, which does not scroll with them; "" for none. `offersUndo`:
    // with the button for it.
    void setLine(const std::string& text, bool offersUndo);

private:
    void ensureWidgets();
    void makeLine();
    void showWhenSettled();
    void stopWaiting();
    void fitHeight();

    GtkPrintUnixDialog* dialog_;
    std::function<void()> shown_;
    std::function<void()> undo_;
    GtkWidget* page_ = nullptr; // the dialog's, null until the tab first appears
    GtkScrolledWindow* scroller_ = nullptr;
    GtkLabel* name_ = nullptr;
    GtkBox* content_ = nullptr;
    GtkWidget* lineBox_ = nullptr; // the line and its button
    GtkLabel* line_ = nullptr;
    GtkWidget* undoButton_ = nullptr;
    std::unique_ptr<PanelMirror> mirror_;
    std::unique_ptr<DisclosureMirror> details_;
    std::unique_ptr<SignalConnection> mapConnection_;
    std::unique_ptr<SignalConnection> undoConnection_;
    guint tick_ = 0; // while it waits for the dialog's size
    int ticks_ = 0;  // how many frames it has waited
};

} // namespace orvan
