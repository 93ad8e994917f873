// A panel with a dialog's callback object that counts, on a real PPD record.
#pragma once

#include "OrvanPaperOptions/Source/OptionRows.h"
#include "OrvanPaperOptions/Source/OrvanPaperOptions.h"
#include "Platform/PMPrinter.h"
#include "Platform/PrintDialog.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

class CountingCallback final : public platform::PDEPluginCallback {
public:
    static inline int alive = 0;
    using Pick = std::pair<std::string, std::string>;

    // Without a printer, the dialog's has no queue.
    explicit CountingCallback(
        const DerivedPPD& ppd, std::shared_ptr<::platform::PMPrinter> printer = nullptr);
    ~CountingCallback() override { --alive; }
    CountingCallback(const CountingCallback&) = delete;
    CountingCallback& operator=(const CountingCallback&) = delete;

    ppd_file_t* ppdFile() override { return record_.get(); }
    std::shared_ptr<::platform::PMPrinter> PMPrinter() override {
        ++printerRequests;
        return printer_;
    }
    void willChangePPDOptionKeyValuePpdChoice(const std::string& option, const std::string& choice) override {
        picks.emplace_back(option, choice);
        onPick(option, choice);
    }

    ppd_option_t& option(const char* keyword) { return *ppdFindOption(record_.get(), keyword); }
    void mark(const std::string& option, const std::string& choice) {
        ppdMarkOption(record_.get(), option.c_str(), choice.c_str());
    }

    std::vector<Pick> picks;
    int printerRequests = 0;
    // What the dialog makes of a pick; until a test replaces it, it marks the choice.
    std::function<void(const std::string& option, const std::string& choice)> onPick;

private:
    PPDRecord record_;
    std::shared_ptr<::platform::PMPrinter> printer_;
};

// The panel of `ppd`, which a test changes before it creates the panel.
class PanelTest : public testing::Test {
protected:
    // Creates the panel with its view. Its bundle is the plug-in's own unless a test made another.
    void create();
    void createAndShow();

    platform::View& root() { return *panel_->panelView(); }
    // The controls of an option's row.
    platform::TextField& label(std::string_view keyword);
    platform::PopUpButton& popUp(std::string_view keyword);
    // The title of the pop-up's selected item; "(none)" when none is selected.
    std::string shown(std::string_view keyword);
    // Picks the choice with this title as a person would.
    bool pick(std::string_view keyword, const std::string& title);
    // How many of the rows' options the PPD has.
    std::size_t optionCount();

    DerivedPPD ppd_;
    std::shared_ptr<platform::Bundle> bundle_ = platform::Bundle::open(ORVAN_PLUGIN_FOLDER);
    std::shared_ptr<platform::PMPrinter> printer_; // the dialog's
    std::shared_ptr<CountingCallback> dialog_;
    std::shared_ptr<OrvanPaperOptions> panel_;
};

// A bundle in the folder with this view resource; "" for none.
std::shared_ptr<platform::Bundle> bundleWithView(const TempFolder& folder, const std::string& view);
// The plug-in's own view resource.
std::string viewResource();

} // namespace orvan
