// The panel's controls: built when it is first shown, then kept in step with the dialog's marks.
#include "Common/PPDUtilities.h"
#include "Common/Utilities/ReleaseGates.h"
#include "OrvanPaperOptions/Source/OrvanPaperOptions.h"

#include <algorithm>

namespace orvan {

// Where the next row below some row goes.
struct OrvanPaperOptions::RowAnchor {
    platform::Point label;
    platform::Point popUp;

    void lower() {
        label.y -= kRowPitch;
        popUp.y -= kRowPitch;
    }
};

void InitPopUpFromArray(platform::PopUpButton* popUp, const PDEChoiceList* choices) {
    if (popUp == nullptr || choices == nullptr) return;
    popUp->removeAllItems();
    popUp->setAutoenablesItems(false);
    popUp->reserveItems(choices->size());
    for (const std::shared_ptr<PDEChoice>& entry : *choices) {
        const std::string* title = entry->userTitle();
        if (title == nullptr) title = entry->ppdTitle();
        popUp->addItem({.title = EmptyIfNil(title),
            .keyword = EmptyIfNil(entry->ppdTitle()),
            .keyEquivalent = "",
            .enabled = true,
            .representedObject = entry});
    }
}

platform::View* OrvanPaperOptions::viewWithTag(std::int64_t tag) const {
    return pdeView_ != nullptr ? pdeView_->viewWithTag(tag) : nullptr;
}

void OrvanPaperOptions::initializeUI() {
    if (hasInited_) return;
    platform::Rect panelFrame = pdeView_ != nullptr ? pdeView_->frame() : platform::Rect{};
    RowAnchor anchor = anchorBelow(rows_[static_cast<std::size_t>(kLastFixedRow.row) - 1]);

    for (const OptionRow& row : rows_) {
        const OptionRowSpec& spec = *row.spec;
        if (row.option != nullptr) {
            setViewTitleByTagFromOptions(spec.labelTag(), *row.option);
            InitPopUpFromArray(row.popUp.get(), row.choices.get());
            if (spec.place == RowPlace::BelowLastVisible) placeRow(row, anchor);
            if (spec.whenAbsent == WhenAbsent::HideRow) anchor.lower();
        } else if (spec.whenAbsent == WhenAbsent::HideRow) {
            hideRow(row);
            panelFrame.height -= kRowPitch;
        } else if (row.popUp != nullptr) {
            row.popUp->setEnabled(false);
        }
    }

    if (!RunningOn1010OrLater()) queryPrinterForCPTsThread();
    if (pdeView_ != nullptr) pdeView_->setFrame(panelFrame);
    hasInited_ = true;
}

// A missing control stands at the origin.
OrvanPaperOptions::RowAnchor OrvanPaperOptions::anchorBelow(const OptionRow& row) const {
    RowAnchor anchor;
    if (const platform::View* label = viewWithTag(row.spec->labelTag())) anchor.label = label->frame().origin;
    if (row.popUp != nullptr) anchor.popUp = row.popUp->frame().origin;
    anchor.lower();
    return anchor;
}

void OrvanPaperOptions::placeRow(const OptionRow& row, const RowAnchor& anchor) {
    if (platform::View* label = viewWithTag(row.spec->labelTag())) label->setFrameOrigin(anchor.label);
    if (row.popUp != nullptr) row.popUp->setFrameOrigin(anchor.popUp);
}

void OrvanPaperOptions::hideRow(const OptionRow& row) {
    if (platform::View* label = viewWithTag(row.spec->labelTag())) label->setHidden(true);
    if (row.popUp != nullptr) row.popUp->setHidden(true);
}

void OrvanPaperOptions::setViewTitleByTagFromOptions(std::int64_t tag, const ppd_option_t& option) {
    auto* const label = dynamic_cast<platform::TextField*>(viewWithTag(tag));
    if (label == nullptr) return;
    label->setStringValue(CreateOptionTitle(option).value_or(std::string(fieldText(option.keyword))) + ":");
}

void OrvanPaperOptions::updateUI() {
    if (!hasInited_) return;
    for (const OptionRow& row : rows_) {
        if (row.selection == nullptr || row.popUp == nullptr) continue;
        const auto found = std::ranges::find(*row.choices, row.selection);
        if (found != row.choices->end()) row.popUp->selectItemAtIndex(found - row.choices->begin());
    }
}

void OrvanPaperOptions::changePopupButtonOption(platform::PopUpButton& sender) {
    for (const OptionRow& row : rows_)
        if (row.spec->popUpTag() == sender.tag())
            selectionForPopUpWithKey(row.popUp.get(), row.spec->keyword);
    updateUI();
}

std::shared_ptr<PDEChoice> OrvanPaperOptions::selectionForPopUpWithKey(
    platform::PopUpButton* popUp, const std::string& optionKeyword) {
    const platform::MenuItem* const item =
        popUp != nullptr ? popUp->itemAtIndex(popUp->indexOfSelectedItem()) : nullptr;
    if (item != nullptr && item->representedObject != nullptr) {
        // A choice whose keyword cannot be said cannot be asked for; the read-back then shows what stands.
        const auto entry = std::static_pointer_cast<PDEChoice>(item->representedObject);
        if (const std::string* keyword = entry->ppdTitle())
            pdePluginCallbackObject_->willChangePPDOptionKeyValuePpdChoice(optionKeyword, *keyword);
    }
    updateMarkedSelections();
    return nullptr;
}

void OrvanPaperOptions::updateMarkedSelections() {
    for (OptionRow& row : rows_) {
        if (row.option == nullptr) continue;
        row.selection = nullptr;
        const std::int64_t marked = indexOfMarkedOptionForKey(row.option, row.spec->keyword);
        if (marked < 0) continue;
        const ppd_choice_t* const record = &row.option->choices[marked];
        const auto wraps = [record](
                               const std::shared_ptr<PDEChoice>& entry) { return entry->choice() == record; };
        const auto found = std::ranges::find_if(*row.choices, wraps);
        if (found != row.choices->end()) row.selection = *found;
    }
}

std::int64_t OrvanPaperOptions::indexOfMarkedOptionForKey(
    ppd_option_t* option, const char* optionKeyword) const {
    const ppd_choice_t* choice = ppdFindMarkedChoice(ppd_, optionKeyword);
    if (choice == nullptr) choice = ppdFindChoice(option, option->defchoice);
    return choice != nullptr ? choice - option->choices : -1;
}

} // namespace orvan
