// The paper options in the print dialogs of applications that know nothing of them.
#include "OrvanPaperOptions/Source/OptionRows.h"
#include "Tests/PrintDialog/Gtk/Application.h"
#include "Tests/PrintDialog/Gtk/Widgets.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <csignal>
#include <fstream>
#include <string>

namespace orvan::test {
namespace {

class PaperOptionsTab : public DialogTest {
protected:
    // That option of the queue's newest job.
    std::string option(const std::string& keyword, const std::string& queue = "Office") const {
        const auto all = jobs(queue);
        return all.empty() ? "(no job arrived)" : all.back().attribute(keyword).value_or("(none)");
    }
};

// The labels of the rows that the driver's options fill, top to bottom.
std::vector<std::string> labels() {
    const PPDRecord record(ppdOpenFile(ORVAN_PPD_FILE));
    std::vector<std::string> labels{"Preset:"};
    for (const OptionRowSpec& row : kOptionRows)
        if (const ppd_option_t* option = ppdFindOption(record.get(), row.keyword); option != nullptr)
            labels.push_back(std::string(option->text) + ":");
    return labels;
}

bool hasTab(const OpenDialog& dialog) {
    const auto tabs = dialog.tabs();
    return std::ranges::find(tabs, kTab) != tabs.end();
}

TEST_F(PaperOptionsTab, isThereForOrvanQueuesAndNoOthers) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Other"}});
        for (const auto& [queue, next] : {std::pair{"Office", "Print to File"}, {"Annex", "Other"},
                 {"Office", "Other"}, {"Annex", "Print to File"}}) {
            SCOPED_TRACE(queue);
            dialog.selectPrinter(queue);
            ASSERT_TRUE(dialog.waitForTab(kTab));
            dialog.openTab(kTab);
            EXPECT_EQ(dialog.popUps().size(), labels().size());
            for (const std::string& label : labels())
                EXPECT_NE(dialog.shownIn(label), "") << label;
            dialog.selectPrinter(next);
            EXPECT_FALSE(hasTab(dialog));
        }
        letPass(std::chrono::milliseconds(300)); // long enough for a late answer
        EXPECT_FALSE(hasTab(dialog));
    });
}

TEST_F(PaperOptionsTab, picksOnItAndOnTheOtherTabsArriveInTheJob) {
    inApplication([this] {
        OpenDialog dialog(Settings{{"printer", "Office"}, {"cups-OVNLastPageSource", "Tray3"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        EXPECT_EQ(dialog.shownIn("Last Page Source:"), "Tray 3")
            << "the application's memory is where the marks start";
        dialog.pick("Paper Type:", "Custom Type 2");
        dialog.pick("Media Mismatch:", "Print on Loaded Paper");
        EXPECT_FALSE(dialog.says("Paper Type: Custom Type 2"));
        dialog.unfold();
        EXPECT_TRUE(waitUntil([&] { return dialog.says("Paper Type: Custom Type 2"); }))
            << "the summary follows";

        dialog.openTab("Page Setup");
        EXPECT_EQ(dialog.shownIn("Paper type:"), "Custom Type 2") << "GTK's own option follows";
        dialog.pick("Paper type:", "Glossy");
        dialog.openTab(kTab);
        EXPECT_EQ(dialog.shownIn("Paper Type:"), "Glossy") << "and leads";
        EXPECT_TRUE(dialog.says("Paper Type: Glossy"));
        EXPECT_EQ(dialog.print(document_), "");
    });
    EXPECT_EQ(option("MediaType"), "Glossy");
    EXPECT_EQ(option("OVNMismatch"), "Print");
    EXPECT_EQ(option("OVNLastPageSource"), "Tray3");
}

TEST_F(PaperOptionsTab, whatContradictsTheNewestPickGivesWay) {
    inApplication([this] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        dialog.pick("Edge to Edge:", "On");
        dialog.pick("Paper Type:", "Transparency");
        EXPECT_EQ(dialog.shownIn("Edge to Edge:"), "Off");
        EXPECT_TRUE(dialog.says("Edge to Edge changed from “On” to “Off”."));

        dialog.pick("Edge to Edge:", "On");
        EXPECT_NE(dialog.shownIn("Paper Type:"), "Transparency");
        EXPECT_TRUE(dialog.says("Paper Type changed from “Transparency” to "));

        // The same by GTK's own tab.
        dialog.openTab("Page Setup");
        dialog.pick("Paper type:", "Transparency");
        dialog.openTab(kTab);
        EXPECT_EQ(dialog.shownIn("Paper Type:"), "Transparency");
        EXPECT_EQ(dialog.shownIn("Edge to Edge:"), "Off");
        EXPECT_EQ(dialog.print(document_), "");
    });
    EXPECT_EQ(option("MediaType"), "Transparency");
    EXPECT_EQ(option("OVNEdgeToEdge"), "Off");
}

TEST_F(PaperOptionsTab, followsPicksOnOtherTabsBeforeItWasEverOpened) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab("Page Setup");
        dialog.pick("Paper type:", "Glossy");
        dialog.openTab(kTab);
        EXPECT_EQ(dialog.shownIn("Paper Type:"), "Glossy");
    });
}

TEST_F(PaperOptionsTab, undoPutsBackThePickAndWhatItChanged) {
    inApplication([this] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        dialog.pick("Edge to Edge:", "On");
        EXPECT_FALSE(dialog.press("Undo")) << "nothing else has changed";
        dialog.pick("Paper Type:", "Transparency");
        dialog.keepPicture("undo");
        ASSERT_TRUE(dialog.press("Undo"));
        EXPECT_EQ(dialog.shownIn("Paper Type:"), "Plain");
        EXPECT_EQ(dialog.shownIn("Edge to Edge:"), "On");
        EXPECT_FALSE(dialog.says("changed from"));
        EXPECT_FALSE(dialog.press("Undo")) << "it is undone";
        dialog.openTab("Page Setup");
        EXPECT_EQ(dialog.shownIn("Paper type:"), "Plain") << "GTK's own option follows";

        // A pick on GTK's own tab.
        dialog.pick("Paper type:", "Labels");
        dialog.openTab(kTab);
        EXPECT_EQ(dialog.shownIn("Edge to Edge:"), "Off");
        ASSERT_TRUE(dialog.press("Undo"));
        EXPECT_EQ(dialog.shownIn("Paper Type:"), "Plain");
        EXPECT_EQ(dialog.print(document_), "");
    });
    EXPECT_EQ(option("MediaType"), "Plain");
    EXPECT_EQ(option("OVNEdgeToEdge"), "On");
}

TEST_F(PaperOptionsTab, hasThePresetsThatAnotherApplicationSaved) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab("Page Setup");
        dialog.pick("Two-sided:", "Short Edge (Flip)");
        dialog.openTab(kTab);
        dialog.pick("Paper Type:", "Glossy");
        dialog.pick("Preset:", "Save as …");
        dialog.type("Photos");
        ASSERT_TRUE(dialog.press("Save"));
        EXPECT_EQ(dialog.shownIn("Preset:"), "Photos");
        EXPECT_FALSE(dialog.press("Cancel")) << "the editor is gone";
    });
    inApplication([this] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        dialog.pick("Preset:", "Photos");
        EXPECT_EQ(dialog.shownIn("Paper Type:"), "Glossy");
        dialog.openTab("Page Setup");
        EXPECT_EQ(dialog.shownIn("Paper type:"), "Glossy") << "GTK's own option follows";
        EXPECT_EQ(dialog.print(document_), "");
    });
    EXPECT_EQ(option("MediaType"), "Glossy");
    EXPECT_EQ(option("Duplex"), "DuplexTumble");
}

TEST_F(PaperOptionsTab, rememberedSettingsThatContradictEachOtherAreResolved) {
    inApplication([this] {
        OpenDialog dialog(Settings{
            {"printer", "Office"}, {"cups-MediaType", "Transparency"}, {"cups-OVNEdgeToEdge", "On"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        EXPECT_FALSE(
            dialog.shownIn("Paper Type:") == "Transparency" && dialog.shownIn("Edge to Edge:") == "On");
        EXPECT_TRUE(dialog.says(" changed from "));
        EXPECT_EQ(dialog.print(document_), "");
    });
    EXPECT_FALSE(option("MediaType") == "Transparency" && option("OVNEdgeToEdge") == "On");
}

// The queue's PPD has changed since GTK read it, so GTK refuses a choice that the panel offers.
TEST_F(PaperOptionsTab, aPickThatGTKRefusesArrivesInTheJob) {
    inApplication([this] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        DerivedPPD changed;
        changed.replace("*MediaType CustomType5/", "*MediaType CustomType17/");
        ASSERT_EQ(desktop_.printing->addQueue({.name = "Office", .ppdFile = changed.file()}), std::nullopt);
        dialog.selectPrinter("Other");
        dialog.selectPrinter("Office");
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        dialog.pick("Paper Type:", "Custom Type 5");
        dialog.openTab("Page Setup");
        EXPECT_NE(dialog.shownIn("Paper type:"), "Custom Type 5") << "GTK does refuse it";
        EXPECT_EQ(dialog.print(document_), "");
    });
    EXPECT_EQ(option("MediaType"), "CustomType17");
}

// An option of one choice is none to GTK; and each dialog's job has that dialog's picks.
TEST_F(PaperOptionsTab, everyDialogHasItsOwnPicks) {
    inApplication([this] {
        OpenDialog first(Settings{{"printer", "Office"}});
        OpenDialog second(Settings{{"printer", "Annex"}});
        for (OpenDialog* dialog : {&first, &second}) {
            ASSERT_TRUE(dialog->waitForTab(kTab));
            dialog->openTab(kTab);
        }
        first.pick("Paper Type:", "Cardstock");
        second.pick("Paper Type:", "Labels");
        EXPECT_EQ(first.shownIn("Paper Type:"), "Cardstock");
        EXPECT_EQ(second.print(document_), "");
        EXPECT_EQ(first.print(document_), "");
    });
    EXPECT_EQ(option("MediaType", "Office"), "Card");
    EXPECT_EQ(option("MediaType", "Annex"), "Labels");
}

TEST_F(PaperOptionsTab, isReachedByTheKeyboard) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        auto unreached = dialog.popUps();
        // The order is that of the places on the screen.
        ASSERT_TRUE(waitUntil([&] {
            return std::ranges::all_of(unreached,
                [](const auto& entry) { return gtk_widget_get_allocated_height(entry.second) > 1; });
        }));
        std::vector<std::string> order;
        for (int presses = 0; presses < 40 && !unreached.empty(); ++presses) {
            gtk_widget_child_focus(GTK_WIDGET(dialog.dialog()), GTK_DIR_TAB_FORWARD);
            GtkWidget* const focus = gtk_window_get_focus(GTK_WINDOW(dialog.dialog()));
            std::erase_if(unreached, [&](const auto& entry) {
                if (focus == nullptr || !gtk_widget_is_ancestor(focus, entry.second)) return false;
                order.push_back(entry.first);
                return true;
            });
        }
        EXPECT_EQ(order, labels());
    });
}

// With a name of 200 letters, on the smallest screen and with large letters.
TEST_F(PaperOptionsTab, makesTheDialogNoLarger) {
    DerivedPPD ppd;
    ppd.replace("MediaType Bond/Bond", "MediaType Bond/" + std::string(70, 'W'));
    ASSERT_EQ(desktop_.printing->addQueue({.name = "Long", .ppdFile = ppd.file()}), std::nullopt);
    const TempFolder folder;
    const auto sizes = [&folder](bool withTab) {
        std::ofstream file(folder.path() / (withTab ? "with" : "without"));
        for (const char* const font : {"Sans 10", "Sans 20"}) {
            g_object_set(gtk_settings_get_default(), "gtk-font-name", font, nullptr);
            OpenDialog dialog(Settings{{"printer", "Long"}, {"cups-MediaType", "Bond"}});
            if (withTab) {
                ASSERT_TRUE(dialog.waitForTab(kTab));
                dialog.openTab(kTab);
                ASSERT_TRUE(waitUntil([&] { return dialog.says("Edge to Edge:"); }));
                dialog.unfold();
            }
            letPass(std::chrono::milliseconds(300)); // for a dialog that would grow
            const auto [width, height] = sizeOf(GTK_WINDOW(dialog.dialog()));
            file << width << " x " << height << '\n';
        }
    };
    inApplication([&] { sizes(false); }, {"ORVAN_PAPER_OPTIONS=off"});
    inApplication([&] { sizes(true); });
    EXPECT_EQ(contents(folder.path() / "with"), contents(folder.path() / "without"));
    EXPECT_NE(contents(folder.path() / "with"), "");
}

TEST_F(PaperOptionsTab, speaksThePersonsLanguage) {
    struct Language {
        const char* language;
        const char* tab;
        const char* row; // "" where only a picture is asked for
    };
    constexpr std::array<Language, 7> kLanguages{{
        {"fr", "Options de papier", "Type de papier:"},
        {"ja", "用紙オプション", "用紙の種類:"},
        {"en", "Paper Options", ""},
        {"de", "Papieroptionen", ""},
        {"es", "Opciones de papel", ""},
        {"it", "Opzioni carta", ""},
        {"nl", "Papieropties", ""},
    }};
    for (const Language& language : kLanguages) {
        const auto body = [&language] {
            OpenDialog dialog(Settings{{"printer", "Office"}});
            ASSERT_TRUE(dialog.waitForTab(language.tab));
            dialog.openTab(language.tab);
            ASSERT_TRUE(waitUntil([&] { return dialog.popUps().size() == labels().size(); }));
            if (*language.row != '\0') {
                EXPECT_NE(dialog.shownIn(language.row), "");
            }
            dialog.keepPicture(std::string("language-") + language.language);
        };
        if (*language.row != '\0' || std::getenv("ORVAN_PICTURES") != nullptr)
            inApplication(body, {std::string("LANGUAGE=") + language.language, "LC_ALL=de_DE.UTF-8"});
    }
}

// Where lines begin on the right.
TEST_F(PaperOptionsTab, isMirroredWithTheDialog) {
    inApplication([] {
        gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL);
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        ASSERT_TRUE(waitUntil([&] {
            return dialog.popUps().size() == labels().size() &&
                   gtk_widget_get_allocated_width(dialog.popUps().begin()->second) > 1;
        }));
        dialog.keepPicture("mirrored");
        for (const auto& [label, popUp] : dialog.popUps()) {
            EXPECT_LT(
                leftEdge(popUp, dialog.frontPage()), gtk_widget_get_allocated_width(dialog.frontPage()) / 2)
                << label;
        }
    });
}

TEST_F(PaperOptionsTab, isThereWithoutAnXServer) {
    if (std::system("command -v weston >/dev/null") != 0)
        GTEST_SKIP() << "the Debian package weston is not installed";
    const Environment environment = desktop_.environment();
    const std::filesystem::path runtime = *environment.at("XDG_RUNTIME_DIR");
    const BackgroundProcess compositor(
        {"/usr/bin/weston", "--backend=headless-backend.so", "--socket=orvan", "--idle-time=0", "--no-config",
            "--log=" + (runtime / "weston.log").string()},
        [&environment] { changeEnvironment(environment); });
    ASSERT_TRUE(eventually([&] { return std::filesystem::exists(runtime / "orvan"); }));
    const auto body = [this] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        dialog.pick("Edge to Edge:", "On");
        dialog.pick("Paper Type:", "Transparency");
        EXPECT_TRUE(dialog.says("Edge to Edge changed from “On” to “Off”."));
        dialog.unfold();
        EXPECT_TRUE(waitUntil([&] { return dialog.says("Paper Type: Transparency"); }));
        EXPECT_EQ(dialog.print(document_), "");
    };
    inApplication(body, {"GDK_BACKEND=wayland", "WAYLAND_DISPLAY=orvan", "DISPLAY="});
    EXPECT_EQ(option("MediaType"), "Transparency");
}

TEST_F(PaperOptionsTab, canBeSwitchedOff) {
    inApplication(
        [] {
            OpenDialog dialog(Settings{{"printer", "Office"}});
            letPass(std::chrono::milliseconds(500));
            EXPECT_FALSE(hasTab(dialog));
            EXPECT_TRUE(systemLogLines().empty());
        },
        {"ORVAN_PAPER_OPTIONS=off"});
}

TEST_F(PaperOptionsTab, isNotThereForClassesAndWhereTheAdministratorSaysNo) {
    const ClientEnvironment client = desktop_.printing->environment();
    const ProgramEnd made = runProgram(
        {"/usr/sbin/lpadmin", "-p", "Office", "-c", "Both"}, Environment(client.begin(), client.end()));
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Both"}});
        letPass(std::chrono::milliseconds(500));
        EXPECT_FALSE(hasTab(dialog));
        dialog.selectPrinter("Office");
        EXPECT_TRUE(dialog.waitForTab(kTab));
    });
    const TempFolder folder;
    folder.write("orvan/paper-options.conf", "[Paper Options]\nTab=false\n");
    const auto body = [] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        letPass(std::chrono::milliseconds(500));
        EXPECT_FALSE(hasTab(dialog));
    };
    inApplication(body, {"XDG_CONFIG_DIRS=" + folder.path().string()});
}

TEST_F(PaperOptionsTab, leavesALineInTheLogForAPPDThatCannotBeRead) {
    std::ofstream(desktop_.printing->folder().path() / "etc/ppd/Office.ppd", std::ios::app)
        << "*OVNNote: \"" << std::string(256, 'x') << "\"\n";
    inApplication([] {
        doNotLookForLeaks(); // GTK reads the PPD as well
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(waitUntil([] { return !systemLogLines().empty(); }));
        dialog.selectPrinter("Annex");
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.selectPrinter("Office");
        letPass(std::chrono::milliseconds(500));
        const auto lines = systemLogLines();
        EXPECT_EQ(std::ranges::count_if(lines,
                      [](const std::string& line) {
                          return line.find("printer Office: the PPD of queue Office is damaged: ") !=
                                 std::string::npos;
                      }),
            1);
    });
}

TEST_F(PaperOptionsTab, aMissingHostOrBundleLeavesTheApplicationAsItIs) {
    namespace fs = std::filesystem;
    const fs::path build = fs::path(ORVAN_BUILD_DIR);
    const fs::path library = fs::path("lib") / "orvan";
    for (const char* missing : {ORVAN_HOST_FILE, "OrvanPaperOptions.plugin"}) {
        SCOPED_TRACE(missing);
        const TempFolder tree;
        const fs::path module = tree.path() / fs::relative(builtModule(), build);
        fs::create_directories(module.parent_path());
        fs::copy(builtModule(), module);
        fs::copy(build / library, tree.path() / library, fs::copy_options::recursive);
        ASSERT_GT(fs::remove_all(tree.path() / library / missing), 0U);
        const auto body = [this] {
            for (int turn = 0; turn < 2; ++turn) {
                OpenDialog dialog(Settings{{"printer", "Office"}});
                letPass(std::chrono::milliseconds(300));
                EXPECT_FALSE(hasTab(dialog));
                EXPECT_EQ(dialog.print(document_), "");
            }
            const auto lines = systemLogLines();
            EXPECT_EQ(lines.size(), 1U);
            EXPECT_TRUE(lines.front().starts_with("orvan: paper options are off: ")) << lines.front();
        };
        inApplication(body, {}, module);
    }
}

// The item that is shown is picked from its menu: a pick as any other, so what was said of the one before it
// is over.
TEST_F(PaperOptionsTab, aPickOfWhatIsShownCounts) {
    const auto body = [] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        dialog.pick("Separator Page Source:", "Tray 2");
        ASSERT_TRUE(dialog.says("Separator Page changed from “None”"));
        pickTheShown(dialog.popUps().at("Paper Type:"));
        EXPECT_TRUE(waitUntil([&] { return !dialog.says("Separator Page changed from “None”"); }));
        EXPECT_EQ(dialog.shownIn("Paper Type:"), "Plain");
    };
    inApplication(body);
}

// GTK has nothing to complain of, whichever of the rows that stay in sight have no option.
TEST_F(PaperOptionsTab, rowsOneToFiveMayBeAbsentInEveryCombination) {
    constexpr std::array<std::string_view, 5> kRows{
        "MediaType", "Slipsheet", "OVNSlipSheetSource", "OVNLastPageSource", "OVNMismatch"};
    constexpr unsigned kCombinations = 1U << kRows.size();
    const auto name = [](unsigned combination) { return "Rows" + std::to_string(combination); };
    for (unsigned combination = 0; combination < kCombinations; ++combination) {
        DerivedPPD ppd;
        for (std::size_t row = 0; row < kRows.size(); ++row)
            if ((combination >> row & 1U) == 0) ppd.removeOptions({kRows[row]});
        ASSERT_EQ(
            desktop_.printing->addQueue({.name = name(combination), .ppdFile = ppd.file()}), std::nullopt);
    }
    const auto body = [&] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        for (unsigned combination = 0; combination < kCombinations; ++combination) {
            dialog.selectPrinter(name(combination));
            ASSERT_TRUE(dialog.waitForTab(kTab));
            dialog.openTab(kTab);
            ASSERT_TRUE(waitUntil([&] { return dialog.popUps().size() == labels().size(); })) << combination;
            unsigned enabled = 0;
            for (const auto& [label, popUp] : dialog.popUps())
                enabled += gtk_widget_get_sensitive(popUp) != FALSE ? 1 : 0;
            EXPECT_EQ(enabled, static_cast<unsigned>(std::popcount(combination)) + 3) << combination;
        }
    };
    inApplication(body);
}

// The scheduler neither dies nor answers: nothing waits for it but a thread, and a dialog can go meanwhile.
TEST_F(PaperOptionsTab, aFrozenOrDeadSchedulerHoldsUpNothing) {
    inApplication([this] {
        const pid_t scheduler = desktop_.printing->scheduler().pid();
        OpenDialog remaining(Settings{{"printer", "Office"}});
        ASSERT_TRUE(remaining.waitForTab(kTab));
        {
            OpenDialog dialog(Settings{{"printer", "Office"}});
            ASSERT_TRUE(dialog.waitForTab(kTab));
            dialog.selectPrinter("Annex");
            ASSERT_TRUE(dialog.waitForTab(kTab));
            ::kill(scheduler, SIGSTOP);
            dialog.selectPrinter("Office");
            EXPECT_LT(longestTurn(std::chrono::milliseconds(1500)), kHeldUp);
            EXPECT_FALSE(hasTab(dialog));
        }
        remaining.openTab(kTab);
        remaining.pick("Paper Type:", "Bond");
        EXPECT_EQ(remaining.shownIn("Paper Type:"), "Bond");
        ::kill(scheduler, SIGCONT);
        ::kill(scheduler, SIGKILL);
        remaining.pick("Paper Type:", "Glossy");
        EXPECT_EQ(remaining.shownIn("Paper Type:"), "Glossy");
    });
}

} // namespace
} // namespace orvan::test
