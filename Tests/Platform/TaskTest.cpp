#include "Platform/Task.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

namespace platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Only what hangs takes minutes.
void loopUntil(const std::function<bool()>& isDone) {
    const auto deadline = Clock::now() + 5min;
    while (!isDone() && Clock::now() < deadline)
        if (!g_main_context_iteration(nullptr, FALSE)) g_usleep(1000);
}

TaskDescription script(const std::string& text, std::string input = {}) {
    return {"/bin/sh", {"-c", text}, {{"PATH", "/usr/bin:/bin"}}, std::move(input)};
}

std::ptrdiff_t openDescriptors() {
    // The main context opens one of its own with its first iteration.
    g_main_context_iteration(nullptr, FALSE);
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

bool hasChildren() {
    siginfo_t ignored{};
    return ::waitid(P_ALL, 0, &ignored, WEXITED | WNOHANG | WNOWAIT) == 0;
}

// Nothing when the end was not told in time.
std::optional<TaskOutput> outputOf(TaskDescription description) {
    std::optional<TaskOutput> output;
    int ends = 0;
    const auto task = Task::launch(std::move(description), [&](const TaskOutput& end) {
        output = end;
        ++ends;
    });
    if (task == nullptr) return std::nullopt;
    EXPECT_TRUE(task->isRunning());
    EXPECT_EQ(ends, 0) << "the end was told within launch()";
    loopUntil([&] { return ends > 0; });
    EXPECT_FALSE(ends > 0 && task->isRunning());
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_LE(ends, 1);
    return output;
}

TEST(Task, CollectsWhatHoweverBehavedProcessesWrite) {
    const std::string large(1000000, 'i');
    struct Case {
        const char* what;
        std::string script;
        std::string input;
        std::string output;
    };
    const std::vector<Case> cases = {
        {"an ordinary filter", "cat >&2", "a job", "a job"},
        {"feeding and draining at once", "cat >&2", large, large},
        {"nothing to read", "cat >&2; echo end >&2", "", "end\n"},
        {"never reads", "echo end >&2", large, "end\n"},
        {"closes its input at once", "exec <&-; sleep 0.1; echo end >&2", large, "end\n"},
        {"fails", "echo end >&2; exit 1", "", "end\n"},
        {"dies by a signal", "echo end >&2; kill -KILL $$", large, "end\n"},
        {"closes its output early", "echo end >&2; exec 2>&-; sleep 0.1", "", "end\n"},
        {"the environment", "env >&2", "", "PATH=/usr/bin:/bin\nPWD=" + fs::current_path().string() + "\n"},
        {"signals are as usual", "sh -c 'kill -PIPE $$; echo ignored >&2'; :", "", ""},
    };
    const std::ptrdiff_t descriptors = openDescriptors();
    ::signal(SIGPIPE, SIG_IGN);
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const auto output = outputOf(script(test.script, test.input));
        ASSERT_TRUE(output);
        EXPECT_TRUE(output->standardError == test.output) << output->standardError.substr(0, 1000);
        EXPECT_FALSE(output->isTruncated);
    }
    ::signal(SIGPIPE, SIG_DFL);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_FALSE(hasChildren());
}

TEST(Task, KeepsTheBeginningOfEndlessOutput) {
    const auto output = outputOf(script("head -c 104857600 /dev/zero >&2"));
    ASSERT_TRUE(output);
    EXPECT_EQ(output->standardError.size(), kMaximumTaskOutput);
    EXPECT_TRUE(output->isTruncated);
}

TEST(Task, DoesNotWaitForWhatAProcessLeavesBehind) {
    for (const char* leftBehind : {"sleep 600 &", "(while :; do echo more >&2; done) &"}) {
        const auto output = outputOf(script(std::string(leftBehind) + " echo $! >&2"));
        ASSERT_TRUE(output);
        std::istringstream words(output->standardError);
        std::string word;
        while (words >> word && word == "more") {
        }
        const auto left = static_cast<pid_t>(std::strtol(word.c_str(), nullptr, 10));
        ASSERT_GT(left, 1);
        EXPECT_EQ(::kill(left, SIGKILL), 0) << "it still ran";
    }
}

TEST(Task, PassesNoDescriptorOn) {
    const int open = ::dup(STDOUT_FILENO);
    const auto output = outputOf(script("exec ls /proc/self/fd >&2"));
    ::close(open);
    // The fourth is the folder that is being listed.
    EXPECT_EQ(output->standardError, "0\n1\n2\n3\n");
}

TEST(Task, SaysWhatDoesNotStart) {
    const fs::path folder = fs::path(testing::TempDir()) / ("task" + std::to_string(::getpid()));
    fs::create_directories(folder);
    std::ofstream(folder / "plain") << "#!/bin/sh\n";
    std::ofstream(folder / "orphan") << "#!/no/such/interpreter\n";
    fs::permissions(folder / "orphan", fs::perms::owner_all);
    // What others could have put there.
    fs::create_directories(folder / "loose");
    for (const fs::path& program : {folder / "shared", folder / "loose/program"})
        std::ofstream(program) << "#!/bin/sh\n";
    fs::permissions(folder / "shared", fs::perms(0775));
    fs::permissions(folder / "loose/program", fs::perms(0755));
    fs::permissions(folder / "loose", fs::perms(0777));
    const std::ptrdiff_t descriptors = openDescriptors();
    for (const std::string& program : {std::string(), std::string("sh"), std::string("./plain"),
             (folder / "plain").string(), (folder / "orphan").string(), (folder / "missing").string(),
             folder.string(), (folder / "shared").string(), (folder / "loose/program").string()}) {
        platform::Failure error;
        bool wasToldEnd = false;
        EXPECT_EQ(Task::launch(
                      {program, {}, {}, "input"}, [&](const TaskOutput&) { wasToldEnd = true; }, error),
            nullptr);
        EXPECT_NE(error.value_or("").find('"' + program + '"'), std::string::npos) << error.value_or("");
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
        EXPECT_FALSE(wasToldEnd);
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_FALSE(hasChildren());
    fs::remove_all(folder);
}

TEST(Task, EndsPolitely) {
    const std::ptrdiff_t descriptors = openDescriptors();
    bool hasEnded = false;
    auto task = Task::launch(script("exec sleep 60"), [&](const TaskOutput&) { hasEnded = true; });
    task->terminate();
    loopUntil([&] { return hasEnded; });
    EXPECT_TRUE(hasEnded);
    task->terminate();
    task.reset();

    // An object that goes takes its process along, and nothing of it is heard any more.
    hasEnded = false;
    task = Task::launch(script("exec sleep 60"), [&](const TaskOutput&) { hasEnded = true; });
    task.reset();
    loopUntil([] { return !hasChildren(); });
    EXPECT_FALSE(hasEnded);
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(openDescriptors(), descriptors);
}

TEST(Task, MayBeDestroyedByItsHandler) {
    std::unique_ptr<Task> task;
    bool hasEnded = false;
    task = Task::launch(script(":"), [&](const TaskOutput&) {
        EXPECT_FALSE(task->isRunning());
        task.reset();
        hasEnded = true;
    });
    loopUntil([&] { return hasEnded; });
    EXPECT_TRUE(hasEnded);
}

TEST(Task, DefaultEnvironmentLeavesTheDesktopOut) {
    const std::vector<const char*> left = {
        "DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "GTK3_MODULES"};
    for (const char* name : left)
        ::setenv(name, "x", 0);
    ::setenv("CUPS_SERVER", "server", 1);
    const auto environment = defaultTaskEnvironment();
    ::unsetenv("CUPS_SERVER");
    for (const char* name : left)
        EXPECT_FALSE(environment.contains(name)) << name;
    EXPECT_EQ(environment.at("CUPS_SERVER"), "server");
    EXPECT_EQ(environment.at("PATH"), std::getenv("PATH"));
}

} // namespace
} // namespace platform
