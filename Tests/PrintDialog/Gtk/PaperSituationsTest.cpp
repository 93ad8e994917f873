#include "Tests/PrintDialog/Gtk/PaperSituations.h"

#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/SimulatedPrinter.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan::test {

namespace {

// Two trays, with plain paper and with the paper of type 2.
std::string documentWithTrays(const NamedPapers& papers) {
    const std::string trays =
        "<deviceStatus><printer><inputTrays>"
        "<tray><name>Tray 1</name><status>OK</status><paperSize>A4</paperSize>"
        "<paperType>Plain Paper</paperType></tray>"
        "<tray><name>Tray 2</name><status>Low</status><paperSize>A4</paperSize>"
        "<paperType>Custom Type 2</paperType></tray>"
        "</inputTrays><supplies><supply><name>Cyan Toner</name><status>42</status></supply>"
        "</supplies></printer></deviceStatus>";
    std::string document = statusDocument(papers);
    document.insert(document.find("<customPaperTypes>"), trays);
    return document;
}

} // namespace

void PaperSituations::SetUp() {
    PrintingSystemOptions options;
    options.folder.extraFilters = {ORVAN_COMMAND_FILTER};
    start(options);
}

void PaperSituations::addQueue(
    const std::string& name, const std::string& url, const std::string& device, const char* byDefault) const {
    std::ifstream stream(ORVAN_PPD_FILE);
    std::string ppd{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const auto replace = [&ppd](const std::string& from, const std::string& to) {
        ppd.replace(ppd.find(from), from.size(), to);
    };
    replace("/usr/lib/cups/filter/commandtoorvan", "commandtoorvan");
    replace("\"/status.xml\"", '"' + url + '"');
    replace("*DefaultMediaType: Plain", std::string("*DefaultMediaType: ") + byDefault);
    replace(" com.orvan.JobAccounting ReportLevels", "");
    const TempFolder folder;
    ASSERT_EQ(desktop_.printing->addQueue({.name = name,
                  .ppdFile = folder.write("queue.ppd", ppd),
                  .deviceURI = device.empty() ? desktop_.printing->fileDevice(name) : device}),
        std::nullopt);
}

bool PaperSituations::isQuestionOver(const std::string& queue, std::size_t count) const {
    const auto all = jobs(queue);
    return all.size() >= count &&
           std::ranges::all_of(all, [](const PrintJob& job) { return job.isSettled(); });
}

std::string PaperSituations::printed(const std::string& queue, const std::string& code) const {
    EXPECT_TRUE(waitUntil([&] { return isQuestionOver(queue); }));
    std::ifstream stream(desktop_.printing->outputFile(queue), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    const std::size_t place = bytes.rfind(code);
    if (place == std::string::npos) return "nothing in " + std::to_string(bytes.size()) + " bytes";
    const std::size_t begin = place + code.size();
    return bytes.substr(begin, bytes.find_first_of(")\r\n", begin) - begin);
}

void PaperSituations::visit(const Visit& visit) const {
    SCOPED_TRACE(visit.queue + ": " + visit.remembered + " -> " + visit.prints);
    const auto body = [&] {
        Settings settings{{"printer", visit.queue}};
        if (!visit.remembered.empty()) settings["cups-MediaType"] = visit.remembered;
        OpenDialog dialog(settings);
        ASSERT_TRUE(dialog.waitForTab(kTab));
        if (visit.opensTab) {
            dialog.openTab(kTab);
            if (visit.says.starts_with(kRow)) dialog.unfold();
            EXPECT_TRUE(waitUntil([&] {
                const auto choices = dialog.choicesOf(kRow);
                const bool canPick =
                    visit.picks.empty() || std::ranges::find(choices, visit.picks) != choices.end();
                return canPick && dialog.shownIn(kRow) == visit.shown && dialog.says(visit.says);
            })) << dialog.shownIn(kRow);
            dialog.keepPicture(visit.name);
        }
        if (!visit.picks.empty()) dialog.pick(kRow, visit.picks);
        if (visit.prints.empty()) return;
        EXPECT_EQ(dialog.print(document_), "");
        EXPECT_EQ(printed(visit.queue), visit.prints);
    };
    inApplication(body, {kAsks});
}

void PaperSituations::visitOnGoodDays(bool isPublished) {
    const SimulatedPrinter printer({"--no-snmp"}, statusDocument(kPapers));
    addQueue("Office", printer.url());
    addQueue("Ivory", printer.url(), "", "CustomType2");
    for (const char* queue : {"Office", "Ivory"})
        if (isPublished) publish(queue);
    visit({.name = "fresh",
        .shown = "Plain",
        .picks = "Ivory",
        .says = "Paper Type: Plain",
        .prints = "CustomType2"});
    visit({.name = "remembered", .remembered = "CustomType2", .shown = "Ivory", .prints = "CustomType2"});
    visit({.name = "never-opened", .remembered = "CustomType2", .opensTab = false, .prints = "CustomType2"});
    visit({.name = "queue-default", .queue = "Ivory", .shown = "Ivory", .prints = "CustomType2"});
    visit(
        {.name = "queue-default-never-opened", .queue = "Ivory", .opensTab = false, .prints = "CustomType2"});
    // The office puts them into another order, renames one, takes one away.
    printer.replaceDocument(statusDocument({{"Labels A", "1"}, {"Ivory 120", "2"}, {"Certificates", "3"}}));
    visit({.name = "renamed-and-in-another-order",
        .remembered = "CustomType2",
        .shown = "Ivory 120",
        .prints = "CustomType2"});
    printer.replaceDocument(statusDocument({{"Certificates", "3"}, {"Labels A", "1"}}));
    visit({.name = "removed",
        .remembered = "CustomType2",
        .shown = std::string("Custom Type 2") + kUnlisted,
        .says = std::string("Paper Type: Custom Type 2") + kUnlisted,
        .prints = "CustomType2"});
    // All places taken: no record of the PPD is type 5 any more.
    printer.replaceDocument(statusDocument({{"A", "1"}, {"B", "2"}, {"C", "3"}, {"D", "4"}, {"E", "6"}}));
    visit({.name = "no-record",
        .remembered = "CustomType5",
        .shown = std::string("Custom Type 5") + kUnlisted,

        .prints = "CustomType5"});
}

void PaperSituations::visitASlowPrinter() {
    const SimulatedPrinter printer(
        {"--no-snmp", "--misbehave", "slow", "--interval", "5"}, statusDocument(kPapers));
    addQueue("Office", printer.url());
    visit({.name = "slow", .remembered = "CustomType2", .shown = "Ivory", .prints = "CustomType2"});
}

void PaperSituations::visitABusyPrinter() {
    const SimulatedPrinter printer({"--no-snmp"}, statusDocument(kPapers));
    int port = 0;
    const auto engaged = listenOnLoopback(1, &port); // takes connections, and never ends one
    addQueue("Office", printer.url());
    visit({.name = "before-busy", .shown = "Plain", .picks = "Ivory", .prints = "CustomType2"});
    // With the answers that its PPD has.
    const TempFolder folder;
    const std::filesystem::path ppd = folder.path() / "queue.ppd";
    std::filesystem::copy(desktop_.printing->folder().configurationFolder() / "ppd" / "Office.ppd", ppd);
    const std::string device = "socket://127.0.0.1:" + std::to_string(port);
    ASSERT_EQ(
        desktop_.printing->addQueue({.name = "Office", .ppdFile = ppd, .deviceURI = device}), std::nullopt);
    int job = 0;
    ASSERT_EQ(desktop_.printing->print("Office", document_, {}, &job), std::nullopt);
    ASSERT_TRUE(waitUntil([&] { return jobs("Office").back().state == IPP_JSTATE_PROCESSING; }));
    visit({.name = "busy",
        .remembered = "CustomType2",
        .shown = "Ivory",
        .says = "; the printer is busy with another job."});
    ASSERT_EQ(desktop_.printing->cancelJob(job), std::nullopt);
}

void PaperSituations::visitAPrinterWithoutThePaper() {
    const SimulatedPrinter printer(
        {"--no-snmp"}, documentWithTrays({{"Certificates", "3"}, {"Ivory", "2"}, {"Gold", "17"}}));
    addQueue("Office", printer.url());
    visit({.name = "no-tray",
        .remembered = "CustomType3",
        .shown = "Certificates",
        .says = "No tray holds “Certificates” in ",
        .prints = "CustomType3"});
    visit({.name = "no-driver",
        .shown = "Plain",
        .picks = "Gold (not known to this queue\u2019s driver)",
        .says = "Paper Type: Plain"});
}

void PaperSituations::visitBeforeALateAnswer() {
    const SimulatedPrinter printer({"--no-snmp"}, statusDocument(kPapers));
    addQueue("Office", printer.url());
    visit({.name = "before-late", .shown = "Plain", .picks = "Ivory", .prints = "CustomType2"});
    ASSERT_EQ(desktop_.printing->holdNewJobs("Office"), std::nullopt);
    visit({.name = "not-answered-yet",
        .remembered = "CustomType2",
        .shown = "Ivory",
        .says = "; the printer has not answered yet."});
}

void PaperSituations::publish(const std::string& queue) const {
    const ProgramEnd end = runProgram(
        {ORVAN_PROGRAM, "papers", "-q", queue, "--release", "10.9.0", "--publish"}, desktop_.environment());
    EXPECT_EQ(end.exitCode, 0) << end.errors;
}

void PaperSituations::visitAPrinterThatIsOff() {
    SimulatedPrinter printer({"--no-snmp"}, statusDocument(kPapers));
    addQueue("Office", printer.url());
    addQueue("New", printer.url());
    visit({.name = "before-off", .shown = "Plain", .picks = "Ivory", .prints = "CustomType2"});
    letPass(std::chrono::milliseconds(3100)); // times of answers are whole seconds
    printer.end();
    visit({.name = "off",
        .remembered = "CustomType2",
        .shown = "Ivory",
        .says = "; the printer did not answer.",
        .prints = "CustomType2"});
    visit({.name = "never-asked",
        .queue = "New",
        .remembered = "CustomType2",
        .shown = std::string("Custom Type 2") + kUnlisted,
        .says = "The printer has not told its paper names.",
        .prints = "CustomType2"});
}

namespace {

// A custom paper is its type, whatever its place, its name or the way to it is.
TEST_F(PaperSituations, printTheTypeThatWasPicked) {
    visitOnGoodDays();
}

// What the queue's PPD cannot say is said, and no other paper is printed in its place by GTK.
TEST_F(PaperSituations, sayWhatTheDriverCannotName) {
    const SimulatedPrinter printer({"--no-snmp"}, statusDocument({{"Gold", "17"}, {"Silver", "a b"}}));
    addQueue("Office", printer.url());
    const auto body = [this] {
        OpenDialog dialog(Settings{{"printer", "Office"}, {"cups-MediaType", "CustomType1"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        const std::string gold = "Gold (not known to this queue\u2019s driver)";
        ASSERT_TRUE(waitUntil([&] {
            const auto choices = dialog.choicesOf(kRow);
            return std::ranges::find(choices, gold) != choices.end();
        }));
        const auto choices = dialog.choicesOf(kRow);
        EXPECT_NE(std::ranges::find(choices, "Custom Type 2"), choices.end()) << "its type is no keyword";
        dialog.pick(kRow, gold);
        EXPECT_TRUE(dialog.says("The driver of this queue cannot name “Gold” to the printer."));
        dialog.keepPicture("not-in-the-driver");
        EXPECT_EQ(dialog.print(document_), "");
    };
    inApplication(body, {kAsks});
    EXPECT_EQ(jobs("Office").back().attribute("MediaType"), "CustomType17");
}

// The printer is off: the names of the last time, with their age; and where there are none, that is said.
TEST_F(PaperSituations, showTheStoredNamesOfAPrinterThatIsOff) {
    visitAPrinterThatIsOff();
}

// Names that come late take the place of those that were shown, with the same marks, and nobody asks again.
TEST_F(PaperSituations, followThePrinterWhenItAnswersLate) {
    const SimulatedPrinter printer({"--no-snmp"}, statusDocument(kPapers));
    addQueue("Office", printer.url());
    visit({.name = "before-late", .shown = "Plain", .picks = "Ivory", .prints = "CustomType2"});
    printer.replaceDocument(statusDocument({{"Ivory 120", "2"}, {"Certificates", "3"}}));
    ASSERT_EQ(desktop_.printing->holdNewJobs("Office"), std::nullopt);
    const std::size_t before = jobs("Office").size();
    const auto body = [&] {
        OpenDialog dialog(Settings{{"printer", "Office"}, {"cups-MediaType", "CustomType2"}});
        OpenDialog second(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        EXPECT_TRUE(dialog.says("Asking the printer \u2026") || dialog.shownIn(kRow) == "Ivory");
        EXPECT_TRUE(waitUntil([&] { return dialog.shownIn(kRow) == "Ivory"; })) << dialog.shownIn(kRow);
        EXPECT_TRUE(dialog.says("; the printer has not answered yet."));
        dialog.keepPicture("late");
        dialog.pick(kRow, "Certificates");
        dialog.pick("Separator Page Source:", "Tray 2");
        gtk_widget_grab_focus(dialog.popUps().at(kRow));
        ASSERT_EQ(jobs("Office").size(), before + 1) << "the second dialog waits for the first one's job";
        ASSERT_EQ(desktop_.printing->releaseJob(jobs("Office").back().id), std::nullopt);
        EXPECT_TRUE(waitUntil([&] {
            const auto choices = dialog.choicesOf(kRow);
            return std::ranges::find(choices, "Ivory 120") != choices.end();
        }));
        dialog.keepPicture("late-answered");
        EXPECT_EQ(dialog.shownIn(kRow), "Certificates");
        EXPECT_EQ(dialog.shownIn("Separator Page Source:"), "Tray 2");
        EXPECT_FALSE(dialog.says("Paper names of"));
        GtkWidget* const focus = gtk_window_get_focus(GTK_WINDOW(dialog.dialog()));
        GtkWidget* const row = dialog.popUps().at(kRow);
        EXPECT_TRUE(focus != nullptr && (focus == row || gtk_widget_is_ancestor(focus, row)));
        letPass(std::chrono::milliseconds(1200));
        EXPECT_EQ(jobs("Office").size(), before + 1) << "nobody asks again";
        ASSERT_EQ(desktop_.printing->stopHoldingNewJobs("Office"), std::nullopt);
        EXPECT_EQ(dialog.print(document_), "");
        EXPECT_EQ(printed("Office"), "CustomType3");
    };
    inApplication(body, {kAsks});
}

// What the printer has told of its trays counts before anything is printed.
TEST_F(PaperSituations, sayThatNoTrayHoldsThePaper) {
    const SimulatedPrinter printer({"--no-snmp"}, documentWithTrays(kPapers));
    addQueue("Office", printer.url());
    const auto body = [&] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        GtkPaperSize* const a4 = gtk_paper_size_new(GTK_PAPER_NAME_A4);
        GtkPageSetup* const setup = gtk_page_setup_new();
        gtk_page_setup_set_paper_size(setup, a4);
        gtk_print_unix_dialog_set_page_setup(dialog.dialog(), setup);
        g_object_unref(setup);
        gtk_paper_size_free(a4);
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        ASSERT_TRUE(waitUntil([&] {
            const auto choices = dialog.choicesOf(kRow);
            return !choices.empty() && choices.front() == "Certificates";
        }));
        EXPECT_FALSE(dialog.says("No tray holds"));
        dialog.pick(kRow, "Certificates");
        EXPECT_TRUE(dialog.says(
            "No tray holds “Certificates” in A4; Tray 1 holds “Plain” A4, Tray 2 holds “Ivory” A4."));
        dialog.unfold();
        EXPECT_TRUE(waitUntil([&] { return dialog.says("Tray 2: Ivory, A4, nearly empty"); }));
        EXPECT_TRUE(dialog.says("Cyan Toner: 42%"));
        EXPECT_TRUE(dialog.says("The printer told this at "));
        dialog.keepPicture("not-loaded");
        dialog.pick(kRow, "Ivory");
        EXPECT_FALSE(dialog.says("No tray holds"));
        dialog.pick(kRow, "Certificates");
        EXPECT_EQ(dialog.print(document_), "") << "nothing is in the way of printing";
        EXPECT_EQ(printed("Office"), "CustomType3");
    };
    inApplication(body, {kAsks});
}

TEST_F(PaperSituations, waitForASlowPrinter) {
    visitASlowPrinter();
}

TEST_F(PaperSituations, sayThatThePrinterIsBusy) {
    visitABusyPrinter();
}

// Where the names are titles of the driver's choices for every client.
TEST_F(PaperSituations, printTheSameFromAPublishedQueue) {
    visitOnGoodDays(true);
}

} // namespace
} // namespace orvan::test
