#include "PrintDialog/Host/PanelSession.h"

#include "OrvanPaperOptions/Source/OptionRows.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace orvan {
namespace {

class PanelSessionTest : public testing::Test {
protected:
    std::unique_ptr<PanelSession> session(const DerivedPPD& ppd) {
        return PanelSession::create(bundle_, DialogPPD::open(ppd.file(), error_), nullptr, error_);
    }

    static platform::PopUpButton& popUp(PanelSession& session, std::string_view keyword) {
        const auto& row = *std::ranges::find(kOptionRows, keyword, &OptionRowSpec::keyword);
        return dynamic_cast<platform::PopUpButton&>(
            *session.panel().panelView()->viewWithTag(row.popUpTag()));
    }

    std::shared_ptr<platform::Bundle> bundle_ = platform::Bundle::open(ORVAN_PLUGIN_FOLDER);
    platform::Failure error_;
};

TEST_F(PanelSessionTest, ResolvesThePanelsPicksAndTellsOfThem) {
    auto session = this->session(DerivedPPD());
    ASSERT_NE(session, nullptr) << error_.value_or("");
    std::vector<MarkResult> told;
    session->setPickHandler([&told](const std::string&, const std::string&, const MarkResult& result) {
        told.push_back(result);
    });
    session->willShow();
    EXPECT_TRUE(popUp(*session, "OVNEdgeToEdge").pick(1)); // On
    EXPECT_TRUE(popUp(*session, "MediaType").pick(7));     // Labels
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[1].changes,
        (std::vector<ChoiceChange>{{"MediaType", "Plain", "Labels"}, {"OVNEdgeToEdge", "On", "Off"}}));
    EXPECT_EQ(popUp(*session, "OVNEdgeToEdge").indexOfSelectedItem(), 0);

    // What is chosen elsewhere shows in the panel, and the handler is not told.
    session->markElsewhere("OVNEdgeToEdge", "On");
    EXPECT_EQ(popUp(*session, "OVNEdgeToEdge").indexOfSelectedItem(), 1);
    EXPECT_EQ(popUp(*session, "MediaType").indexOfSelectedItem(), 0);
    session->markElsewhere({{"Slipsheet", "BannerAfter"}, {"OVNSlipSheetSource", "Tray3"}});
    EXPECT_EQ(popUp(*session, "Slipsheet").indexOfSelectedItem(), 5);
    EXPECT_EQ(popUp(*session, "OVNSlipSheetSource").indexOfSelectedItem(), 3);
    EXPECT_EQ(told.size(), 2U);

    const std::weak_ptr<platform::Bundle> bundle = bundle_;
    const std::weak_ptr<platform::View> control = session->panel().panelView()->subviews().front();
    bundle_.reset();
    EXPECT_FALSE(bundle.expired());
    session.reset();
    EXPECT_TRUE(bundle.expired());
    EXPECT_TRUE(control.expired());
}

TEST_F(PanelSessionTest, SummarisesInTheOrderOfThePanel) {
    const auto session = this->session(DerivedPPD()
                                           .keepOptions({"MediaType", "OVNMismatch", "OVNEdgeToEdge"})
                                           .replace("/Edge to Edge: PickOne", "/Paper Type: PickOne"));
    ASSERT_NE(session, nullptr) << error_.value_or("");
    session->willShow();
    EXPECT_EQ(session->summary(),
        (PanelSession::Summary{{"Paper Type", "Off"}, {"Media Mismatch", "Use Printer Setting"}}));
}

TEST_F(PanelSessionTest, SaysWhetherThePlugInOrThePrinterIsTheReason) {
    EXPECT_EQ(session(DerivedPPD().keepOptions({})), nullptr);
    EXPECT_FALSE(error_);

    const TempFolder folder;
    folder.write("Empty.plugin/Contents/Info.plist", "<plist version='1.0'><dict/></plist>");
    bundle_ = platform::Bundle::open(folder.path() / "Empty.plugin");
    EXPECT_EQ(session(DerivedPPD()), nullptr);
    EXPECT_NE(error_.value_or("").find("is no plug-in"), std::string::npos) << error_.value_or("");
}

} // namespace
} // namespace orvan
