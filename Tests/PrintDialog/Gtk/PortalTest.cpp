// Debian's portals, as they are: the dialogs of sandboxed applications, all in one process.
#include "Tests/PrintDialog/Gtk/PaperSituations.h"
#include "Tests/PrintDialog/Gtk/Widgets.h"
#include "Tests/Support/Processes.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace orvan::test {
namespace {

constexpr const char* kBackEnd = GTK_MAJOR_VERSION == 3 ? "gtk" : "gnome";

class Portal : public PaperSituations {
protected:
    void SetUp() override {
        const std::string look = std::string("command -v xdotool dbus-run-session ps2pdf >/dev/null"
                                             " && ls /usr/libexec/xdg-desktop-portal"
                                             " /usr/libexec/xdg-desktop-portal-") +
                                 kBackEnd + " >/dev/null 2>&1";
        if (std::system(look.c_str()) != 0)
            GTEST_SKIP() << "the Debian packages xdg-desktop-portal, xdg-desktop-portal-" << kBackEnd
                         << ", xdotool, dbus and ghostscript are not all installed";
        PaperSituations::SetUp();
    }
};

// GTK refuses both papers, so for GTK the two jobs have the same settings.
TEST_F(Portal, givesEachApplicationItsOwnDialogsChoices) {
    const SimulatedPrinter printer({"--no-snmp"}, statusDocument({{"Gold", "17"}, {"Silver", "18"}}));
    addQueue("Office", printer.url());
    const std::string sources = ORVAN_SOURCE_DIR;
    const std::string document = (desktop_.printing->folder().home() / "sample.pdf").string();
    ASSERT_EQ(runProgram({"/usr/bin/ps2pdf", sources + "/TestBed/Demo/sample.ps", document}, {}).exitCode, 0);
    const auto [variable, value] = moduleVariable(builtModule());
    Environment environment = desktop_.environment();
    environment["ORVAN_SYSTEM_RELEASE"] = "10.9.0";
    const std::string unknown = " (not known to this queue\u2019s driver)";
    const ProgramEnd end =
        runProgram({sources + "/TestBed/Session/with-own-session", "/usr/bin/env", variable + "=" + value,
                       sources + "/TestBed/Demo/print-through-portal", "--back-end", kBackEnd, "--printer",
                       "Office", "--tab", kTab, "--label", kRow, "--file", document, "First=Gold" + unknown,
                       "Second=Silver" + unknown},
            environment);
    ASSERT_EQ(end.exitCode, 0) << end.errors;
    ASSERT_TRUE(waitUntil([this] { return isQuestionOver("Office"); }));
    std::vector<std::string> printedTypes; // a question has none
    for (const PrintJob& job : jobs("Office"))
        if (const auto type = job.attribute("MediaType")) printedTypes.push_back(*type);
    EXPECT_EQ(printedTypes, (std::vector<std::string>{"CustomType17", "CustomType18"}))
        << end.output << end.errors;
}

} // namespace
} // namespace orvan::test
