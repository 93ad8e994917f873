#include "PrintDialog/Host/PanelSession.h"

namespace orvan {

// The panel holds this object, and this object holds the PPD record that the panel borrows. It holds neither
// panel nor session, so there is no cycle.
class PanelSession::Callback final : public platform::PDEPluginCallback {
public:
    Callback(std::unique_ptr<DialogPPD> ppd, std::shared_ptr<platform::PMPrinter> printer)
        : ppd_(std::move(ppd)), printer_(std::move(printer)) {}

    ppd_file_t* ppdFile() override { return ppd_->record(); }
    std::shared_ptr<platform::PMPrinter> PMPrinter() override { return printer_; }
    void willChangePPDOptionKeyValuePpdChoice(
        const std::string& optionKeyword, const std::string& choiceKeyword) override {
        const MarkResult result = ppd_->mark(optionKeyword, choiceKeyword);
        if (handler_) handler_(optionKeyword, choiceKeyword, result);
    }

    DialogPPD& ppd() { return *ppd_; }
    void setHandler(PickHandler handler) { handler_ = std::move(handler); }

private:
    std::unique_ptr<DialogPPD> ppd_;
    std::shared_ptr<platform::PMPrinter> printer_;
    PickHandler handler_;
};

std::unique_ptr<PanelSession> PanelSession::create(const std::shared_ptr<platform::Bundle>& bundle,
    std::unique_ptr<DialogPPD> ppd, std::shared_ptr<platform::PMPrinter> printer, platform::Failure& error) {
    std::unique_ptr<PanelSession> session(new PanelSession);
    session->bundle_ = bundle->inLanguage(ppd->language());
    session->callback_ = std::make_shared<Callback>(std::move(ppd), std::move(printer));
    session->plugin_ = session->bundle_->createPrincipalClass(error);
    if (session->plugin_ == nullptr) return nullptr;
    if (!session->plugin_->initWithBundle(session->bundle_)) {
        error = session->bundle_->folder().string() + ": the plug-in cannot work";
        return nullptr;
    }

    const auto panels = session->plugin_->PDEPanelsForTypeWithHostInfo(
        platform::kPrintDialogTypeIdentifier, session->callback_);
    if (panels == nullptr || panels->empty()) return nullptr;
    session->panel_ = panels->front();
    return session;
}

PanelSession::~PanelSession() {
    if (callback_ != nullptr) callback_->setHandler({});
}

DialogPPD& PanelSession::ppd() {
    return callback_->ppd();
}

std::shared_ptr<platform::View> PanelSession::view() const {
    platform::View* const root = panel_->panelView();
    return root != nullptr ? std::shared_ptr<platform::View>(panel_, root) : nullptr;
}

void PanelSession::setPickHandler(PickHandler handler) {
    callback_->setHandler(std::move(handler));
}

void PanelSession::willShow() {
    if (wasShown_) {
        panel_->willShow();
        return;
    }
    wasShown_ = true;
    panel_->restoreValuesAndReturnError(nullptr);
    panel_->panelView();
    const DialogPPD::Marks marks = ppd().marks();
    panel_->willShow();
    ppd().setMarks(marks);
    panel_->restoreValuesAndReturnError(nullptr);
}

PanelSession::Summary PanelSession::summary() {
    std::map<std::string, std::string> lines = panel_->summaryInfo();
    Summary ordered;
    addUnoffered(lines);
    for (const std::string& key : panel_->supportedPPDOptionKeys())
        if (auto line = lines.extract(ppd().optionTitle(key)))
            ordered.emplace_back(std::move(line.key()), std::move(line.mapped()));
    for (auto& [title, value] : lines)
        ordered.emplace_back(title, std::move(value));
    return ordered;
}

// A marked choice that the panel does not offer is one that it does not know of.
void PanelSession::addUnoffered(std::map<std::string, std::string>& lines) {
    const platform::View* const root = wasShown_ ? panel_->panelView() : nullptr;
    if (root == nullptr) return;
    for (const auto& view : root->subviews()) {
        const auto* const popUp = dynamic_cast<const platform::PopUpButton*>(view.get());
        if (popUp == nullptr) continue;
        const ShownPopUp now = shown(*popUp);
        if (!now.items.empty() && now.items.back().place < 0)
            lines[ppd().optionTitle(popUp->optionKeyword())] = now.items.back().title;
    }
}

MarkResult PanelSession::markElsewhere(const std::string& option, const std::string& choice) {
    MarkResult result = ppd().mark(option, choice);
    panel_->restoreValuesAndReturnError(nullptr);
    return result;
}

MarkResult PanelSession::takeBack(const MarkResult& pick) {
    MarkResult result;
    DialogPPD::Marks marks;
    for (const ChoiceChange& change : pick.changes) {
        if (change.from.empty()) continue;
        marks.emplace(change.option, change.from);
        result.changes.push_back({change.option, change.to, change.from});
    }
    ppd().setMarks(marks);
    panel_->restoreValuesAndReturnError(nullptr);
    return result;
}

MarkResult PanelSession::markElsewhere(const std::map<std::string, std::string>& choices) {
    MarkResult result = ppd().markAll(choices);
    panel_->restoreValuesAndReturnError(nullptr);
    return result;
}

} // namespace orvan
