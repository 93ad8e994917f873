#include "Tools/PrintingSystem/SchedulerProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace orvan {
namespace {

namespace fs = std::filesystem;

struct Outcome {
    int exitCode = -1;
    std::string output;
};

// The program's end and what it wrote to standard output and error.
Outcome run(const std::string& arguments) {
    Outcome outcome;
    std::FILE* stream = popen((ORVAN_PRINTING_SYSTEM " " + arguments + " 2>&1").c_str(), "re");
    std::array<char, 4096> buffer{};
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), stream))
        outcome.output.append(buffer.data(), size);
    outcome.exitCode = WEXITSTATUS(pclose(stream));
    return outcome;
}

template <typename Condition>
bool eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

class PrintingSystemProgramTest : public testing::Test {
protected:
    void SetUp() override {
        if (SchedulerProcess::findProgram().empty()) GTEST_SKIP() << "cupsd is not installed";
    }
};

TEST_F(PrintingSystemProgramTest, RunsACommandAndAnswersForIt) {
    const std::string queue = "--queue orvan=" ORVAN_DRIVER_PPD " ";
    const struct {
        std::string arguments;
        int exitCode;
        const char* output;
    } cases[] = {
        {queue + "--default orvan -- sh -c 'lpstat -d; exit 7'", 7, "system default destination: orvan"},
        {queue + "-- sh -c 'kill -TERM $$'", 128 + SIGTERM, ""},
        {queue + "-- /nonexistent", 1, "No such file or directory"},
        {"--queue orvan=/dev/null -- true", 1, "not a usable PPD file"},
        {"--default nowhere -- true", 1, "nowhere"},
        {"--queue orvan -- true", 2, "NAME=VALUE"},
        {"--nonsense", 2, "--nonsense"},
        {"--version", 0, "orvan-printing-system 1"},
    };
    for (const auto& [arguments, exitCode, output] : cases) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << arguments << '\n' << outcome.output;
        EXPECT_NE(outcome.output.find(output), std::string::npos) << arguments << '\n' << outcome.output;
    }
}

// What the program's environment lines say of the folder.
fs::path readFolder(int output) {
    std::string text;
    std::array<char, 512> buffer{};
    while (text.find("unset PRINTER\n") == std::string::npos) {
        const ssize_t size = read(output, buffer.data(), buffer.size());
        if (size <= 0) break;
        text.append(buffer.data(), static_cast<std::size_t>(size));
    }
    const std::string before = "export CUPS_SERVER='";
    const std::size_t start = text.find(before) + before.size();
    return fs::path(text.substr(start, text.find('\'', start) - start)).parent_path();
}

// True while any process has the folder in its command line, as the scheduler has.
bool schedulerRuns(const fs::path& folder) {
    std::error_code ignored;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc", ignored)) {
        std::ifstream stream(process.path() / "cmdline", std::ios::binary);
        const std::string words{std::istreambuf_iterator<char>(stream), {}};
        if (words.find(folder / "etc" / "cupsd.conf") != std::string::npos) return true;
    }
    return false;
}

class PrintingSystemSignalTest : public PrintingSystemProgramTest, public testing::WithParamInterface<int> {};

TEST_P(PrintingSystemSignalTest, LeavesNothingBehind) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const pid_t program = fork();
    if (program == 0) {
        dup2(ends[1], 1);
        execl(ORVAN_PRINTING_SYSTEM, ORVAN_PRINTING_SYSTEM, "--queue", "orvan=" ORVAN_DRIVER_PPD, nullptr);
        _exit(127);
    }
    close(ends[1]);
    const fs::path folder = readFolder(ends[0]);
    close(ends[0]);
    EXPECT_TRUE(fs::exists(folder / "socket")) << folder;
    EXPECT_TRUE(schedulerRuns(folder));

    kill(program, GetParam());
    int status = 0;
    ASSERT_EQ(waitpid(program, &status, 0), program);
    EXPECT_EQ(status, GetParam() == SIGKILL ? SIGKILL : 0);
    EXPECT_TRUE(eventually([&] { return !fs::exists(folder) && !schedulerRuns(folder); })) << folder;
}

INSTANTIATE_TEST_SUITE_P(Signals, PrintingSystemSignalTest, testing::Values(SIGINT, SIGTERM, SIGKILL));

} // namespace
} // namespace orvan
