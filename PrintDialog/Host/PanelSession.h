// One printer configured in one dialog: its PPD, the plug-in's panel for it, and the dialog's callback object
// between the two.
#pragma once

#include "Formats/Failure.h"
#include "Platform/Bundle.h"
#include "Platform/PrintDialog.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "PrintDialog/Host/ShownPopUp.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

// Ends the panel, the plug-in object and the PPD when it ends. One thread.
class PanelSession {
public:
    // Creates the bundle's plug-in, in the language of the PPD, and asks it for its print-dialog panel. Null,
    // and a message for people in `error`, when the plug-in cannot be loaded; null without a message when it
    // has no panel for this PPD. `printer` may be null when there is no queue.
    static std::unique_ptr<PanelSession> create(const std::shared_ptr<platform::Bundle>& bundle,
        std::unique_ptr<DialogPPD> ppd, std::shared_ptr<platform::PMPrinter> printer,
        platform::Failure& error);
    ~PanelSession();
    PanelSession(const PanelSession&) = delete;
    PanelSession& operator=(const PanelSession&) = delete;

    platform::PDEPanel& panel() { return *panel_; }
    const platform::PDEPanel& panel() const { return *panel_; }
    DialogPPD& ppd();
    // The panel's view, which keeps the panel; null when its resource cannot be loaded.
    std::shared_ptr<platform::View> view() const;

    // Told, after the choice is marked, of each pick in the panel: the option and the choice that was picked,
    // and what came of it.
    using PickHandler =
        std::function<void(const std::string& option, const std::string& choice, const MarkResult&)>;
    void setPickHandler(PickHandler handler);

    // The panel is about to become visible: the first time its values are restored, it is shown, and they are
    // restored again, because showing may change its lists; later it is only shown. What was marked stays
    // marked by its keyword, whatever keywords the panel gives the records.
    void willShow();
    bool wasShown() const { return wasShown_; }

    // What a pop-up of the panel's view shows.
    ShownPopUp shown(const platform::PopUpButton& popUp) { return shownPopUp(popUp, ppd()); }

    // The panel's part of the summary, option title and choice title, in the order of the panel's options.
    using Summary = std::vector<std::pair<std::string, std::string>>;
    Summary summary();

    // Choices that were made elsewhere in the dialog: marked as the panel's picks are, and the panel reads
    // them back. The pick handler is not told.
    MarkResult markElsewhere(const std::string& option, const std::string& choice);
    MarkResult markElsewhere(const std::map<std::string, std::string>& choices);
    // Puts back what a pick changed, the pick included, and the panel reads it back. Answers what that
    // changed. The pick handler is not told.
    MarkResult takeBack(const MarkResult& pick);

private:
    class Callback;

    PanelSession() = default;
    void addUnoffered(std::map<std::string, std::string>& lines);

    std::shared_ptr<platform::Bundle> bundle_;
    std::shared_ptr<Callback> callback_;
    std::unique_ptr<platform::PDEPlugin> plugin_;
    std::shared_ptr<platform::PDEPanel> panel_;
    bool wasShown_ = false;
};

} // namespace orvan
