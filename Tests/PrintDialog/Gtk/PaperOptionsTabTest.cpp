// The paper options in the print dialogs of applications that know nothing of them.
#include "Tests/PrintDialog/Gtk/Application.h"
#include "Tests/PrintDialog/Gtk/Desktop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

namespace orvan::test {
namespace {

constexpr const char* kTab = "Paper Options";
const std::vector<std::string> kLabels{"Paper Type:", "Separator Page:", "Separator Page Source:",
    "Last Page Source:", "Media Mismatch:", "Printing Optimization:", "Edge to Edge:"};

class PaperOptionsTab : public ::testing::Test {
protected:
    void SetUp() override {
        desktop_ = Desktop::start();
        if (!desktop_.skipReason.empty()) GTEST_SKIP() << desktop_.skipReason;
        document_ = desktop_.printing->folder().home() / "document.ps";
        std::ofstream(document_) << "%!PS-Adobe-3.0\n%%Pages: 1\n%%Page: 1 1\nshowpage\n%%EOF\n";
    }

    // A test's application, which must not be heard of on its terminal either.
    void inApplication(
        const std::function<void()>& body, const std::vector<std::string>& environment = {}) const {
        EXPECT_TRUE(desktop_.runApplication(environment, [&body] {
            ASSERT_TRUE(gtk_init_check(nullptr, nullptr));
            body();
            EXPECT_EQ(gtkComplaints(), std::vector<std::string>());
        }));
    }

    // The options of the queue's newest job.
    std::map<std::string, std::string, std::less<>> newestJob(const std::string& queue) const {
        std::vector<PrintJob> jobs;
        EXPECT_EQ(desktop_.printing->jobs(queue, &jobs), std::nullopt);
        EXPECT_FALSE(jobs.empty()) << "no job arrived";
        return jobs.empty() ? decltype(PrintJob::attributes)() : jobs.back().attributes;
    }

    std::string option(const std::string& keyword, const std::string& queue = "Office") const {
        const auto attributes = newestJob(queue);
        const auto found = attributes.find(keyword);
        return found != attributes.end() ? found->second : "(none)";
    }

    bool replaceInPPD(const std::string& from, const std::string& to, const std::string& queue) const {
        std::ifstream stream(ORVAN_PPD_FILE);
        std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        const std::size_t at = text.find(from);
        if (at == std::string::npos) return false;
        text.replace(at, from.size(), to);
        const auto file = desktop_.printing->folder().home() / "changed.ppd";
        std::ofstream(file) << text;
        return !desktop_.printing->addQueue({.name = queue, .ppdFile = file});
    }

    Desktop desktop_;
    std::filesystem::path document_;
};

bool hasTab(const OpenDialog& dialog) {
    const auto tabs = dialog.tabs();
    return std::ranges::find(tabs, kTab) != tabs.end();
}

TEST_F(PaperOptionsTab, isThereForOrvanQueuesAndNoOthers) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Other"}});
        for (int turn = 0; turn < 20; ++turn) {
            SCOPED_TRACE(turn);
            const std::string queue = turn % 2 == 0 ? "Office" : "Annex";
            dialog.selectPrinter(queue);
            ASSERT_TRUE(dialog.waitForTab(kTab));
            dialog.openTab(kTab);
            ASSERT_EQ(dialog.popUps().size(), kLabels.size());
            for (const std::string& label : kLabels)
                EXPECT_NE(dialog.shownIn(label), "") << label;
            dialog.selectPrinter(turn % 3 == 0 ? "Print to File" : "Other");
            EXPECT_FALSE(hasTab(dialog));
        }
        letPass(std::chrono::milliseconds(300)); // long enough for a late answer
        EXPECT_FALSE(hasTab(dialog));
        // Every panel that was made has ended.
        const auto lines = systemLogLines();
        EXPECT_EQ(std::ranges::count(lines, "orvan: initWithCallback: paper options"), 20);
        EXPECT_EQ(std::ranges::count(lines, "orvan: paper options plugin dealloc"), 20);
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
        EXPECT_TRUE(dialog.says("Paper Type: Custom Type 2")) << "the summary follows";

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
        EXPECT_TRUE(dialog.says("Edge to Edge changed from On to Off."));

        dialog.pick("Edge to Edge:", "On");
        EXPECT_NE(dialog.shownIn("Paper Type:"), "Transparency");
        EXPECT_TRUE(dialog.says("Paper Type changed from Transparency to "));

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
        ASSERT_TRUE(replaceInPPD("*MediaType CustomType5/", "*MediaType CustomType17/", "Office"));
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
    EXPECT_EQ(option("MediaType", "Office"), "Cardstock");
    EXPECT_EQ(option("MediaType", "Annex"), "Labels");
}

TEST_F(PaperOptionsTab, isReachedByTheKeyboardAndNamedForAssistiveTechnology) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        letPass(std::chrono::milliseconds(100)); // the order is that of the places on the screen
        auto unreached = dialog.popUps();
        ASSERT_EQ(unreached.size(), kLabels.size());
        for (const auto& [label, combo] : unreached) {
            AtkRelationSet* const relations =
                atk_object_ref_relation_set(gtk_widget_get_accessible(GTK_WIDGET(combo)));
            AtkRelation* const name =
                atk_relation_set_get_relation_by_type(relations, ATK_RELATION_LABELLED_BY);
            ASSERT_NE(name, nullptr) << label;
            auto* const text = ATK_OBJECT(g_ptr_array_index(atk_relation_get_target(name), 0));
            EXPECT_EQ(atk_object_get_name(text), label);
            g_object_unref(relations);
        }
        std::vector<std::string> order;
        for (int presses = 0; presses < 40 && !unreached.empty(); ++presses) {
            gtk_widget_child_focus(GTK_WIDGET(dialog.dialog()), GTK_DIR_TAB_FORWARD);
            GtkWidget* const focus = gtk_window_get_focus(GTK_WINDOW(dialog.dialog()));
            std::erase_if(unreached, [&](const auto& entry) {
                if (focus == nullptr || !gtk_widget_is_ancestor(focus, GTK_WIDGET(entry.second)))
                    return false;
                order.push_back(entry.first);
                return true;
            });
        }
        EXPECT_EQ(order, kLabels);
    });
}

TEST_F(PaperOptionsTab, speaksThePersonsLanguage) {
    inApplication(
        [] {
            OpenDialog dialog(Settings{{"printer", "Office"}});
            EXPECT_TRUE(dialog.waitForTab("Papieroptionen"));
        },
        {"LC_ALL=de_DE.UTF-8"});
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

TEST_F(PaperOptionsTab, aMissingOrBrokenBundleLeavesTheApplicationAsItIs) {
    namespace fs = std::filesystem;
    const fs::path build = fs::path(ORVAN_BUILD_DIR);
    const fs::path library = fs::path("lib") / "orvan";
    const fs::path bundle = library / "OrvanPaperOptions.plugin" / "Contents";
    struct Damage {
        const char* what;
        std::function<void(const fs::path& tree)> doIt;
    };
    for (const Damage& damage : {
             Damage{"no host",
                 [&](const fs::path& tree) { fs::remove(tree / library / "liborvan-print-dialog.so"); }},
             Damage{"no bundle",
                 [&](const fs::path& tree) { fs::remove_all(tree / library / "OrvanPaperOptions.plugin"); }},
             Damage{"a damaged Info.plist",
                 [&](const fs::path& tree) { std::ofstream(tree / bundle / "Info.plist") << "<plist"; }},
             Damage{"no code", [&](const fs::path& tree) { fs::remove_all(tree / bundle / "Linux"); }},
             Damage{"code that is none",
                 [&](const fs::path& tree) {
                     fs::remove_all(tree / bundle / "Linux");
                     fs::create_directories(tree / bundle / "Linux");
                     std::ofstream(tree / bundle / "Linux" / "OrvanPaperOptions.so") << "no code";
                 }},
         }) {
        SCOPED_TRACE(damage.what);
        const fs::path tree = desktop_.printing->folder().home() / "tree";
        fs::remove_all(tree);
        const fs::path module = fs::relative(builtModule(), build);
        fs::create_directories((tree / module).parent_path());
        fs::copy(builtModule(), tree / module);
        fs::copy(build / library, tree / library, fs::copy_options::recursive);
        damage.doIt(tree);
        EXPECT_TRUE(desktop_.runApplicationWithModule(tree / module, {}, [this] {
            ASSERT_TRUE(gtk_init_check(nullptr, nullptr));
            for (int turn = 0; turn < 2; ++turn) {
                OpenDialog dialog(Settings{{"printer", "Office"}});
                letPass(std::chrono::milliseconds(300));
                EXPECT_FALSE(hasTab(dialog));
                EXPECT_EQ(dialog.print(document_), "");
            }
            const auto lines = systemLogLines();
            EXPECT_EQ(std::ranges::count_if(lines,
                          [](const std::string& line) {
                              return line.starts_with("orvan: paper options are off: ");
                          }),
                1);
            EXPECT_EQ(gtkComplaints(), std::vector<std::string>());
        }));
    }
}

// The scheduler neither dies nor answers: nothing waits for it but a thread, and a dialog can go meanwhile.
TEST_F(PaperOptionsTab, aFrozenOrDeadSchedulerHoldsUpNothing) {
    inApplication(
        [this] {
            const pid_t scheduler = desktop_.printing->scheduler().pid();
            OpenDialog remaining(Settings{{"printer", "Office"}});
            ASSERT_TRUE(remaining.waitForTab(kTab));
            {
                OpenDialog dialog(Settings{{"printer", "Office"}});
                ASSERT_TRUE(dialog.waitForTab(kTab));
                dialog.selectPrinter("Annex");
                ASSERT_TRUE(dialog.waitForTab(kTab));
                ::kill(scheduler, SIGSTOP);
                const auto start = std::chrono::steady_clock::now();
                dialog.selectPrinter("Office");
                letPass(std::chrono::milliseconds(200));
                EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
                EXPECT_FALSE(hasTab(dialog));
            }
            remaining.openTab(kTab);
            remaining.pick("Paper Type:", "Bond");
            EXPECT_EQ(remaining.shownIn("Paper Type:"), "Bond");
            ::kill(scheduler, SIGCONT);
            letPass(std::chrono::milliseconds(200)); // the answer comes for a dialog that has gone
            ::kill(scheduler, SIGKILL);
            remaining.pick("Paper Type:", "Glossy");
            EXPECT_EQ(remaining.shownIn("Paper Type:"), "Glossy");
        },
        {"CUPS_SERVERROOT=/nonexistent"}); // so that the PPD comes from the scheduler and not from its folder
}

} // namespace
} // namespace orvan::test
