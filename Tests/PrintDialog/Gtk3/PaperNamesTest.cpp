// The names that an office gave its papers, in the print dialog: asked for and answered through a real
// scheduler, or by a real command filter.
#include "Tests/PrintDialog/Gtk3/Application.h"
#include "Tests/Support/DerivedPPD.h"

#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

namespace orvan::test {
namespace {

constexpr const char* kQuery = "ORVAN_SYSTEM_RELEASE=10.9.0";
constexpr const char* kAnswers = "ORVAN_ANSWERS=" ORVAN_ANSWERS_FOLDER;

class PaperNames : public DialogTest {
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
        start(options);
        if (IsSkipped()) return;
        // The scheduler looks for the filter in its folder; who runs it himself needs its path.
        addQueue("Named", std::filesystem::path(ORVAN_ANSWER_FILTER).filename());
        addQueue("NamedByFilter", ORVAN_ANSWER_FILTER);
    }

    void addQueue(const std::string& name, const std::string& filter) const {
        DerivedPPD ppd;
        ppd.append("*cupsCommands: \"com.orvan.CustomPaperTypes com.orvan.DeviceStatus\"\n"
                   "*cupsFilter2: \"application/vnd.cups-command application/vnd.cups-raw 0 " +
                   filter + "\"\n");
        ASSERT_EQ(desktop_.printing->addQueue({.name = name, .ppdFile = ppd.file()}), std::nullopt);
    }

    TempFolder answers_;
};

bool offers(const OpenDialog& dialog, const std::string& choice) {
    const auto choices = dialog.choicesOf("Paper Type:");
    return std::ranges::find(choices, choice) != choices.end();
}

TEST_F(PaperNames, areThereByBothWaysAndArriveInTheJob) {
    for (const std::string queue : {"Named", "NamedByFilter"}) {
        SCOPED_TRACE(queue);
        const bool byQueue = queue == "Named";
        const auto body = [&] {
            OpenDialog dialog(Settings{{"printer", queue}});
            ASSERT_TRUE(dialog.waitForTab(kTab));
            // The answer is there when the job has gone, or the filter that the application runs.
            ASSERT_TRUE(waitUntil([&] {
                const auto all = jobs(queue);
                siginfo_t child{};
                return byQueue ? !all.empty() && all.front().isSettled()
                               : ::waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) != 0;
            }));
            letPass(std::chrono::milliseconds(1200)); // and the look for it, each half a second
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
        };
        inApplication(body, {byQueue ? kQuery : "ORVAN_SYSTEM_RELEASE=10.6.8", kAnswers});
        const auto all = jobs(queue);
        ASSERT_FALSE(all.empty());
        EXPECT_EQ(all.back().attribute("MediaType"), "CustomType17") << "which the PPD does not list";
    }
}

// Answers of earlier are shown where nobody may ask.
TEST_F(PaperNames, areThoseOfEarlierWhereTheAdministratorLetsNobodyAsk) {
    const TempFolder folder;
    folder.write("orvan/paper-options.conf", "[Paper Options]\nAskPrinter=false\n");
    for (const bool mayAsk : {true, false}) {
        const auto body = [&] {
            OpenDialog dialog(Settings{{"printer", "Named"}});
            ASSERT_TRUE(dialog.waitForTab(kTab));
            ASSERT_TRUE(
                waitUntil([&] { return !jobs("Named").empty() && jobs("Named").front().isSettled(); }));
            letPass(std::chrono::milliseconds(1200));
            dialog.openTab(kTab);
            EXPECT_TRUE(offers(dialog, "Letterhead Zürich"));
        };
        std::vector<std::string> environment{kQuery};
        if (!mayAsk) environment.push_back("XDG_CONFIG_DIRS=" + folder.path().string());
        inApplication(body, environment);
        EXPECT_EQ(jobs("Named").size(), 1U);
    }
}

TEST_F(PaperNames, comeTooLateForATabThatIsOpenedAtOnce) {
    ASSERT_EQ(desktop_.printing->holdNewJobs("Named"), std::nullopt);
    const auto body = [this] {
        OpenDialog dialog(Settings{{"printer", "Named"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        EXPECT_FALSE(offers(dialog, "Custom Type 1"));
        ASSERT_EQ(jobs("Named").size(), 1U);
        ASSERT_EQ(desktop_.printing->releaseJob(jobs("Named").front().id), std::nullopt);
        letPass(std::chrono::milliseconds(1200));
        EXPECT_FALSE(offers(dialog, "Letterhead Zürich"));
    };
    inApplication(body, {kQuery});
}

// Two dialogs share one question; one closes while it waits; the scheduler freezes, dies, or loses the queue.
TEST_F(PaperNames, leaveNothingBehindWhateverHappensDuringTheWait) {
    ASSERT_EQ(desktop_.printing->holdNewJobs("Named"), std::nullopt);
    const auto shared = [this] {
        OpenDialog second(Settings{{"printer", "Named"}});
        ASSERT_TRUE(second.waitForTab(kTab));
        {
            OpenDialog first(Settings{{"printer", "Named"}});
            ASSERT_TRUE(first.waitForTab(kTab));
        }
        EXPECT_EQ(jobs("Named").size(), 1U) << "the second waits for the first one's job";
        EXPECT_EQ(desktop_.printing->deleteQueue("Named"), std::nullopt);
        letPass(std::chrono::milliseconds(1200)); // the wait ends, or GTK finds out first
        second.selectPrinter("Office");
        EXPECT_TRUE(second.waitForTab(kTab));
    };
    inApplication(shared, {kQuery});
    for (const int signal : {SIGSTOP, SIGKILL}) {
        SCOPED_TRACE(signal);
        SetUp();
        const pid_t process = desktop_.printing->scheduler().pid();
        ASSERT_EQ(desktop_.printing->holdNewJobs("Named"), std::nullopt);
        const auto body = [process, signal] {
            OpenDialog dialog(Settings{{"printer", "Named"}});
            ASSERT_TRUE(dialog.waitForTab(kTab));
            ::kill(process, signal);
            EXPECT_LT(longestTurn(std::chrono::milliseconds(2500)), kHeldUp);
            dialog.openTab(kTab);
            EXPECT_TRUE(offers(dialog, "Plain"));
            ::kill(process, SIGCONT);
        };
        inApplication(body, {kQuery});
    }
}

} // namespace
} // namespace orvan::test
