// The names that an office gave its papers, in the print dialog: asked for and answered through a real
// scheduler, or by a real command filter.
#include "Tests/PrintDialog/Gtk/Application.h"
#include "Tests/Support/DerivedPPD.h"

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

namespace orvan::test {
namespace {

constexpr const char* kQuery = "ORVAN_SYSTEM_RELEASE=10.9.0";

class PaperNames : public DialogTest {
protected:
    void SetUp() override {
        // Where the scheduler's user can read.
        std::filesystem::permissions(answers_.path(), std::filesystem::perms(0755));
        for (const auto& answer : std::filesystem::directory_iterator(ORVAN_ANSWERS_FOLDER))
            std::filesystem::copy(
                answer.path(), answers_.path(), std::filesystem::copy_options::overwrite_existing);
        answers_.write("com.orvan.CustomPaperTypes",
            "{ customPaperTypes = ({ name = \"Letterhead Zürich\"; type = 3; },"
            " { name = \"Certificates (ivory, 160 g)\"; type = 1; }, { name = \"Delivery notes\"; type = 2; "
            "}); }");
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
            dialog.openTab(kTab);
            ASSERT_TRUE(waitUntil([&] { return offers(dialog, "Letterhead Zürich"); }));
            EXPECT_FALSE(offers(dialog, "Custom Type 4")) << "the printer has three";
            dialog.pick("Paper Type:", "Certificates (ivory, 160 g)");
            dialog.unfold();
            EXPECT_TRUE(waitUntil([&] { return dialog.says("Paper Type: Certificates (ivory, 160 g)"); }));

            // GTK knows the papers by their types. Its choices are followed, and it follows.
            dialog.openTab("Page Setup");
            EXPECT_EQ(dialog.shownIn("Paper type:"), "Custom Type 1");
            dialog.pick("Paper type:", "Custom Type 2");
            dialog.openTab(kTab);
            EXPECT_EQ(dialog.shownIn("Paper Type:"), "Delivery notes");
            dialog.pick("Paper Type:", "Certificates (ivory, 160 g)");
            EXPECT_EQ(dialog.print(document_), "");
        };
        inApplication(body,
            {byQueue ? kQuery : "ORVAN_SYSTEM_RELEASE=10.6.8", "ORVAN_ANSWERS=" + answers_.path().string()});
        const auto all = jobs(queue);
        ASSERT_FALSE(all.empty());
        EXPECT_EQ(all.back().attribute("MediaType"), "CustomType1");
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
            dialog.openTab(kTab);
            EXPECT_TRUE(waitUntil([&] { return offers(dialog, "Letterhead Zürich"); }));
            EXPECT_EQ(dialog.says("Paper names of an earlier time."), !mayAsk);
        };
        std::vector<std::string> environment{kQuery};
        if (!mayAsk) environment.push_back("XDG_CONFIG_DIRS=" + folder.path().string());
        inApplication(body, environment);
        EXPECT_EQ(jobs("Named").size(), 1U);
    }
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
