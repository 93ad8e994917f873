#include "Tests/OrvanPaperOptions/PanelFixture.h"

#include <cstdlib>

namespace orvan {
namespace {

// Each test program has one release, as it is asked once a process. It has to be set before the first panel.
const int kRelease = setenv("ORVAN_SYSTEM_RELEASE", ORVAN_TEST_RELEASE, 1);

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

platform::TextField& PanelTest::label(int row) {
    return dynamic_cast<platform::TextField&>(*root().viewWithTag(row));
}

platform::PopUpButton& PanelTest::popUp(int row) {
    return dynamic_cast<platform::PopUpButton&>(*root().viewWithTag(100 + row));
}

std::string PanelTest::shown(int row) {
    const platform::MenuItem* const item = popUp(row).itemAtIndex(popUp(row).indexOfSelectedItem());
    return item != nullptr ? item->title : "(none)";
}

bool PanelTest::pick(int row, const std::string& title) {
    const auto& items = popUp(row).items();
    for (std::size_t i = 0; i < items.size(); ++i)
        if (items[i].title == title) return popUp(row).pick(static_cast<std::int64_t>(i));
    return false;
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
