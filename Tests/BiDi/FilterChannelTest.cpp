// The channel on releases on which it runs the command filter itself.
#include "BiDi/Common/StoredPassword.h"
#include "Platform/UserDefaults.h"
#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "Tests/BiDi/ChannelFixture.h"
#include "Tests/Support/QueuePrinter.h"

#include <signal.h>
#include <sys/stat.h>

#include <utility>

namespace orvan {
namespace {

using State = OrvanBiDi::State;
using Names = std::vector<std::string>;

const testing::Environment* const kSettings =
    testing::AddGlobalTestEnvironment(new ChannelEnvironment("10.6.8"));

class FilterChannelTest : public ChannelTest {
protected:
    std::filesystem::path ppdWithFilter(const std::string& program) const {
        return writeFile("test.ppd", ppdText("*cupsCommands: \"A B\"\n*cupsFilter2: \"application/vnd.cups-"
                                             "command application/vnd.cups-raw 0 " +
                                             program + "\"\n"));
    }

    // A filter that answers as the test filter does and then goes on as the script says.
    std::shared_ptr<OrvanBiDi> channelForScript(const std::string& script) {
        const std::filesystem::path program =
            writeFile("filter", "#!/bin/sh\necho run >>" + (folder_ / "runs").string() +
                                    "\nanswer() { " ORVAN_TEST_FILTER " \"$@\"; }\n" + script + "\n");
        ::chmod(program.c_str(), 0700);
        return channelFor(ppdWithFilter(program.string()));
    }

    static bool runUntilEnded(const OrvanBiDi& channel) {
        return runLoopUntil([&channel] { return channel.state() != State::filterRunning; });
    }
};

TEST_F(FilterChannelTest, RunsTheFilterAndDeliversItsAnswers) {
    const auto channel = channelFor(ppdWithFilter(ORVAN_TEST_FILTER));
    EXPECT_EQ(channel->state(), State::ready);
    channel->dispatchCommands(CommandList{"B", "C", "A"});
    EXPECT_EQ(channel->state(), State::filterRunning);
    EXPECT_TRUE(delegate_->responses.empty());
    ASSERT_TRUE(runUntilEnded(*channel));
    EXPECT_EQ(channel->state(), State::filterEnded);
    ASSERT_EQ(delegate_->commands(), (Names{"A", "B"}));

    const std::string user = " username=" + platform::fullUserName();
    EXPECT_EQ(delegate_->text(0, "job"), "#CUPS-COMMAND\nB" + user + "\nC" + user + "\nA" + user);
    EXPECT_EQ(delegate_->responses[0].find("arguments")->asList()->size(), 6U);
    EXPECT_EQ(*delegate_->responses[0].find("arguments"),
        platform::PropertyList(
            platform::PropertyList::List{ORVAN_TEST_FILTER, "", "", "", "", ORVAN_TEST_FILTER}));
    EXPECT_EQ(delegate_->text(0, "LANG"), "DE");
    EXPECT_EQ(delegate_->text(0, "PRINTER"), "orvan");
    // There is no scheduler, and no display for a filter.
    for (const char* name : {"DEVICE_URI", "PPD", "DISPLAY"})
        EXPECT_EQ(delegate_->text(0, name), "(none)") << name;

    channel->dispatchCommands(CommandList{"A"});
    EXPECT_EQ(channel->state(), State::filterRunning);
    ASSERT_TRUE(runUntilEnded(*channel));
    EXPECT_EQ(delegate_->commands(), (Names{"A", "B", "A"}));
}

TEST_F(FilterChannelTest, TellsTheFilterOfItsPrinter) {
    if (SchedulerProcess::findProgram().empty()) GTEST_SKIP() << "cupsd is not installed";
    Failure failure;
    const auto system = PrintingSystem::start({}, &failure);
    ASSERT_TRUE(system) << failure.value_or("");
    system->adoptEnvironment();
    const auto ppd = ppdWithFilter(ORVAN_TEST_FILTER);
    ASSERT_EQ(system->addQueue({"orvan", ppd, "file:///dev/null"}), std::nullopt);
    const auto run = [&] {
        auto channel = channelFor(ppd, queuePrinter("orvan"));
        channel->dispatchCommands(CommandList{"A"});
        EXPECT_TRUE(runUntilEnded(*channel));
        return channel;
    };

    // A copy of the queue's PPD lasts as long as the printer object, and its path is tidied up.
    ::setenv("TMPDIR", (folder_.string() + "/").c_str(), 1);
    {
        const auto channel = run();
        EXPECT_EQ(delegate_->text(0, "DEVICE_URI"), "file:///dev/null");
        const std::string copy = delegate_->text(0, "PPD");
        EXPECT_EQ(copy.find("//"), std::string::npos);
        EXPECT_TRUE(std::filesystem::is_regular_file(copy)) << copy;
    }
    EXPECT_FALSE(std::filesystem::exists(delegate_->text(0, "PPD")));
    ::unsetenv("TMPDIR");
}

TEST_F(FilterChannelTest, TakesWhateverFiltersDo) {
    struct Case {
        const char* what;
        std::string script;
        std::size_t responses;
    };
    const std::string longCommand(200000, 'x');
    for (const Case& test : std::vector<Case>{
             {"exits with 1", "answer; exit 1", 2},
             {"dies by a signal", "answer; kill -KILL $$", 2},
             {"never reads", "exit 0", 0},
             {"closes its input", "exec <&-; echo 'PPD: A0000=\"\"' >&2", 0},
             {"leaves a process behind", "answer; while [ -e \"$0\" ]; do sleep 0.1; done &", 2},
             {"is not UTF-8", "answer; printf 'DEBUG: \\377\\n' >&2", 0},
             {"100 MB", "answer; head -c 104857600 /dev/zero >&2", 2},
             {"100 MB first", "head -c 104857600 /dev/zero >&2; answer", 0},
             {"no property list", "echo 'PPD: A0000=eJwDAAAAAAE= A0001=\"\"' >&2", 0},
             {"long lines", "printf 'DEBUG: %0300000d\\n' 1 >&2; answer", 2},
         }) {
        SCOPED_TRACE(test.what);
        delegate_->responses.clear();
        const auto channel = channelForScript(test.script);
        channel->dispatchCommands(CommandList{"A", "B", longCommand});
        EXPECT_EQ(channel->state(), State::filterRunning);
        EXPECT_TRUE(runUntilEnded(*channel));
        EXPECT_EQ(channel->state(), State::filterEnded);
        EXPECT_EQ(delegate_->responses.size(), test.responses);
    }
}

TEST_F(FilterChannelTest, ContainsAFilterThatDoesNotStart) {
    writeFile("plain", "#!/bin/sh\n");
    for (const std::string& program : {std::string("/no/such/filter"), std::string("filter"),
             (folder_ / "plain").string(), std::string("/x ")}) {
        const auto channel = channelFor(ppdWithFilter(program));
        channel->dispatchCommands(CommandList{"A"});
        EXPECT_EQ(channel->state(), State::ready) << program;
    }
    const auto channel = channelFor(writeFile("none.ppd", ppdText("")));
    channel->dispatchCommands(std::nullopt);
    EXPECT_EQ(channel->state(), State::ready);
    EXPECT_TRUE(delegate_->responses.empty());
}

TEST_F(FilterChannelTest, RunsOneFilterAtATime) {
    const auto channel = channelForScript("until [ -e \"${0%/*}/go\" ]; do sleep 0.01; done; answer");
    channel->dispatchCommands(CommandList{"A"});
    channel->dispatchCommands(CommandList{"B"});
    writeFile("go", "");
    ASSERT_TRUE(runUntilEnded(*channel));
    EXPECT_EQ(readFile("runs"), "run\n");
    EXPECT_EQ(delegate_->commands(), Names{"A"});

    // The delegate asks again from within its answer.
    int again = 1;
    delegate_->onResponse = [&] {
        if (again-- > 0) channel->dispatchCommands(CommandList{"B"});
    };
    channel->dispatchCommands(CommandList{"A"});
    EXPECT_TRUE(runLoopUntil([&] { return delegate_->responses.size() == 3; }));
    EXPECT_EQ(delegate_->commands(), (Names{"A", "A", "B"}));
    delegate_->onResponse = nullptr;
}

TEST_F(FilterChannelTest, DeliversNothingOnceInvalidated) {
    const auto channel = channelForScript("answer; echo done >>" + (folder_ / "runs").string());
    channel->dispatchCommands(CommandList{"A"});
    channel->invalidate();
    EXPECT_EQ(channel->state(), State::spent);
    EXPECT_EQ(delegate_.use_count(), 1);
    EXPECT_TRUE(runLoopUntil([&] { return readFile("runs") == "run\ndone\n"; }));

    // A spent channel says nothing of its filter; it is dispatched again once the first has ended.
    EXPECT_TRUE(runLoopUntil([&] {
        if (readFile("runs") == "run\ndone\n") channel->dispatchCommands(CommandList{"A"});
        return readFile("runs") == "run\ndone\nrun\ndone\n";
    }));
    EXPECT_EQ(channel->state(), State::spent);
    EXPECT_TRUE(delegate_->responses.empty());
}

TEST_F(FilterChannelTest, TakesTheFilterAlongWhenItGoes) {
    auto channel = channelForScript("echo $$ >" + (folder_ / "pid").string() + "; exec sleep 60");
    const std::weak_ptr<OrvanBiDi> watched = channel;
    channel->dispatchCommands(CommandList{"A"});
    ASSERT_TRUE(runLoopUntil([&] { return readFile("pid").ends_with('\n'); }));
    const pid_t pid = std::stoi(readFile("pid"));
    EXPECT_EQ(::kill(pid, 0), 0);
    channel.reset();
    EXPECT_TRUE(watched.expired());
    EXPECT_TRUE(runLoopUntil([pid] { return ::kill(pid, 0) != 0; }));
    EXPECT_EQ(delegate_.use_count(), 1);
}

TEST_F(FilterChannelTest, FindsTheFilter) {
    struct Case {
        std::vector<std::string> values;
        std::optional<std::string> path;
    };
    const auto channel = channelFor(writeFile("none.ppd", ppdText("")));
    for (const Case& test : std::vector<Case>{
             {{}, std::nullopt},
             {{"application/vnd.cups-commands x/y 0 /x"}, std::nullopt},
             {{"Application/vnd.cups-command x/y 0 /x"}, std::nullopt},
             {{"application/vnd.cups-command x/y 0 /x"}, "/x"},
             {{"application/vnd.cups-command\tx/y 0 /x"}, "/x"},
             {{"application/vnd.cups-command x/y 0 /x "}, ""},
             {{"application/vnd.cups-command x/y 0 /\xFF", "application/vnd.cups-command x/y 0 /y"}, "/y"},
             {{"application/pdf x/y 0 /p", "application/vnd.cups-command x/y 0 /y",
                  "application/vnd.cups-command x/y 0 /z"},
                 "/y"},
         }) {
        std::string lines;
        for (const std::string& value : test.values)
            lines += "*cupsFilter2: \"" + value + "\"\n";
        SCOPED_TRACE(lines);
        Dialog dialog(writeFile("filters.ppd", ppdText(lines)), nullptr);
        ASSERT_NE(dialog.ppdFile(), nullptr);
        EXPECT_EQ(channel->pathForCommandFilterInPPD(dialog.ppdFile()), test.path);
    }
    EXPECT_EQ(channel->pathForCommandFilterInPPD(nullptr), std::nullopt);

    // libcups opens no PPD with such a value.
    Dialog dialog(ppdWithFilter("/x"), nullptr);
    ppd_attr_t* filter = ppdFindAttr(dialog.ppdFile(), "cupsFilter2", nullptr);
    while (filter != nullptr && !std::string_view(filter->value).starts_with("application/vnd.cups-command"))
        filter = ppdFindNextAttr(dialog.ppdFile(), "cupsFilter2", nullptr);
    ASSERT_NE(filter, nullptr);
    std::string typeAlone = "application/vnd.cups-command";
    char* const value = std::exchange(filter->value, typeAlone.data());
    EXPECT_EQ(channel->pathForCommandFilterInPPD(dialog.ppdFile()), std::nullopt);
    filter->value = value;
}

TEST_F(FilterChannelTest, ReadsTheSupportedCommands) {
    struct Case {
        std::string line;
        std::optional<CommandList> commands;
    };
    for (const Case& test : std::vector<Case>{
             {"", std::nullopt},
             {"*cupsCommands: \"\"\n", CommandList{""}},
             {"*cupsCommands: \"A\"\n", CommandList{"A"}},
             {"*cupsCommands: \"A  B\"\n", (CommandList{"A", "", "B"})},
             {"*cupsCommands: \"A B \"\n", (CommandList{"A", "B", ""})},
             {"*cupsCommands: \"A\tB\"\n", CommandList{"A\tB"}},
             {"*cupsCommands: \"A \xFF\"\n", std::nullopt},
             {"*cupsCommands x/y: \"A\"\n*cupsCommands: \"B\"\n", CommandList{"A"}},
         }) {
        const auto channel = channelFor(writeFile("commands.ppd", ppdText(test.line)));
        EXPECT_EQ(channel->supportedCommands(), test.commands) << test.line;
    }
    EXPECT_EQ(supportedCommandsInPPD(nullptr), std::nullopt);
}

TEST_F(FilterChannelTest, ComposesTheJob) {
    const auto channel = channelFor(writeFile("none.ppd", ppdText("")));
    const std::string user = " username=" + platform::fullUserName();
    const std::string domain = platform::persistentDomainPath(kPasswordDomain);
    const auto store = [&domain](const std::string& text) {
        std::ofstream(domain) << text;
        ::chmod(domain.c_str(), 0600);
    };
    EXPECT_EQ(channel->commandJobWithCommands(std::nullopt), "#CUPS-COMMAND");
    EXPECT_EQ(channel->commandJobWithCommands(CommandList{}), "#CUPS-COMMAND");
    EXPECT_EQ(channel->commandJobWithCommands(CommandList{"X", ""}), "#CUPS-COMMAND\nX" + user + "\n" + user);
    for (const char* none : {"{ defaultPassword = \"\"; }", "{ defaultPassword = (a); }", "{ other = x; }"}) {
        store(none);
        EXPECT_EQ(channel->commandJobWithCommands(CommandList{"X"}), "#CUPS-COMMAND\nX" + user) << none;
    }
    store("{ defaultPassword = \"pass word\"; }");
    EXPECT_EQ(channel->commandJobWithCommands(CommandList{"X", "Y"}),
        "#CUPS-COMMAND\nX" + user + " password=pass word\nY" + user + " password=pass word");
    std::filesystem::remove(domain);
}

} // namespace
} // namespace orvan
