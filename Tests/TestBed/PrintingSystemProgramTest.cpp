#include "TestBed/PrintingSystem/SchedulerProcess.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <string>
#include <tuple>

namespace orvan {
namespace {

namespace fs = std::filesystem;

class PrintingSystemProgramTest : public testing::Test {
protected:
    void SetUp() override {
        if (SchedulerProcess::findProgram().empty()) GTEST_SKIP() << "cupsd is not installed";
    }
};

TEST_F(PrintingSystemProgramTest, RunsACommandAndAnswersForIt) {
    const std::string queue = "--queue orvan=" ORVAN_DRIVER_PPD " ";
    const std::tuple<std::string, int, const char*> cases[] = {
        {queue + "--default orvan -- sh -c 'lpstat -d; exit 7'", 7, "system default destination: orvan"},
        {queue + "-- sh -c 'kill -TERM $$'", 128 + SIGTERM, ""},
        {queue + "-- /nonexistent", 1, "No such file or directory"},
        {"--queue orvan=/dev/null -- true", 1, "not a usable PPD file"},
        {"--queue orvan=/nonexistent.ppd -- true", 1, "No such file or directory"},
        {"--default nowhere -- true", 1, "nowhere"},
        {"--queue orvan -- true", 2, "NAME=VALUE"},
        {"--nonsense", 2, "--nonsense"},
        {"--version", 0, "orvan-printing-system 1"},
    };
    for (const auto& [arguments, exitCode, output] : cases) {
        const ProgramEnd end = runProgram({"/bin/sh", "-c", ORVAN_PRINTING_SYSTEM " " + arguments + " 2>&1"});
        EXPECT_EQ(end.exitCode, exitCode) << arguments << '\n' << end.output;
        EXPECT_NE(end.output.find(output), std::string::npos) << arguments << '\n' << end.output;
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
        if (contents(process.path() / "cmdline").find(folder / "etc" / "cupsd.conf") != std::string::npos)
            return true;
    }
    return false;
}

class PrintingSystemSignalTest : public PrintingSystemProgramTest, public testing::WithParamInterface<int> {};

TEST_P(PrintingSystemSignalTest, LeavesNothingBehind) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    BackgroundProcess program(
        {ORVAN_PRINTING_SYSTEM, "--queue", "orvan=" ORVAN_DRIVER_PPD}, [&] { dup2(ends[1], STDOUT_FILENO); });
    close(ends[1]);
    const fs::path folder = readFolder(ends[0]);
    close(ends[0]);
    EXPECT_TRUE(fs::exists(folder / "socket")) << folder;
    EXPECT_TRUE(schedulerRuns(folder));

    EXPECT_EQ(program.end(GetParam()), GetParam() == SIGKILL ? 128 + SIGKILL : 0);
    EXPECT_TRUE(eventually([&] { return !fs::exists(folder) && !schedulerRuns(folder); })) << folder;
}

INSTANTIATE_TEST_SUITE_P(Signals, PrintingSystemSignalTest, testing::Values(SIGINT, SIGTERM, SIGKILL));

} // namespace
} // namespace orvan
