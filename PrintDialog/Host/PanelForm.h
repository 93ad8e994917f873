// A panel's view as a form: a menu for each of its pop-ups, which shows what the dialog knows beside it.
#pragma once

#include "Platform/Controls.h"
#include "PrintDialog/Host/Mnemonics.h"
#include "PrintDialog/Host/PanelSession.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvan {

// Made after the panel was shown: the places of its controls are taken once. The session must outlive it;
// the form itself may stay longer, and then shows what it showed. One thread.
class PanelForm {
public:
    // `first`, if it is not null, is a menu of the dialog's own above the panel's. `picked` is told after the
    // panel has been told of a pick, and may end this object. Null when the panel has no view.
    static std::unique_ptr<PanelForm> create(PanelSession& session, Mnemonics& mnemonics,
        std::shared_ptr<platform::Menu> first, const std::function<void()>& picked);
    ~PanelForm();
    PanelForm(const PanelForm&) = delete;
    PanelForm& operator=(const PanelForm&) = delete;

    const std::shared_ptr<platform::Form>& view() const { return view_; }
    // The option's menu; null when there is none.
    platform::Menu* menuOf(const std::string& option) const;
    // The option of a menu; "" for a view that is none of this form.
    std::string optionOf(const platform::View* menu) const;

    // Brings the menus up to date with the panel.
    void update();

private:
    struct Row {
        platform::PopUpButton* popUp;
        std::shared_ptr<platform::Menu> menu;
        std::vector<std::int64_t> places; // of the menu's entries in the pop-up
    };

    explicit PanelForm(PanelSession& session) : session_(session) {}
    void addRow(platform::PopUpButton& popUp, platform::ControlTitle title);
    void pick(const platform::Menu& menu, std::size_t index, const std::function<void()>& picked);

    PanelSession& session_;
    std::vector<Row> rows_;
    std::shared_ptr<platform::Form> view_;
};

} // namespace orvan
