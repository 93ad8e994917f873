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

    const std::weak_ptr<platform::View> control = session->panel().panelView()->subviews().front();
    bundle_.reset(); // the session has its own
    session.reset();
    EXPECT_TRUE(control.expired());
}

TEST_F(PanelSessionTest, TakesAPickBackWithAllThatItChanged) {
    const auto session = this->session(DerivedPPD());
    ASSERT_NE(session, nullptr) << error_.value_or("");
    MarkResult last;
    session->setPickHandler(
        [&last](const std::string&, const std::string&, const MarkResult& result) { last = result; });
    session->willShow();
    EXPECT_TRUE(popUp(*session, "OVNEdgeToEdge").pick(1)); // On
    const DialogPPD::Marks before = session->ppd().marks();
    EXPECT_TRUE(popUp(*session, "MediaType").pick(7)); // Labels
    const MarkResult back = session->takeBack(last);
    EXPECT_EQ(back.changes,
        (std::vector<ChoiceChange>{{"MediaType", "Labels", "Plain"}, {"OVNEdgeToEdge", "Off", "On"}}));
    EXPECT_EQ(session->ppd().marks(), before);
    EXPECT_EQ(popUp(*session, "OVNEdgeToEdge").indexOfSelectedItem(), 1);
    EXPECT_EQ(popUp(*session, "MediaType").indexOfSelectedItem(), 0);
}

// The panel keeps the order of its records; what is shown beside it changes nothing there.
TEST_F(PanelSessionTest, ShowsTheOfficesOwnPapersFirst) {
    using platform::PropertyList;
    const auto session = this->session(DerivedPPD());
    ASSERT_NE(session, nullptr) << error_.value_or("");
    const auto paper = [](const char* name, const char* type) {
        return PropertyList(PropertyList::Dictionary{{"name", name}, {"type", type}});
    };
    session->panel().receivedPrinterAnswer(PropertyList(PropertyList::Dictionary{
        {"customPaperTypes", PropertyList(PropertyList::List{paper("Ivory", "2"), paper("Gold", "1")})}}));
    session->willShow();
    platform::PopUpButton& row = popUp(*session, "MediaType");
    ASSERT_EQ(row.items().front().title, "Plain");
    ShownPopUp shown = session->shown(row);
    ASSERT_GT(shown.items.size(), 4U);
    EXPECT_EQ(shown.items[0].title, "Ivory");
    EXPECT_EQ(shown.items[1].title, "Gold");
    EXPECT_TRUE(shown.items[2].isLine);
    EXPECT_EQ(shown.items[3].title, "Plain");
    EXPECT_EQ(shown.selected, 3);
    EXPECT_TRUE(row.pick(shown.items[1].place));
    shown = session->shown(row);
    EXPECT_EQ(shown.selected, 1);
    EXPECT_EQ(session->ppd().choiceOf("MediaType"), "CustomType1");
    EXPECT_FALSE(std::ranges::any_of(session->shown(popUp(*session, "Slipsheet")).items, &ShownItem::isLine));
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
