// Debian's document viewer, as it is, in front of a person who has the keyboard and looks at the screen
// through the accessibility interface.
#include "Tests/PrintDialog/Gtk/Desktop.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace orvan::test {
namespace {

// What the command prints, and its exit status.
std::pair<std::string, int> run(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    std::array<char, 512> line{};
    while (std::fgets(line.data(), line.size(), pipe) != nullptr)
        output += line.data();
    return {output, pclose(pipe)};
}

TEST(DocumentViewer, printsWithThePicksOfTheTab) {
    if (std::system("command -v evince xdotool dbus-run-session >/dev/null") != 0)
        GTEST_SKIP() << "the Debian packages evince, xdotool and dbus are not all installed";
    const Desktop desktop = Desktop::start();
    if (!desktop.skipReason.empty()) GTEST_SKIP() << desktop.skipReason;

    const std::filesystem::path document = desktop.printing->folder().home() / "sample.pdf";
    const std::string sources = ORVAN_SOURCE_DIR;
    ASSERT_EQ(run("ps2pdf " + sources + "/TestBed/Demo/sample.ps " + document.string()).second, 0);
    EXPECT_TRUE(desktop.runApplication({}, [&] {
        const auto [said, status] =
            run(sources + "/TestBed/Session/with-own-session " + sources +
                "/TestBed/Demo/print-with-dialog --keys ctrl+p --printer Office --stays"
                " --tab 'Paper Options' --summary --pick 'Media Mismatch:=Cancel Job'"
                " --pick 'Paper Type:=Custom Type 2' -- evince " +
                document.string());
        EXPECT_EQ(status, 0);
        EXPECT_NE(said.find("Paper Type: Custom Type 2"), std::string::npos) << said;
    }));
    std::vector<PrintJob> jobs;
    ASSERT_EQ(desktop.printing->jobs("Office", &jobs), std::nullopt);
    ASSERT_EQ(jobs.size(), 1U);
    EXPECT_EQ(jobs.front().attribute("MediaType"), "CustomType2");
    EXPECT_EQ(jobs.front().attribute("OVNMismatch"), "Cancel");
    EXPECT_EQ(jobs.front().attribute("OVNEdgeToEdge"), "Off");
}

} // namespace
} // namespace orvan::test
