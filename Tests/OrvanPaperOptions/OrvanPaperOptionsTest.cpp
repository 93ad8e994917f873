// The panel in step with the dialog's marks.
#include "Tests/OrvanPaperOptions/PanelFixture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>

namespace orvan {
namespace {

using Summary = std::map<std::string, std::string>;

class OrvanPaperOptionsTest : public PanelTest {};

TEST_F(OrvanPaperOptionsTest, HandlesTheOptionsThatThePrinterHas) {
    using Keys = std::vector<std::string>;
    create();
    Keys all;
    for (const OptionRowSpec& spec : kOptionRows)
        if (ppdFindOption(dialog_->ppdFile(), spec.keyword) != nullptr) all.emplace_back(spec.keyword);
    EXPECT_EQ(panel_->supportedPPDOptionKeys(), all);

    ppd_.keepOptions({"OVNEdgeToEdge"});
    create();
    EXPECT_EQ(panel_->supportedPPDOptionKeys(), Keys{"OVNEdgeToEdge"});
}

TEST_F(OrvanPaperOptionsTest, RestoredBeforeItIsShownSelectsOnlyWhenShown) {
    create();
    EXPECT_EQ(panel_->summaryInfo(), Summary{});
    popUp("MediaType").addItem({"from the resource", "", "", true, nullptr});
    dialog_->mark("MediaType", "Glossy");
    panel_->restoreValuesAndReturnError(nullptr);
    EXPECT_EQ(panel_->summaryInfo().at("Paper Type"), "Glossy");
    EXPECT_EQ(shown("MediaType"), "(none)");
    panel_->willShow();
    EXPECT_EQ(shown("MediaType"), "Glossy");

    // What changes in the dialog is seen when the dialog says so.
    dialog_->mark("MediaType", "Bond");
    panel_->willShow();
    EXPECT_EQ(shown("MediaType"), "Glossy");
    panel_->restoreValuesAndReturnError(nullptr);
    EXPECT_EQ(shown("MediaType"), "Bond");
}

TEST_F(OrvanPaperOptionsTest, HandsEachPickToTheDialogAndShowsWhatItMadeOfIt) {
    using Dialog = CountingCallback;
    const struct {
        const char* about;
        std::function<void(Dialog&)> onPick;
        const char* paper;
        const char* edge;
    } cases[] = {
        {"marks it", [](Dialog& dialog) { dialog.mark("MediaType", "Labels"); }, "Labels", "On"},
        {"refuses it", [](Dialog&) {}, "Plain", "On"},
        {"marks another", [](Dialog& dialog) { dialog.mark("MediaType", "Bond"); }, "Bond", "On"},
        {"changes another option as well",
            [](Dialog& dialog) {
                dialog.mark("MediaType", "Labels");
                dialog.mark("OVNEdgeToEdge", "Off");
            },
            "Labels", "Off"},
    };
    for (const auto& [about, onPick, paper, edge] : cases) {
        SCOPED_TRACE(about);
        createAndShow();
        EXPECT_TRUE(pick("OVNEdgeToEdge", "On"));
        dialog_->onPick = [this, &onPick = onPick](auto&, auto&) { onPick(*dialog_); };
        EXPECT_TRUE(pick("MediaType", "Labels"));
        EXPECT_EQ(
            dialog_->picks, (std::vector<Dialog::Pick>{{"OVNEdgeToEdge", "On"}, {"MediaType", "Labels"}}));
        EXPECT_EQ(shown("MediaType"), paper);
        EXPECT_EQ(shown("OVNEdgeToEdge"), edge);
        EXPECT_EQ(panel_->summaryInfo().at("Paper Type"), paper);
        EXPECT_EQ(panel_->summaryInfo().at("Edge to Edge"), edge);
    }
}

TEST_F(OrvanPaperOptionsTest, EachPopUpAsksForItsOwnOption) {
    createAndShow();
    std::vector<CountingCallback::Pick> expected;
    for (const OptionRowSpec& spec : kOptionRows) {
        EXPECT_TRUE(popUp(spec.keyword).pick(1));
        expected.emplace_back(spec.keyword, dialog_->option(spec.keyword).choices[1].choice);
        EXPECT_EQ(popUp(spec.keyword).indexOfSelectedItem(), 1);
    }
    EXPECT_EQ(dialog_->picks, expected);
}

TEST_F(OrvanPaperOptionsTest, AnActionFromElsewhereOnlyRefreshes) {
    createAndShow();
    for (const std::int64_t tag :
        {std::int64_t{0}, kOptionRows.front().labelTag(), kOptionRows.front().popUpTag() - 1,
            kOptionRows.back().popUpTag() + 1, -kOptionRows.front().popUpTag()}) {
        platform::PopUpButton sender;
        sender.setTag(tag);
        popUp("OVNSlipSheetSource").selectItemAtIndex(2);
        dialog_->mark("MediaType", "Bond"); // not read back
        panel_->changePopupButtonOption(sender);
        EXPECT_EQ(shown("OVNSlipSheetSource"), "Automatic") << tag;
        EXPECT_EQ(shown("MediaType"), "Plain") << tag;
    }
    EXPECT_TRUE(dialog_->picks.empty());
}

TEST_F(OrvanPaperOptionsTest, ARowWithoutAMarkGoesByItsDefault) {
    create();
    panel_->restoreValuesAndReturnError(nullptr); // each row has a choice, which two of them lose
    const auto unmark = [this](const char* keyword) {
        ppd_option_t& option = dialog_->option(keyword);
        for (int i = 0; i < option.num_choices; ++i)
            option.choices[i].marked = 0;
        cupsArrayRemove(dialog_->ppdFile()->marked, &option.choices[0]);
        EXPECT_EQ(ppdFindMarkedChoice(dialog_->ppdFile(), keyword), nullptr);
    };
    unmark("OVNMismatch");
    std::strcpy(dialog_->option("OVNMismatch").defchoice, "Hold");
    unmark("Slipsheet");
    std::strcpy(dialog_->option("Slipsheet").defchoice, "Gone");
    EXPECT_EQ(panel_->indexOfMarkedOptionForKey(&dialog_->option("OVNMismatch"), "OVNMismatch"), 3);
    EXPECT_EQ(panel_->indexOfMarkedOptionForKey(&dialog_->option("Slipsheet"), "Slipsheet"), -1);

    panel_->willShow();
    popUp("Slipsheet").selectItemAtIndex(4);
    panel_->restoreValuesAndReturnError(nullptr);
    EXPECT_EQ(shown("OVNMismatch"), "Hold Until Loaded");
    EXPECT_EQ(popUp("Slipsheet").indexOfSelectedItem(), 4) << "a row without a choice keeps what it shows";
    const Summary summary = panel_->summaryInfo();
    EXPECT_EQ(summary.size(), optionCount() - 1);
    EXPECT_EQ(summary.count("Separator Page"), 0U);
}

TEST_F(OrvanPaperOptionsTest, SummarisesEachChoiceUnderItsOptionsTitle) {
    ppd_.keepOptions({"MediaType", "OVNEdgeToEdge"});
    create();
    panel_->restoreValuesAndReturnError(nullptr);
    EXPECT_EQ(panel_->summaryInfo(), (Summary{{"Edge to Edge", "Off"}, {"Paper Type", "Plain"}}));

    ppd_.replace("/Edge to Edge: PickOne", "/Paper Type: PickOne");
    create();
    panel_->restoreValuesAndReturnError(nullptr);
    EXPECT_EQ(panel_->summaryInfo(), (Summary{{"Paper Type", "Off"}})) << "the later row stands";
}

} // namespace
} // namespace orvan
