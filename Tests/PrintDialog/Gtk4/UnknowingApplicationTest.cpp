// Debian's print editor of GTK 4, as it is, in front of a person with a mouse and a keyboard.
#include "Tests/PrintDialog/Gtk/PaperSituations.h"
#include "Tests/PrintDialog/Gtk/Widgets.h"
#include "Tests/Support/Processes.h"

#include <strings.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace orvan::test {
namespace {

// The last minor release of GTK 4 whose widgets are where the accessibility interface says.
constexpr guint kLastWithPlaces = 8;

// Whatever the letters' case is: the printer's language has capitals.
::testing::AssertionResult isSame(const std::string& code, const std::string& keyword) {
    if (strcasecmp(code.c_str(), keyword.c_str()) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << code << " is not " << keyword;
}

class UnknowingApplication : public PaperSituations {
protected:
    void SetUp() override {
        if (std::system("command -v gtk4-print-editor xdotool dbus-run-session gdbus >/dev/null") != 0)
            GTEST_SKIP()
                << "the Debian packages gtk-4-examples, xdotool, dbus and libglib2.0-bin are not all "
                   "installed";
        if (gtk_get_minor_version() > kLastWithPlaces)
            GTEST_SKIP() << "this release of GTK tells other places of its widgets than they have";
        PaperSituations::SetUp();
    }

    // The editor reads its settings where it is started.
    void visit(const Visit& visit) const override {
        SCOPED_TRACE(visit.queue + ": " + visit.remembered + " -> " + visit.prints);
        const std::string demo = std::string(ORVAN_SOURCE_DIR) + "/TestBed/Demo/";
        const std::string session = std::string(ORVAN_SOURCE_DIR) + "/TestBed/Session/with-own-session";
        const auto [variable, value] = moduleVariable(builtModule());
        const TempFolder folder;
        folder.write("document.txt", "Sehr geehrte Damen und Herren");
        folder.write("print-settings.ini", "[Print Settings]\nprinter=" + visit.queue +
                                               (visit.remembered.empty() ? "" : "\ncups-MediaType=") +
                                               visit.remembered + "\n");
        std::vector<std::string> command{"/usr/bin/env", "-C", folder.path(), session, "/usr/bin/env",
            variable + "=" + value, demo + "print-with-dialog", "--activate", "org.gtk.PrintEditor4=print",
            "--printer", visit.queue};
        const auto add = [&command](const char* option, const std::string& wanted) {
            if (!wanted.empty()) command.insert(command.end(), {option, wanted});
        };
        if (visit.opensTab) {
            add("--tab", kTab);
            add("--shows", std::string(kRow) + "=" + visit.shown);
            if (visit.says.starts_with(kRow)) command.emplace_back("--unfold");
            add("--says", visit.says);
            if (!visit.picks.empty()) add("--pick", std::string(kRow) + "=" + visit.picks);
        }
        add("--button", visit.prints.empty() ? "Cancel" : "Print");
        command.insert(command.end(),
            {visit.prints.empty() ? "--leave" : "--stays", "--", "gtk4-print-editor", "document.txt"});
        Environment environment = desktop_.environment();
        environment["ORVAN_SYSTEM_RELEASE"] = "10.9.0";
        const ProgramEnd end = runProgram(command, environment);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        EXPECT_EQ(end.errors.find("CRITICAL"), std::string::npos) << end.errors;
        if (visit.prints.empty()) return;
        EXPECT_TRUE(isSame(printed(visit.queue, "@PJL SET MEDIATYPE="), visit.prints));
    }
};

TEST_F(UnknowingApplication, printsTheTypeThatWasPicked) {
    visitOnGoodDays();
}

TEST_F(UnknowingApplication, hasTheStoredNamesOfAPrinterThatIsOff) {
    visitAPrinterThatIsOff();
}

TEST_F(UnknowingApplication, waitsForASlowPrinter) {
    visitASlowPrinter();
}

TEST_F(UnknowingApplication, saysThatThePrinterIsBusy) {
    visitABusyPrinter();
}

TEST_F(UnknowingApplication, saysWhatThePrinterDoesNotHave) {
    visitAPrinterWithoutThePaper();
}

TEST_F(UnknowingApplication, hasTheStoredNamesWhileThePrinterWasNotAsked) {
    visitBeforeALateAnswer();
}

} // namespace
} // namespace orvan::test
