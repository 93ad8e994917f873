// The paper options panel: seven pop-ups for options of the printer's PPD.
#pragma once

#include "BiDi/OrvanBiDi.h"
#include "Common/PDEChoice.h"
#include "Formats/PropertyList.h"
#include "OrvanPaperOptions/Source/OptionRows.h"
#include "Platform/Bundle.h"
#include "Platform/PrintDialog.h"

#include <cups/ppd.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// Makes the pop-up's items anew, one for each entry of the list and in its order; the items' represented
// objects are the entries. Nothing is selected afterwards. A choice whose text is not UTF-8 is titled by its
// keyword. Either argument may be null, and then nothing is done.
void InitPopUpFromArray(platform::PopUpButton* popUp, const PDEChoiceList* choices);

// The text, or "" for null.
std::string EmptyIfNil(const std::string* text);

// One panel of one print dialog. The dialog owns it and calls it on its main thread. It borrows the dialog's
// PPD record, whose marks are the only state of the options: a pick goes to the dialog, and what is shown is
// read back.
//
// On releases before 10.10 it asks the printer for its custom paper types as soon as it is created. What has
// arrived when the panel is first shown decides the paper-type list for good: the PPD's generic entries take
// the printer's names, and those that the printer said nothing of are removed.
class OrvanPaperOptions final : public platform::PDEPanel,
                                public std::enable_shared_from_this<OrvanPaperOptions> {
public:
    // Null when the dialog's PPD has none of the panel's options; without a callback object, its record or a
    // bundle as well.
    static std::shared_ptr<OrvanPaperOptions> initWithCallbackAndBundle(
        std::shared_ptr<platform::PDEPluginCallback> callback, std::shared_ptr<platform::Bundle> bundle);
    // No answer of the printer reaches the panel any more.
    ~OrvanPaperOptions() override;

    // The dialog's panel interface; Platform/PrintDialog.h has its contract.
    platform::View* panelView() override;
    std::string panelName() override;
    std::string panelKind() override;
    const std::vector<std::string>& supportedPPDOptionKeys() override;
    void willShow() override;
    bool shouldHide() override { return true; }
    bool shouldPrint() override { return true; }
    bool shouldShowHelp() override { return true; }
    bool restoreValuesAndReturnError(platform::PDEError* error) override;
    // Picks reach the dialog when they are made, so there is nothing to save.
    bool saveValuesAndReturnError(platform::PDEError*) override { return true; }
    // Rows without a current choice are left out. Where two options have the same title, the later row's
    // stands. An option whose title is not UTF-8 goes by its keyword.
    std::map<std::string, std::string> summaryInfo() override;
    bool awaitsPrinter() const override;

    // Builds the controls: titles, items, absent rows, the panel's height. Once a panel; later calls do
    // nothing.
    void initializeUI();
    // Labels the view with the tag "title:".
    void setViewTitleByTagFromOptions(std::int64_t tag, const ppd_option_t& option);
    // Selects each row's current choice in its pop-up; a row without one, or whose choice is no longer in its
    // list, keeps what it shows. Does nothing before initializeUI.
    void updateUI();
    // The pop-ups' action: hands the sender's pick to the dialog and shows what the dialog made of it. A
    // sender that is none of the seven pop-ups only refreshes them.
    void changePopupButtonOption(platform::PopUpButton& sender);
    // Hands the pop-up's selected choice to the dialog and reads all rows back. Always null: the row's
    // selection is the one that was read back.
    std::shared_ptr<PDEChoice> selectionForPopUpWithKey(
        platform::PopUpButton* popUp, const std::string& optionKeyword);
    // Reads each row's current choice from the dialog's marks.
    void updateMarkedSelections();
    // The position of the option's marked choice, or of its default when none is marked; -1 for neither.
    std::int64_t indexOfMarkedOptionForKey(ppd_option_t* option, const char* optionKeyword) const;

    // One answer of the printer. Its "customPaperTypes" are kept, five of each answer at most.
    void receivedBiDiResponse(const platform::PropertyList& response);
    void receivedPrinterAnswer(const platform::PropertyList& answer) override {
        receivedBiDiResponse(answer);
    }
    void retrieveCustomPaperTypes(const platform::PropertyList& response);
    // Puts the custom paper types that have arrived into the paper-type list and its pop-up. Always 0.
    std::int32_t queryPrinterForCPTsThread();
    // An entry whose keyword holds "CustomType" and, behind its tenth character, the number N takes name and
    // keyword of the N-th custom type that arrived, in the dialog's PPD record as well; it is removed when
    // there is no such type. A type without a name, or without a "type" that makes a keyword, leaves its
    // entry as it is.
    void updatePaperTypeListForCustomPaperTypes();

private:
    class ResponseForwarder;
    struct OptionRow {
        const OptionRowSpec* spec = nullptr;
        ppd_option_t* option = nullptr;         // in ppd_; null when the PPD lacks it
        std::unique_ptr<PDEChoiceList> choices; // null exactly when the option is
        std::shared_ptr<PDEChoice> selection;   // the current choice; null for none
        std::shared_ptr<platform::PopUpButton> popUp;

        static OptionRow fromPPD(ppd_file_t* ppd, const OptionRowSpec& spec);
    };
    struct RowAnchor;

    OrvanPaperOptions() = default;
    void startPrinterQuery();
    static bool rename(ppd_choice_t& record, const platform::PropertyList& customType);
    platform::ViewOwner viewOwner();
    RowAnchor anchorBelow(const OptionRow& row) const;
    void placeRow(const OptionRow& row, const RowAnchor& anchor);
    void hideRow(const OptionRow& row);
    platform::View* viewWithTag(std::int64_t tag) const;

    std::shared_ptr<platform::PDEPluginCallback> pdePluginCallbackObject_;
    std::optional<std::string> thePDEName_;
    std::shared_ptr<platform::Bundle> pluginBundle_;
    std::shared_ptr<platform::View> pdeView_;
    bool hasInited_ = false;
    ppd_file_t* ppd_ = nullptr;
    std::optional<std::vector<std::string>> supportedOptions_;
    std::array<OptionRow, kOptionRows.size()> rows_;
    std::optional<platform::PropertyList::List>
        cpt_; // custom paper types: those that arrived; nothing during creation
    bool canQueryCPTs_ = false;
    std::shared_ptr<OrvanBiDi> ovBiDi_; // null from release 10.10 on
};

} // namespace orvan
