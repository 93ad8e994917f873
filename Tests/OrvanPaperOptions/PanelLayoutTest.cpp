// The panel's controls as they are built when it is first shown.
#include "Common/PDEChoice.h"
#include "Tests/OrvanPaperOptions/PanelFixture.h"

#include <gtest/gtest.h>

#include <set>

namespace orvan {
namespace {

constexpr platform::Point kLabel5{11, 301};
constexpr platform::Point kPopUp5{195, 299};

constexpr platform::Point below(platform::Point point, double points) {
    return {point.x, point.y - points};
}

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
    const struct {
        std::set<int> absent;
        double row7Below5; // 0: row 7 is not moved
        double shorterBy;
    } cases[] = {
        {{}, 60, 0},
        {{6}, 30, 30},
        {{7}, 0, 30},
        {{6, 7}, 0, 60},
        {{5}, 60, 0},
        {{5, 6}, 30, 30},
        {{1, 2, 3, 4, 5, 6}, 30, 30},
        {{1, 2, 3, 4, 6, 7}, 0, 60},
    };
    for (const auto& [absent, row7Below5, shorterBy] : cases) {
        SCOPED_TRACE(testing::PrintToString(absent));
        DerivedPPD ppd;
        for (const int row : absent)
            ppd.removeOptions({kOptionRows[static_cast<std::size_t>(row) - 1].keyword});
        dialog_ = std::make_shared<CountingCallback>(ppd);
        panel_ = OrvanPaperOptions::initWithCallbackAndBundle(dialog_, bundle_);
        ASSERT_NE(panel_, nullptr);
        // Rows 5 and 6 stand elsewhere than in the resource, so that row 7 has to follow row 5.
        root().setFrame({{3, 4}, 440, 220});
        label(5).setFrameOrigin(kLabel5);
        popUp(5).setFrameOrigin(kPopUp5);
        label(6).setFrameOrigin({600, 601});
        popUp(6).setFrameOrigin({602, 603});
        const std::vector<platform::Rect> before = frames();
        const platform::Point label7 = label(7).frame().origin;
        const platform::Point popUp7 = popUp(7).frame().origin;

        panel_->willShow();

        EXPECT_EQ(root().frame(), (platform::Rect{{3, 4}, 440, 220 - shorterBy}));
        EXPECT_EQ(label(7).frame().origin, row7Below5 > 0 ? below(kLabel5, row7Below5) : label7);
        EXPECT_EQ(popUp(7).frame().origin, row7Below5 > 0 ? below(kPopUp5, row7Below5) : popUp7);
        const std::vector<platform::Rect> after = frames();
        EXPECT_TRUE(std::equal(before.begin() + 1, before.begin() + 13, after.begin() + 1)) << "rows 1 to 6";
        for (int row = 1; row <= 7; ++row) {
            const bool isAbsent = absent.count(row) != 0;
            EXPECT_EQ(label(row).isHidden(), isAbsent && row >= 6) << row;
            EXPECT_EQ(popUp(row).isHidden(), isAbsent && row >= 6) << row;
            EXPECT_EQ(popUp(row).isEnabled(), !isAbsent || row >= 6) << row;
            EXPECT_EQ(popUp(row).items().empty(), isAbsent) << row;
        }
    }
}

TEST_F(PanelLayoutTest, ShowsEachOptionWithItsChoices) {
    ppd_.addPaperTypes(300).replace("Paper Type: PickOne", "Kind of Paper: PickOne");
    createAndShow();
    for (const OptionRowSpec& spec : kOptionRows) {
        SCOPED_TRACE(spec.keyword);
        const ppd_option_t& option = dialog_->option(spec.keyword);
        EXPECT_EQ(label(spec.row).stringValue(), std::string(option.text) + ":");
        const auto& items = popUp(spec.row).items();
        ASSERT_EQ(items.size(), static_cast<std::size_t>(option.num_choices));
        EXPECT_FALSE(popUp(spec.row).autoenablesItems());
        for (std::size_t i = 0; i < items.size(); ++i) {
            EXPECT_EQ(items[i].title, option.choices[i].text);
            EXPECT_EQ(items[i].keyEquivalent, "");
            EXPECT_TRUE(items[i].enabled);
            const auto entry = std::static_pointer_cast<PDEChoice>(items[i].representedObject);
            EXPECT_EQ(entry->choice(), &option.choices[i]);
        }
        EXPECT_EQ(shown(spec.row), ppdFindMarkedChoice(dialog_->ppdFile(), spec.keyword)->text);
    }
    EXPECT_EQ(label(1).stringValue(), "Kind of Paper:");
    EXPECT_EQ(popUp(1).items().size(), 318U);
}

TEST_F(PanelLayoutTest, IsBuiltOnceAndSelectsAnewEachTime) {
    ppd_.removeOptions({"OVNPrintingOptimization", "Slipsheet"});
    createAndShow();
    EXPECT_EQ(label(2).stringValue(), "Separator Page:") << "from the resource";
    const std::vector<platform::Rect> layout = frames();
    label(1).setStringValue("kept");
    popUp(1).addItem({"kept", "", true, nullptr});
    popUp(1).selectItemAtIndex(3);
    popUp(3).selectItemAtIndex(2);
    panel_->willShow();
    EXPECT_EQ(frames(), layout);
    EXPECT_EQ(label(1).stringValue(), "kept");
    EXPECT_EQ(popUp(1).items().back().title, "kept");
    EXPECT_EQ(shown(1), "Plain");
    EXPECT_EQ(shown(3), "Automatic");
}

TEST_F(PanelLayoutTest, FillingSelectsNothing) {
    create();
    panel_->willShow();
    for (int row = 1; row <= 7; ++row)
        EXPECT_EQ(shown(row), "(none)") << row;

    platform::PopUpButton popUp;
    popUp.addItem({"kept", "", true, nullptr});
    InitPopUpFromArray(&popUp, nullptr);
    EXPECT_EQ(popUp.items().size(), 1U);
    InitPopUpFromArray(nullptr, nullptr);
    const PDEChoiceList none;
    InitPopUpFromArray(nullptr, &none);
    InitPopUpFromArray(&popUp, &none);
    EXPECT_TRUE(popUp.items().empty());
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
    EXPECT_EQ(label(5).stringValue(), "OVNMismatch:");
    EXPECT_EQ(popUp(1).items()[0].title, "Plain");
    EXPECT_EQ(popUp(1).items()[1].title, "");
    const auto summary = panel_->summaryInfo();
    EXPECT_EQ(summary.at("OVNMismatch"), "Use Printer Setting");
    EXPECT_EQ(summary.at("Paper Type"), "");

    // A choice whose keyword cannot be said is not asked for, and what stands is shown again.
    EXPECT_TRUE(popUp(1).pick(1));
    EXPECT_TRUE(dialog_->picks.empty());
    EXPECT_EQ(popUp(1).indexOfSelectedItem(), 0);
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
    createAndShow();
    EXPECT_EQ(label(7).frame().origin, (platform::Point{0, -60}));
    EXPECT_EQ(popUp(7).frame().origin, (platform::Point{0, -60}));
    EXPECT_EQ(root().frame().height, 220);
    EXPECT_EQ(label(1).stringValue(), "Paper Type:");
    EXPECT_EQ(shown(6), "Automatic");
    EXPECT_EQ(panel_->summaryInfo().size(), 7U);
    EXPECT_TRUE(pick(7, "On"));
    EXPECT_EQ(shown(7), "On");
}

TEST_F(PanelLayoutTest, WorksWithoutAView) {
    const TempFolder folder;
    bundle_ = bundleWithView(folder, "");
    create();
    EXPECT_EQ(panel_->panelView(), nullptr);
    panel_->restoreValuesAndReturnError(nullptr);
    panel_->willShow();
    EXPECT_EQ(panel_->summaryInfo().size(), 7U);
    EXPECT_EQ(panel_->panelName(), "_PDE_Paper_Options") << "this bundle has no string table";

    bundleWithView(folder, viewResource());
    platform::View* const view = panel_->panelView();
    ASSERT_NE(view, nullptr) << "the resource is tried again";
    EXPECT_EQ(panel_->panelView(), view);
}

} // namespace
} // namespace orvan
