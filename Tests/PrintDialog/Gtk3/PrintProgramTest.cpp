// orvan-print, when it cannot do what it is asked for: it says so in a dialog, and on standard error.
#include "Tests/PrintDialog/Gtk/Desktop.h"
#include "Tests/Support/Processes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace orvan::test {
namespace {

class PrintProgram : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v xdotool >/dev/null") != 0)
            GTEST_SKIP() << "the Debian package xdotool is not installed";
        desktop_ = Desktop::start();
        if (!desktop_.skipReason.empty()) GTEST_SKIP() << desktop_.skipReason;
        document_ = desktop_.printing->folder().home() / "document.pdf";
        std::ofstream(document_) << "%PDF-1.4\n";
    }

    // Runs it before somebody who presses the keys in each window that appears.
    ProgramEnd run(const std::vector<std::string>& arguments, const std::string& keys,
        const Environment& environment) const {
        std::string command = "\"$@\" & while kill -0 $! 2>/dev/null; do"
                              "  for w in $(xdotool search --onlyvisible --class orvan-print 2>/dev/null); do"
                              "    xdotool windowfocus $w key " +
                              keys + " 2>/dev/null; done; sleep 0.1; done; wait $!";
        std::vector<std::string> all{"/bin/bash", "-c", command, "bash", ORVAN_PRINT_PROGRAM};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runProgram(all, environment);
    }

    Desktop desktop_;
    std::filesystem::path document_;
};

TEST_F(PrintProgram, saysWhyItCannotPrint) {
    const std::string folder = desktop_.printing->folder().home().string();
    const Environment environment = desktop_.environment();
    Environment noScheduler = environment;
    noScheduler["CUPS_SERVER"] = folder + "/no-socket";
    struct Case {
        std::vector<std::string> arguments;
        Environment environment;
        std::string says;
    };
    for (const Case& c : {
             Case{{folder + "/missing.pdf"}, environment, "missing.pdf: There is no such file."},
             Case{{folder}, environment, "It is a folder."},
             Case{{"-q", "Nowhere", document_.string()}, environment, "There is no printer Nowhere"},
             Case{{"-q", "Office", "--preset", "Gold", document_.string()}, environment,
                 "Cannot print: There is no preset “Gold” for this printer."},
             Case{{document_.string()}, noScheduler, "cannot reach the print scheduler"},
         }) {
        const ProgramEnd end = run(c.arguments, "Escape", c.environment);
        EXPECT_EQ(end.exitCode, 1) << c.says;
        EXPECT_NE(end.errors.find(c.says), std::string::npos) << end.errors;
    }
    for (const char* queue : {"Office", "Annex", "Other"})
        ASSERT_EQ(desktop_.printing->deleteQueue(queue), std::nullopt);
    EXPECT_NE(run({document_.string()}, "Escape", environment).errors.find("There is no printer"),
        std::string::npos);
}

TEST_F(PrintProgram, printsNothingWhenItIsCancelled) {
    // The window is one that says what it is about to print.
    const std::string title =
        "$(xdotool getwindowname $w | grep -q 'Print document.pdf and 2 other' && echo Escape)";
    const ProgramEnd end = run({"-q", "Office", document_.string(), document_.string(), document_.string()},
        title, desktop_.environment());
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_NE(end.errors.find("cancelled; nothing was printed"), std::string::npos) << end.errors;
    std::vector<PrintJob> jobs;
    EXPECT_EQ(desktop_.printing->jobs("Office", &jobs), std::nullopt);
    EXPECT_TRUE(jobs.empty());
}

} // namespace
} // namespace orvan::test
