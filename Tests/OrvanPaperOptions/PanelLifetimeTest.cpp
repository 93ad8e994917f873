// What is let go of when a panel ends.
#include "Tests/OrvanPaperOptions/PanelFixture.h"
#include "Tests/Support/FakePrinter.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

class PanelLifetimeTest : public PanelTest {};

TEST_F(PanelLifetimeTest, NothingOutlivesThePanel) {
    for (const bool shown : {false, true}) {
        shown ? createAndShow() : create();
        const std::weak_ptr<platform::Bundle> bundle = bundle_;
        const std::weak_ptr<platform::View> control = root().subviews().front();
        const std::weak_ptr<OrvanPaperOptions> panel = panel_;
        const std::weak_ptr<void> choice =
            shown ? popUp("MediaType").items().front().representedObject : std::shared_ptr<void>();
        bundle_.reset();
        dialog_.reset();
        EXPECT_EQ(CountingCallback::alive, 1) << "the panel holds the dialog's callback object";
        EXPECT_FALSE(bundle.expired());
        panel_.reset();
        EXPECT_TRUE(panel.expired());
        EXPECT_EQ(CountingCallback::alive, 0);
        EXPECT_TRUE(bundle.expired());
        EXPECT_TRUE(control.expired());
        EXPECT_TRUE(choice.expired());
        bundle_ = platform::Bundle::open(ORVAN_PLUGIN_FOLDER);
    }
}

TEST_F(PanelLifetimeTest, ThePrinterIsNotAskedFromThisReleaseOn) {
    ppd_.append("*cupsCommands: \"com.orvan.CustomPaperTypes\"\n");
    printer_ = std::make_shared<FakePrinter>();
    createAndShow();
    EXPECT_EQ(dialog_->printerRequests, 0);
    EXPECT_EQ(dialog_.use_count(), 2) << "the panel holds the callback object, and no channel does";
    EXPECT_FALSE(panel_->awaitsPrinter());
    const std::size_t choices = popUp("MediaType").items().size();
    panel_->updatePaperTypeListForCustomPaperTypes();
    panel_->willShow();
    EXPECT_EQ(popUp("MediaType").items().size(), choices);
    EXPECT_TRUE(pick("MediaType", "Custom Type 5"));
    EXPECT_EQ(dialog_->picks.back().second, "CustomType5");
}

TEST_F(PanelLifetimeTest, AViewThatIsKeptLongerDoesNothing) {
    createAndShow();
    const std::vector<std::shared_ptr<platform::View>> views = root().subviews();
    panel_.reset();
    EXPECT_EQ(dialog_.use_count(), 1) << "the view does not hold the callback object";
    for (const std::shared_ptr<platform::View>& view : views)
        if (auto* const popUp = dynamic_cast<platform::PopUpButton*>(view.get())) {
            EXPECT_TRUE(popUp->pick(1));
            EXPECT_EQ(popUp->indexOfSelectedItem(), 1);
        }
    EXPECT_TRUE(dialog_->picks.empty());
}

TEST_F(PanelLifetimeTest, ThePanelMayEndWithinItsOwnPick) {
    createAndShow();
    const std::vector<std::shared_ptr<platform::View>> views = root().subviews();
    dialog_->onPick = [this](auto&, auto&) { panel_.reset(); };
    EXPECT_TRUE(popUp("MediaType").pick(2));
    EXPECT_EQ(panel_, nullptr);
    EXPECT_EQ(dialog_.use_count(), 1);
    EXPECT_EQ(dialog_->picks.size(), 1U);
}

} // namespace
} // namespace orvan
