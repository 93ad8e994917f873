#include "OrvanPaperOptions/Source/OrvanPaperOptions.h"

#include "Common/PPDUtilities.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Platform/SystemLog.h"

#include <algorithm>

namespace orvan {

OrvanPaperOptions::OptionRow OrvanPaperOptions::OptionRow::fromPPD(
    ppd_file_t* ppd, const OptionRowSpec& spec) {
    OptionRow row;
    row.spec = &spec;
    row.option = ppdFindOption(ppd, spec.keyword);
    row.choices = ArrayFromPPDOption(row.option);
    return row;
}

std::shared_ptr<OrvanPaperOptions> OrvanPaperOptions::initWithCallbackAndBundle(
    std::shared_ptr<platform::PDEPluginCallback> callback, std::shared_ptr<platform::Bundle> bundle) {
    platform::systemLog("initWithCallback: paper options\n");
    if (callback == nullptr || bundle == nullptr) return nullptr;
    const std::shared_ptr<OrvanPaperOptions> panel(new OrvanPaperOptions);
    panel->pdePluginCallbackObject_ = std::move(callback);
    panel->pluginBundle_ = std::move(bundle);
    panel->ppd_ = panel->pdePluginCallbackObject_->ppdFile();
    if (panel->ppd_ == nullptr) return nullptr;
    for (std::size_t i = 0; i < kOptionRows.size(); ++i)
        panel->rows_[i] = OptionRow::fromPPD(panel->ppd_, kOptionRows[i]);

    if (!RunningOn1010OrLater()) panel->startPrinterQuery();
    panel->cpt_.emplace();

    const auto isPresent = [](const OptionRow& row) { return row.option != nullptr; };
    return std::ranges::any_of(panel->rows_, isPresent) ? panel : nullptr;
}

OrvanPaperOptions::~OrvanPaperOptions() {
    if (ovBiDi_ != nullptr) ovBiDi_->invalidate();
}

platform::View* OrvanPaperOptions::panelView() {
    if (pdeView_ == nullptr) pdeView_ = pluginBundle_->loadView("PaperOptions", viewOwner());
    return pdeView_.get();
}

platform::ViewOwner OrvanPaperOptions::viewOwner() {
    platform::ViewOwner owner;
    owner.setOutlet = [this](std::string_view outlet, const std::shared_ptr<platform::View>& view) {
        for (OptionRow& row : rows_)
            if (row.spec->outlet == outlet) {
                row.popUp = std::dynamic_pointer_cast<platform::PopUpButton>(view);
                if (row.popUp != nullptr) row.popUp->setOptionKeyword(row.spec->keyword);
            }
    };
    // The dialog may keep a view longer than the panel; the action of such a view does nothing.
    owner.action = [weak = weak_from_this()](std::string_view name) -> platform::PopUpButton::Action {
        if (name != "changePopupButtonOption") return {};
        return [weak](platform::PopUpButton& sender) {
            if (const auto panel = weak.lock()) panel->changePopupButtonOption(sender);
        };
    };
    return owner;
}

std::string OrvanPaperOptions::panelName() {
    if (!thePDEName_) thePDEName_ = pluginBundle_->localizedString("_PDE_Paper_Options");
    return *thePDEName_;
}

std::string OrvanPaperOptions::panelKind() {
    return "com.orvan.qbv.print.pde.cocoa.paperfeed";
}

const std::vector<std::string>& OrvanPaperOptions::supportedPPDOptionKeys() {
    if (!supportedOptions_) {
        supportedOptions_.emplace().reserve(rows_.size());
        for (const OptionRow& row : rows_)
            if (row.option != nullptr) supportedOptions_->emplace_back(row.spec->keyword);
    }
    return *supportedOptions_;
}

void OrvanPaperOptions::willShow() {
    initializeUI();
    updateUI();
}

bool OrvanPaperOptions::restoreValuesAndReturnError(platform::PDEError*) {
    updateMarkedSelections();
    updateUI();
    return true;
}

std::map<std::string, std::string> OrvanPaperOptions::summaryInfo() {
    std::map<std::string, std::string> summary;
    for (const OptionRow& row : rows_) {
        if (row.selection == nullptr) continue;
        const std::string title = CreateOptionTitle(*row.option).value_or(row.spec->keyword);
        summary[title] = EmptyIfNil(row.selection->userTitle());
    }
    return summary;
}

std::string EmptyIfNil(const std::string* text) {
    return text != nullptr ? *text : std::string();
}

} // namespace orvan
