// The tab Paper Options as a tree of views: the line that matters now, the panel's rows, and the details.
//
// A toolkit mirrors the tree and carries a person's doings to it; the command line prints it.
#pragma once

#include "BiDi/StoredAnswers.h"
#include "Platform/Controls.h"
#include "PrintDialog/Host/PanelForm.h"
#include "PrintDialog/Host/PanelSession.h"
#include "PrintDialog/Host/PresetMenu.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// One thread.
class TabTree {
public:
    struct Actions {
        std::function<void()> undo;         // the person wants the newest pick undone
        std::function<void()> picked;       // a person picked something in a row; may drop the panel
        std::function<void(bool)> unfolded; // the details were unfolded or folded
    };
    explicit TabTree(Actions actions);

    std::shared_ptr<platform::View> root() const { return root_; }

    // Shows the session's panel, which was told that it will be shown. The session must stay until
    // dropPanel, and so must the presets, which may be null. `takenLetters`: see Mnemonics.
    void showPanel(PanelSession& session, PresetMenu* presets, std::string_view takenLetters);
    void dropPanel();
    bool hasPanel() const { return form_ != nullptr; }

    // Null without a panel, or when it has no such option.
    platform::Menu* menuOf(const std::string& option) const;
    // "" for a view that is no menu of the panel's.
    std::string optionOf(const platform::View* view) const;

    // Whether the details begin unfolded; they are folded unless this says otherwise.
    void setUnfolded(bool unfolded) { details_->setUnfolded(unfolded); }
    // The line, "" for none; with the button that undoes the newest pick or without. Answers
    // whether that is something else than before.
    bool setLine(const std::string& text, bool offersUndo);
    const std::string& line() const { return line_->stringValue(); }

    // Brings rows and details up to date with what is marked and with what the printer has answered.
    void update(const std::vector<StoredAnswer>& answers);

private:
    Actions actions_;
    std::shared_ptr<platform::Stack> lineBox_;
    std::shared_ptr<platform::TextField> line_;
    std::shared_ptr<platform::Button> undo_;
    std::shared_ptr<platform::ScrollView> rest_;
    std::shared_ptr<platform::Disclosure> details_;
    std::shared_ptr<platform::Stack> root_;
    PanelSession* session_ = nullptr; // the form's
    std::unique_ptr<PanelForm> form_;
};

} // namespace orvan
