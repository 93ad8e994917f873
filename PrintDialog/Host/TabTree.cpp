#include "PrintDialog/Host/TabTree.h"

#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/PrinterDetails.h"

#include <utility>

namespace orvan {

using platform::Stack;

TabTree::TabTree(Actions actions)
    : actions_(std::move(actions)),
      lineBox_(std::make_shared<Stack>(Stack::Axis::horizontal)),
      line_(std::make_shared<platform::TextField>()),
      undo_(std::make_shared<platform::Button>()),
      rest_(std::make_shared<platform::ScrollView>()),
      details_(std::make_shared<platform::Disclosure>()),
      root_(std::make_shared<Stack>(Stack::Axis::vertical)) {
    line_->setRole(platform::TextField::Role::status);
    undo_->setAction([this] {
        if (actions_.undo) actions_.undo();
    });
    details_->setAction([this](platform::Disclosure& details) {
        if (actions_.unfolded) actions_.unfolded(details.isUnfolded());
    });
    lineBox_->addSubview(line_);
    lineBox_->addSubview(undo_);
    root_->addSubview(lineBox_);
    root_->addSubview(rest_);
    lineBox_->setHidden(true);
    undo_->setHidden(true);
}

void TabTree::showPanel(PanelSession& session, PresetMenu* presets, std::string_view takenLetters) {
    dropPanel();
    Mnemonics mnemonics(takenLetters);
    form_ = PanelForm::create(session, mnemonics, presets != nullptr ? presets->menu() : nullptr, [this] {
        if (actions_.picked) actions_.picked();
    });
    if (form_ == nullptr) return;
    session_ = &session;
    undo_->setTitle(mnemonics.titled(hostText(session.ppd().language(), "Undo"), "Undo"));
    details_->setTitle(mnemonics.titled(hostText(session.ppd().language(), "Details"), "Details"));
    if (presets != nullptr) presets->setTitles(mnemonics);
    if (presets != nullptr) rest_->addSubview(presets->editor());
    rest_->addSubview(form_->view());
    rest_->addSubview(details_);
}

void TabTree::dropPanel() {
    rest_->removeAllSubviews();
    form_.reset();
    session_ = nullptr;
}

platform::Menu* TabTree::menuOf(const std::string& option) const {
    return form_ != nullptr ? form_->menuOf(option) : nullptr;
}

std::string TabTree::optionOf(const platform::View* view) const {
    return form_ != nullptr ? form_->optionOf(view) : std::string();
}

bool TabTree::setLine(const std::string& text, bool offersUndo) {
    if (line() == text && undo_->isHidden() != offersUndo) return false;
    line_->setStringValue(text);
    lineBox_->setHidden(text.empty());
    undo_->setHidden(!offersUndo);
    return true;
}

void TabTree::update(const std::vector<StoredAnswer>& answers) {
    if (form_ == nullptr) return;
    form_->update();
    updatePrinterDetails(*details_, answers, session_->ppd(), session_->summary());
}

} // namespace orvan
