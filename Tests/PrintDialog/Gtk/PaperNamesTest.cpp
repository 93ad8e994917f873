// The names that an office gave its papers, in the print dialog: asked for and answered through a real
// scheduler, or by a real command filter.
#include "Tests/PrintDialog/Gtk/Application.h"
#include "Tests/PrintDialog/Gtk/Desktop.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <string>
#include <vector>

namespace orvan::test {
namespace {

constexpr const char* kTab = "Paper Options";
constexpr const char* kQuery = "ORVAN_SYSTEM_RELEASE=10.9.0";
constexpr const char* kAnswers = "ORVAN_ANSWERS=" ORVAN_ANSWERS_FOLDER;

class PaperNames : public ::testing::Test {
protected:
    void SetUp() override {
        // Where the scheduler's user can read.
        std::filesystem::permissions(answers_.path(), std::filesystem::perms(0755));
        for (const auto& answer : std::filesystem::directory_iterator(ORVAN_ANSWERS_FOLDER))
            std::filesystem::copy(
                answer.path(), answers_.path(), std::filesystem::copy_options::overwrite_existing);
        PrintingSystemOptions options;
        options.folder.extraFilters = {ORVAN_ANSWER_FILTER};
        options.folder.programEnvironment = {{"ORVAN_ANSWERS", answers_.path().string()}};
        desktop_ = Desktop::start(options);
        if (!desktop_.skipReason.empty()) GTEST_SKIP() << desktop_.skipReason;
        // The scheduler looks for the filter in its folder; who runs it himself needs its path.
        addQueue("Named", std::filesystem::path(ORVAN_ANSWER_FILTER).filename());
        addQueue("NamedByFilter", ORVAN_ANSWER_FILTER);
        document_ = desktop_.printing->folder().home() / "document.ps";
        std::ofstream(document_) << "%!PS-Adobe-3.0\n%%Pages: 1\n%%Page: 1 1\nshowpage\n%%EOF\n";
    }

    void addQueue(const std::string& name, const std::string& filter) const {
        DerivedPPD ppd;
        ppd.append("*cupsCommands: \"com.orvan.CustomPaperTypes com.orvan.DeviceStatus\"\n"
                   "*cupsFilter2: \"application/vnd.cups-command application/vnd.cups-raw 0 " +
                   filter + "\"\n");
        ASSERT_EQ(desktop_.printing->addQueue({.name = name, .ppdFile = ppd.file()}), std::nullopt);
    }

    void inApplication(const std::vector<std::string>& environment, const std::function<void()>& body) const {
        EXPECT_TRUE(desktop_.runApplication(environment, [&body] {
            ASSERT_TRUE(gtk_init_check(nullptr, nullptr));
            body();
            EXPECT_EQ(gtkComplaints(), std::vector<std::string>());
            const auto lines = systemLogLines();
            EXPECT_EQ(std::ranges::count(lines, "orvan: initWithCallback: paper options"),
                std::ranges::count(lines, "orvan: paper options plugin dealloc"));
        }));
    }

    std::vector<PrintJob> jobs(const std::string& queue = "Named") const {
        std::vector<PrintJob> all;
        EXPECT_EQ(desktop_.printing->jobs(queue, &all), std::nullopt);
        return all;
    }

    TempFolder answers_;
    Desktop desktop_;
    std::filesystem::path document_;
};

bool offers(const OpenDialog& dialog, const std::string& choice) {
    const auto choices = dialog.choicesOf("Paper Type:");
    return std::ranges::find(choices, choice) != choices.end();
}

TEST_F(PaperNames, areThereByBothWaysAndArriveInTheJob) {
    struct Way {
        const char* release;
        std::string queue;
    };
    for (const Way& way : {Way{"10.9.0", "Named"}, Way{"10.6.8", "NamedByFilter"}}) {
        SCOPED_TRACE(way.release);
        inApplication({std::string("ORVAN_SYSTEM_RELEASE=") + way.release, kAnswers}, [this, &way] {
            OpenDialog dialog(Settings{{"printer", way.queue}});
            ASSERT_TRUE(dialog.waitForTab(kTab));
            // The answer, which through the queue is there when the job has gone, and the look for it.
            if (way.queue == "Named") {
                ASSERT_TRUE(waitUntil([this] { return !jobs().empty() && jobs().front().isSettled(); }));
            }
            letPass(std::chrono::milliseconds(1200));
            dialog.openTab(kTab);
            ASSERT_TRUE(offers(dialog, "Letterhead Zürich"));
            EXPECT_FALSE(offers(dialog, "Custom Type 4")) << "the printer has three";
            dialog.pick("Paper Type:", "Certificates (ivory, 160 g)");
            EXPECT_TRUE(dialog.says("Paper Type: Certificates (ivory, 160 g)"));

            // GTK knows the papers by the PPD's names. Its choices are followed, and it follows.
            dialog.openTab("Page Setup");
            EXPECT_EQ(dialog.shownIn("Paper type:"), "Custom Type 2");
            dialog.pick("Paper type:", "Custom Type 3");
            dialog.openTab(kTab);
            EXPECT_EQ(dialog.shownIn("Paper Type:"), "Delivery notes");
            dialog.pick("Paper Type:", "Certificates (ivory, 160 g)");
            EXPECT_EQ(dialog.print(document_), "");
        });
        const auto all = jobs(way.queue);
        ASSERT_FALSE(all.empty());
        EXPECT_EQ(all.back().attribute("MediaType"), "CustomType17") << "which the PPD does not list";
    }
}

TEST_F(PaperNames, comeTooLateForATabThatIsOpenedAtOnce) {
    ASSERT_EQ(desktop_.printing->holdNewJobs("Named"), std::nullopt);
    inApplication({kQuery}, [this] {
        OpenDialog dialog(Settings{{"printer", "Named"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        EXPECT_FALSE(offers(dialog, "Custom Type 1"));
        ASSERT_EQ(jobs().size(), 1U);
        ASSERT_EQ(desktop_.printing->releaseJob(jobs().front().id), std::nullopt);
        letPass(std::chrono::milliseconds(1200));
        EXPECT_FALSE(offers(dialog, "Letterhead Zürich"));
    });
}

// Two dialogs share one question; one closes while it waits; the scheduler freezes, dies, or loses the queue.
TEST_F(PaperNames, leaveNothingBehindWhateverHappensDuringTheWait) {
    ASSERT_EQ(desktop_.printing->holdNewJobs("Named"), std::nullopt);
    inApplication({kQuery}, [this] {
        OpenDialog second(Settings{{"printer", "Named"}});
        ASSERT_TRUE(second.waitForTab(kTab));
        {
            OpenDialog first(Settings{{"printer", "Named"}});
            ASSERT_TRUE(first.waitForTab(kTab));
        }
        EXPECT_EQ(jobs().size(), 1U) << "the second waits for the first one's job";
        EXPECT_EQ(desktop_.printing->deleteQueue("Named"), std::nullopt);
        letPass(std::chrono::milliseconds(1200)); // the wait ends, or GTK finds out first
        second.selectPrinter("Office");
        EXPECT_TRUE(second.waitForTab(kTab));
    });
    for (const int signal : {SIGSTOP, SIGKILL}) {
        SCOPED_TRACE(signal);
        SetUp();
        const pid_t process = desktop_.printing->scheduler().pid();
        ASSERT_EQ(desktop_.printing->holdNewJobs("Named"), std::nullopt);
        inApplication({kQuery}, [process, signal] {
            OpenDialog dialog(Settings{{"printer", "Named"}});
            ASSERT_TRUE(dialog.waitForTab(kTab));
            ::kill(process, signal);
            // The longest time in which the main loop does not get round.
            std::chrono::steady_clock::duration longest{};
            auto last = std::chrono::steady_clock::now();
            const auto end = last + std::chrono::milliseconds(2500);
            waitUntil([&] {
                const auto now = std::chrono::steady_clock::now();
                longest = std::max(longest, now - last);
                last = now;
                return now > end;
            });
            EXPECT_LT(longest, std::chrono::seconds(2));
            dialog.openTab(kTab);
            EXPECT_TRUE(offers(dialog, "Plain"));
            ::kill(process, SIGCONT);
        });
    }
}

} // namespace
} // namespace orvan::test
