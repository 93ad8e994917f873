#include "Tests/OrvanPaperOptions/PanelFixture.h"

#include <algorithm>
#include <cstdlib>

namespace orvan {
namespace {

// Each test program has one release, as it is asked once a process. It has to be set before the first panel.
const int kRelease = setenv("ORVAN_SYSTEM_RELEASE", ORVAN_TEST_RELEASE, 1);

const OptionRowSpec& rowOf(std::string_view keyword) {
    return *std::ranges::find(kOptionRows, keyword, &OptionRowSpec::keyword);
}

} // namespace

CountingCallback::CountingCallback(const DerivedPPD& ppd, std::shared_ptr<::platform::PMPrinter> printer)
    : record_(ppdOpenFile(ppd.file().c_str())), printer_(std::move(printer)) {
    ++alive;
    EXPECT_EQ(kRelease, 0);
    EXPECT_NE(record_, nullptr);
    ppdMarkDefaults(record_.get());
    onPick = [this](const std::string& option, const std::string& choice) { mark(option, choice); };
}

void PanelTest::create() {
    dialog_ = std::make_shared<CountingCallback>(ppd_, printer_);
    panel_ = OrvanPaperOptions::initWithCallbackAndBundle(dialog_, bundle_);
    ASSERT_NE(panel_, nullptr);
    panel_->panelView();
}

void PanelTest::createAndShow() {
    create();
    ASSERT_NE(panel_, nullptr);
    panel_->restoreValuesAndReturnError(nullptr);
    panel_->willShow();
}

platform::TextField& PanelTest::label(std::string_view keyword) {
    return dynamic_cast<platform::TextField&>(*root().viewWithTag(rowOf(keyword).labelTag()));
}

platform::PopUpButton& PanelTest::popUp(std::string_view keyword) {
    return dynamic_cast<platform::PopUpButton&>(*root().viewWithTag(rowOf(keyword).popUpTag()));
}

std::string PanelTest::shown(std::string_view keyword) {
    const platform::MenuItem* const item = popUp(keyword).itemAtIndex(popUp(keyword).indexOfSelectedItem());
    return item != nullptr ? item->title : "(none)";
}

bool PanelTest::pick(std::string_view keyword, const std::string& title) {
    const auto& items = popUp(keyword).items();
    const auto found = std::ranges::find(items, title, &platform::MenuItem::title);
    return found != items.end() && popUp(keyword).pick(found - items.begin());
}

std::size_t PanelTest::optionCount() {
    return static_cast<std::size_t>(std::ranges::count_if(kOptionRows, [this](const OptionRowSpec& row) {
        return ppdFindOption(dialog_->ppdFile(), row.keyword) != nullptr;
    }));
}

std::shared_ptr<platform::Bundle> bundleWithView(const TempFolder& folder, const std::string& view) {
    folder.write("Test.plugin/Contents/Info.plist", "<plist version='1.0'><dict/></plist>");
    if (!view.empty()) folder.write("Test.plugin/Contents/Resources/PaperOptions.view", view);
    return platform::Bundle::open(folder.path() / "Test.plugin");
}

std::string viewResource() {
    return contents(ORVAN_PLUGIN_FOLDER "/Contents/Resources/PaperOptions.view");
}

} // namespace orvan
