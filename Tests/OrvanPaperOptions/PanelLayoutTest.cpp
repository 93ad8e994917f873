// The panel's controls as they are built when it is first shown.
#include "Common/PDEChoice.h"
#include "Tests/OrvanPaperOptions/PanelFixture.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace orvan {
namespace {

class PanelLayoutTest : public PanelTest {
protected:
    std::vector<platform::Rect> frames() {
        std::vector<platform::Rect> frames{root().frame()};
        for (const std::shared_ptr<platform::View>& view : root().subviews())
            frames.push_back(view->frame());
        return frames;
    }
};

TEST_F(PanelLayoutTest, MakesRoomForTheRowsThatThePrinterHas) {
    constexpr const char* kOptimization = "OVNPrintingOptimization";
    constexpr const char* kEdge = "OVNEdgeToEdge";
    const std::string fixed = kLastFixedRow.keyword;
    const struct {
        std::set<std::string> absent;
        double edgeBelowFixed; // 0: the row is not moved
    } cases[] = {
        {{}, 60},
        {{kOptimization}, 30},
        {{kEdge}, 0},
        {{kOptimization, kEdge}, 0},
        {{fixed}, 60},
        {{fixed, kOptimization}, 30},
        {{"MediaType", "Slipsheet", "OVNSlipSheetSource", "OVNLastPageSource", fixed, kOptimization}, 30},
    };
    for (const auto& [absent, edgeBelowFixed] : cases) {
        SCOPED_TRACE(testing::PrintToString(absent));
        DerivedPPD ppd;
        for (const std::string& keyword : absent)
            ppd.removeOptions({keyword});
        dialog_ = std::make_shared<CountingCallback>(ppd);
        panel_ = OrvanPaperOptions::initWithCallbackAndBundle(dialog_, bundle_);
        ASSERT_NE(panel_, nullptr);
        // Two rows stand elsewhere than in the resource, so that the last has to follow the fixed one.
        label(fixed).setFrameOrigin({11, 301});
        popUp(fixed).setFrameOrigin({195, 299});
        label(kOptimization).setFrameOrigin({600, 601});
        popUp(kOptimization).setFrameOrigin({602, 603});
        const std::vector<platform::Rect> before = frames();
        const platform::Rect edgeLabel = label(kEdge).frame();

        panel_->willShow();

        const std::vector<platform::Rect> after = frames();
        double shorter = 0;
        for (const OptionRowSpec& spec : kOptionRows) {
            SCOPED_TRACE(spec.keyword);
            const bool isAbsent = ppdFindOption(dialog_->ppdFile(), spec.keyword) == nullptr;
            const bool isHidden = isAbsent && spec.whenAbsent == WhenAbsent::HideRow;
            if (isHidden) shorter += kRowPitch;
            EXPECT_EQ(label(spec.keyword).isHidden(), isHidden);
            EXPECT_EQ(popUp(spec.keyword).isHidden(), isHidden);
            EXPECT_EQ(popUp(spec.keyword).isEnabled(), !isAbsent || isHidden);
            EXPECT_EQ(popUp(spec.keyword).items().empty(), isAbsent);
            if (spec.place == RowPlace::AsInResource) {
                const auto of = 2 * static_cast<std::size_t>(spec.row) - 1;
                EXPECT_EQ(after[of], before[of]);
                EXPECT_EQ(after[of + 1], before[of + 1]);
            }
        }
        EXPECT_EQ(after[0].height, before[0].height - shorter);
        if (edgeBelowFixed > 0) {
            EXPECT_EQ(label(kEdge).frame().origin, (platform::Point{11, 301 - edgeBelowFixed}));
            EXPECT_EQ(popUp(kEdge).frame().origin, (platform::Point{195, 299 - edgeBelowFixed}));
        } else {
            EXPECT_EQ(label(kEdge).frame(), edgeLabel);
        }
    }
}

TEST_F(PanelLayoutTest, ShowsEachOptionWithItsChoices) {
    ppd_.addPaperTypes(300).replace("Paper Type: PickOne", "Kind of Paper: PickOne");
    createAndShow();
    for (const OptionRowSpec& spec : kOptionRows) {
        SCOPED_TRACE(spec.keyword);
        const ppd_option_t& option = dialog_->option(spec.keyword);
        EXPECT_EQ(label(spec.keyword).stringValue(), std::string(option.text) + ":");
        const auto& items = popUp(spec.keyword).items();
        ASSERT_EQ(items.size(), static_cast<std::size_t>(option.num_choices));
        for (std::size_t i = 0; i < items.size(); ++i) {
            EXPECT_EQ(items[i].title, option.choices[i].text);
            EXPECT_TRUE(items[i].enabled);
            const auto entry = std::static_pointer_cast<PDEChoice>(items[i].representedObject);
            EXPECT_EQ(entry->choice(), &option.choices[i]);
        }
        EXPECT_EQ(shown(spec.keyword), ppdFindMarkedChoice(dialog_->ppdFile(), spec.keyword)->text);
    }
    EXPECT_EQ(label("MediaType").stringValue(), "Kind of Paper:");
}

TEST_F(PanelLayoutTest, IsBuiltOnceAndSelectsAnewEachTime) {
    ppd_.removeOptions({"OVNPrintingOptimization", "Slipsheet"});
    createAndShow();
    EXPECT_EQ(label("Slipsheet").stringValue(), "Separator Page:") << "from the resource";
    const std::vector<platform::Rect> layout = frames();
    label("MediaType").setStringValue("kept");
    popUp("MediaType").addItem({"kept", "", "", true, nullptr});
    popUp("MediaType").selectItemAtIndex(3);
    popUp("OVNSlipSheetSource").selectItemAtIndex(2);
    panel_->willShow();
    EXPECT_EQ(frames(), layout);
    EXPECT_EQ(label("MediaType").stringValue(), "kept");
    EXPECT_EQ(popUp("MediaType").items().back().title, "kept");
    EXPECT_EQ(shown("MediaType"), "Plain");
    EXPECT_EQ(shown("OVNSlipSheetSource"), "Automatic");
}

TEST_F(PanelLayoutTest, FillingSelectsNothing) {
    create();
    panel_->willShow();
    for (const OptionRowSpec& spec : kOptionRows)
        EXPECT_EQ(shown(spec.keyword), "(none)") << spec.keyword;
}

TEST_F(PanelLayoutTest, GoesByKeywordsWhereTitlesDoNotDecode) {
    create();
    dialog_->option("OVNMismatch").text[0] = '\xFF';
    ppd_option_t& paper = dialog_->option("MediaType");
    paper.choices[0].text[0] = '\xFF'; // Plain
    paper.choices[1].text[0] = '\xFF';
    paper.choices[1].choice[0] = '\xFF';
    panel_->restoreValuesAndReturnError(nullptr);
    panel_->willShow();
    EXPECT_EQ(label("OVNMismatch").stringValue(), "OVNMismatch:");
    EXPECT_EQ(popUp("MediaType").items()[0].title, "Plain");
    EXPECT_EQ(popUp("MediaType").items()[1].title, "");
    const auto summary = panel_->summaryInfo();
    EXPECT_EQ(summary.at("OVNMismatch"), "Use Printer Setting");
    EXPECT_EQ(summary.at("Paper Type"), "");

    // A choice whose keyword cannot be said is not asked for, and what stands is shown again.
    EXPECT_TRUE(popUp("MediaType").pick(1));
    EXPECT_TRUE(dialog_->picks.empty());
    EXPECT_EQ(popUp("MediaType").indexOfSelectedItem(), 0);
}

TEST_F(PanelLayoutTest, WorksWithTheControlsThatThereAre) {
    // Of row 5 nothing, of row 6 no label, of row 1 no pop-up.
    std::string view = viewResource();
    for (const char* start :
        {"<popUp tag=\"101\"", "<label tag=\"5\"", "<popUp tag=\"105\"", "<label tag=\"6\""}) {
        const std::size_t from = view.find(start);
        ASSERT_NE(from, std::string::npos) << start;
        view.erase(from, view.find('\n', from) - from);
    }
    const TempFolder folder;
    bundle_ = bundleWithView(folder, view);
    create();
    const platform::Rect whole = root().frame();
    createAndShow();
    EXPECT_EQ(label("OVNEdgeToEdge").frame().origin, (platform::Point{0, -60}));
    EXPECT_EQ(popUp("OVNEdgeToEdge").frame().origin, (platform::Point{0, -60}));
    EXPECT_EQ(root().frame(), whole);
    EXPECT_EQ(label("MediaType").stringValue(), "Paper Type:");
    EXPECT_EQ(shown("OVNPrintingOptimization"), "Automatic");
    EXPECT_EQ(panel_->summaryInfo().size(), optionCount());
    EXPECT_TRUE(pick("OVNEdgeToEdge", "On"));
    EXPECT_EQ(shown("OVNEdgeToEdge"), "On");
}

TEST_F(PanelLayoutTest, WorksWithoutAView) {
    const TempFolder folder;
    bundle_ = bundleWithView(folder, "");
    create();
    EXPECT_EQ(panel_->panelView(), nullptr);
    panel_->restoreValuesAndReturnError(nullptr);
    panel_->willShow();
    EXPECT_EQ(panel_->summaryInfo().size(), optionCount());
    EXPECT_EQ(panel_->panelName(), "_PDE_Paper_Options") << "this bundle has no string table";

    bundleWithView(folder, viewResource());
    platform::View* const view = panel_->panelView();
    ASSERT_NE(view, nullptr) << "the resource is tried again";
    EXPECT_EQ(panel_->panelView(), view);
}

} // namespace
} // namespace orvan
