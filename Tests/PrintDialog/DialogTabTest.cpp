// The tab as a dialog's toolkit gets it, without a toolkit: on good days and bad ones, with the real command
// filter and a simulated printer whose papers have types in another order than their places.
#include "PrintDialog/Host/DialogTab.h"

#include "PrintDialog/Host/TabText.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/ScriptedServer.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace orvan {
namespace {

using Papers = NamedPapers;

std::string documentWith(const Papers& papers) {
    return statusDocument(papers,
        "<deviceStatus><printer><inputTrays><tray><name>Tray 1</name>"
        "<status>OK</status><paperSize>A4</paperSize><paperType>Plain Paper</paperType></tray>"
        "<tray><name>Tray 2</name><status>Low</status><paperSize>A4</paperSize>"
        "<paperType>Custom Type 2</paperType></tray></inputTrays><supplies><supply><name>Cyan "
        "Toner</name><status>42</status>"
        "</supply></supplies></printer></deviceStatus>");
}

// Certificates come first and are type 3; Ivory is type 2.
const Papers kPapers{{"Certificates", "3"}, {"Ivory", "2"}, {"Labels A", "1"}};

// What a toolkit's dialog has of its own.
struct FakeDialog final : ToolkitDialog {
    explicit FakeDialog(std::map<std::string, std::string> remembered) : options(std::move(remembered)) {}

    void showTab(const std::string& newTitle, std::shared_ptr<platform::View> newTree) override {
        title = newTitle;
        tree = std::move(newTree);
    }
    void hideTab() override { tree.reset(); }
    bool isTabInFront() const override { return isInFront && tree != nullptr; }
    void treeChanged() override {}
    bool isBusy() const override { return busy; }
    const platform::View* focusedView() const override { return focused; }
    void focus(const platform::View& view) override { focused = &view; }
    std::string takenLetters() const override { return "pc"; }
    void openOptions() override {}
    void closeOptions() override {}
    std::map<std::string, std::string> optionValues() const override { return options; }
    void writeOption(const std::string& keyword, const std::string& choice) override {
        options[keyword] = choice;
    }
    std::optional<PaperSize> paper() const override { return size; }
    bool setPaper(const std::string&, const std::string&, const PaperSize& newSize) override {
        if (!keepsPaper) size = newSize;
        return !keepsPaper;
    }

    std::map<std::string, std::string> options;
    std::string title;
    std::shared_ptr<platform::View> tree;
    PaperSize size{595, 842};
    bool keepsPaper = false;
    bool isInFront = true;
    bool busy = false;
    const platform::View* focused = nullptr;
};

// A dialog with the tab in front of a queue, from the beginning.
struct Visit {
    Visit(const std::string& queue, const std::string& remembered = "")
        : dialog(remembered.empty() ? std::map<std::string, std::string>()
                                    : std::map<std::string, std::string>{{"MediaType", remembered}}),
          tab(DialogTab::create(dialog)) {
        tab->printerSelected(queue);
    }

    platform::Form& form() const {
        return dynamic_cast<platform::Form&>(*dialog.tree->subviews()[1]->subviews()[1]);
    }
    platform::Menu& menu(const std::string& title) const {
        for (const auto& menu : form().menus())
            if (menu->title().text == title) return *menu;
        throw std::out_of_range(title);
    }
    bool pick(const std::string& title, const std::string& choice) const {
        const auto& entries = menu(title).entries();
        const auto found = std::ranges::find(entries, choice, &platform::MenuEntry::title);
        return found != entries.end() && menu(title).pick(static_cast<std::size_t>(found - entries.begin()));
    }
    std::string shown(const std::string& title) const {
        const platform::MenuEntry* const entry = menu(title).selectedEntry();
        return entry != nullptr ? entry->title : "";
    }

    // What is on the tab above the second row but for the presets, the times in it as "TIME".
    std::string top() const {
        const std::string all = dialog.tree != nullptr ? tabText(*dialog.tree) : "(no tab)";
        std::string text = all.substr(0, all.find("Separator Page:"));
        if (const std::size_t place = text.find("Preset:"); place != std::string::npos)
            text.erase(place, text.find('\n', place) + 1 - place);
        constexpr std::size_t kTime = 5;
        if (const std::size_t place = text.find("Paper names of "); place != std::string::npos)
            text.replace(place + std::string("Paper names of ").size(), kTime, "TIME");
        return text;
    }

    FakeDialog dialog;
    std::unique_ptr<DialogTab> tab;
};

class DialogTabTest : public CommandQueue {
protected:
    void SetUp() override {
        static const TempFolder config; // is asked for once in a process
        ::setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
        std::filesystem::remove_all(config.path() / "orvan");
        CommandQueue::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) system_->adoptEnvironment();
    }

    static bool waitUntil(const std::function<bool()>& condition) {
        return platform::runMainLoopUntil(condition, std::chrono::seconds(300));
    }
    static void expectTop(const Visit& visit, const std::string& top) {
        EXPECT_TRUE(waitUntil([&] { return visit.top() == top; })) << visit.top() << "instead of\n" << top;
    }
    // Looked at, with the names, so that the queue's PPD has them.
    static void beforehand(const std::string& queue) {
        const Visit visit(queue);
        expectTop(visit, "Paper Type: [Plain]  of 16\n");
    }
};

constexpr const char* kIvory = "Paper Type: [Ivory]  of 16\n";

TEST_F(DialogTabTest, showsThePapersOfAPrinterThatAnswers) {
    const SimulatedPrinter printer({"--no-snmp"}, documentWith(kPapers));
    addQueue("Office", printer);
    addQueue("Ivory", printer);
    ASSERT_EQ(run({"/usr/sbin/lpadmin", "-p", "Ivory", "-o", "MediaType=CustomType2"}).exitCode, 0);
    const Visit fresh("Office");
    expectTop(fresh, "Paper Type: [Plain]  of 16\n");
    EXPECT_EQ(fresh.dialog.title, "Paper Options");
    const std::string all = tabText(*fresh.dialog.tree);
    const std::string told = all.substr(all.find("Details"));
    EXPECT_EQ(told.substr(0, told.find("The printer told")),
        "Details\n  Tray 1: Plain, A4, 90%\n  Tray 2: Ivory, A4, nearly empty\n  Cyan Toner: 42%\n  ");

    const Visit remembered("Office", "CustomType2");
    expectTop(remembered, kIvory);
    // The tab is never opened.
    Visit unseen("Office", "CustomType2");
    unseen.dialog.isInFront = false;
    EXPECT_TRUE(waitUntil([&] { return unseen.dialog.tree != nullptr; }));
    EXPECT_EQ(unseen.tab->marked().at("MediaType").choice, "CustomType2");

    const Visit byDefault("Ivory");
    expectTop(byDefault, kIvory);

    printer.replaceDocument(documentWith({{"Labels A", "1"}, {"Ivory", "2"}, {"Certificates", "3"}}));
    const Visit otherOrder("Office", "CustomType3");
    expectTop(otherOrder, "No tray holds “Certificates” in A4; Tray 1 holds “Plain” A4, Tray 2 holds “Ivory” "
                          "A4.\nPaper Type: [Certificates]  of 16\n");
    printer.replaceDocument(documentWith({{"Ivory 120", "2"}, {"Certificates", "3"}, {"Labels A", "1"}}));
    const Visit renamed("Office", "CustomType2");
    expectTop(renamed, "Paper Type: [Ivory 120]  of 16\n");
    printer.replaceDocument(documentWith({{"Certificates", "3"}, {"Labels A", "1"}}));
    const Visit removed("Office", "CustomType2");
    expectTop(removed, "Paper Type: [Custom Type 2 (not in the printer\u2019s list)]  of 16\n");
}

TEST_F(DialogTabTest, showsTheStoredPapersOfAPrinterThatIsOff) {
    SimulatedPrinter printer({"--no-snmp"}, documentWith(kPapers));
    addQueue("Office", printer);
    addQueue("New", printer);
    beforehand("Office");
    printer.end();
    platform::runMainLoopUntil([] { return false; }, std::chrono::milliseconds(1100)); // times are seconds
    const Visit off("Office", "CustomType2");
    expectTop(off, std::string("Paper names of TIME; the printer did not answer.\n") + kIvory);
    const Visit never("New", "CustomType2");
    expectTop(never, "The printer has not told its paper names.\n"
                     "Paper Type: [Custom Type 2 (not in the printer\u2019s list)]  of 14\n");
}

TEST_F(DialogTabTest, waitsASecondForAPrinterThatIsSlowOrBusy) {
    const SimulatedPrinter printer({"--no-snmp"}, documentWith(kPapers));
    addGatedQueue("Office", printer);
    shutGate();
    Visit slow("Office", "CustomType2");
    expectTop(slow, "Asking the printer \u2026\n");
    expectTop(slow, "The printer has not told its paper names.\n"
                    "Paper Type: [Custom Type 2 (not in the printer\u2019s list)]  of 14\n");
    // Two dialogs at once, one question; and not under somebody's hand.
    const Visit second("Office", "CustomType2");
    expectTop(second, slow.top());
    slow.dialog.busy = true;
    slow.dialog.focused = &slow.menu("Paper Type:");
    openGate();
    expectTop(second, kIvory);
    EXPECT_NE(slow.top(), kIvory);
    slow.dialog.busy = false;
    expectTop(slow, kIvory);
    ASSERT_NE(slow.dialog.focused, nullptr);
    EXPECT_EQ(dynamic_cast<const platform::Menu&>(*slow.dialog.focused).title().text, "Paper Type:");
    std::vector<PrintJob> jobs;
    EXPECT_EQ(system_->jobs("Office", &jobs), std::nullopt);
    EXPECT_EQ(jobs.size(), 1U);

    // Another job keeps the printer busy.
    int port = 0;
    const auto engaged = listenOnLoopback(1, &port); // takes connections, and never ends one
    const std::string device = "socket://127.0.0.1:" + std::to_string(port);
    ASSERT_EQ(run({"/usr/sbin/lpadmin", "-p", "Office", "-v", device}).exitCode, 0);
    int job = 0;
    const TempFolder folder;
    const std::string document = folder.write("document.ps", "%!PS-Adobe-3.0\nshowpage\n");
    ASSERT_EQ(system_->print("Office", document, {}, &job), std::nullopt);
    ASSERT_TRUE(waitUntil([&] {
        return system_->jobs("Office", &jobs) == std::nullopt && jobs.back().state == IPP_JSTATE_PROCESSING;
    }));
    const Visit busy("Office", "CustomType2");
    expectTop(busy, std::string("Paper names of TIME; the printer is busy with another job.\n") + kIvory);
    EXPECT_EQ(system_->cancelJob(job), std::nullopt);
}

TEST_F(DialogTabTest, tellsTheDialogWhatIsPickedAndUndone) {
    const SimulatedPrinter printer({"--no-snmp"}, documentWith(kPapers));
    addQueue("Office", printer);
    Visit visit("Office");
    expectTop(visit, "Paper Type: [Plain]  of 16\n");
    platform::Menu& papers = visit.menu("Paper Type:");
    EXPECT_EQ(papers.title().withMarker('_'), "Paper _Type:") << "the dialog has p";
    EXPECT_EQ(papers.entries()[3], (platform::MenuEntry{"", "", false, true}));
    EXPECT_FALSE(papers.pick(3)) << "a line";
    EXPECT_TRUE(visit.pick("Paper Type:", "Ivory"));
    EXPECT_EQ(visit.dialog.options["MediaType"], "CustomType2");
    EXPECT_EQ(visit.top(), kIvory) << "which is in the tray";
    EXPECT_TRUE(visit.pick("Paper Type:", "Certificates"));
    const std::string loaded =
        "No tray holds “Certificates” in A4; Tray 1 holds “Plain” A4, Tray 2 holds “Ivory” A4.";
    EXPECT_EQ(visit.top(), loaded + "\nPaper Type: [Certificates]  of 16\n");

    EXPECT_TRUE(visit.pick("Edge to Edge:", "On"));
    EXPECT_TRUE(visit.pick("Paper Type:", "Transparency"));
    EXPECT_TRUE(visit.top().starts_with("Edge to Edge changed from “On” to “Off”. No tray holds "))
        << visit.top();
    EXPECT_NE(visit.top().find("\n<Undo>\n"), std::string::npos);
    EXPECT_EQ(visit.dialog.options["OVNEdgeToEdge"], "Off");
    dynamic_cast<platform::Button&>(*visit.dialog.tree->subviews()[0]->subviews()[1]).press();
    EXPECT_EQ(visit.dialog.options["OVNEdgeToEdge"], "On");
    EXPECT_EQ(visit.dialog.options["MediaType"], "CustomType3");
    EXPECT_EQ(visit.dialog.focused, &papers);

    visit.tab->optionChanged("MediaType", "CustomType2");
    EXPECT_EQ(visit.top(), kIvory);
    visit.tab->printerSelected("");
    EXPECT_EQ(visit.top(), "(no tab)");
    EXPECT_TRUE(visit.tab->marked().empty());
}

// As a person saves it in the tab. What stands in the editor's places.
struct Editor {
    explicit Editor(const Visit& visit) : box(*visit.dialog.tree->subviews()[1]->subviews()[0]) {}

    template <class Kind>
    Kind& at(std::size_t place) const {
        return dynamic_cast<Kind&>(*box.subviews()[place]);
    }
    std::string question() const { return at<platform::TextField>(0).stringValue(); }
    platform::TextEntry& name() const { return at<platform::TextEntry>(1); }
    platform::Button& button() const { return at<platform::Button>(2); }
    platform::Button& cancel() const { return at<platform::Button>(3); }

    platform::View& box;
};

TEST_F(DialogTabTest, savesAndChoosesPresets) {
    const SimulatedPrinter printer({"--no-snmp"}, documentWith(kPapers));
    addQueue("Office", printer);
    {
        Visit visit("Office");
        expectTop(visit, "Paper Type: [Plain]  of 16\n");
        EXPECT_EQ(visit.shown("Preset:"), "Defaults");
        EXPECT_TRUE(visit.pick("Paper Type:", "Ivory"));
        visit.tab->optionChanged("Duplex", "DuplexTumble");
        EXPECT_EQ(visit.shown("Preset:"), "None");

        const Editor editor(visit);
        EXPECT_TRUE(editor.box.isHidden());
        EXPECT_TRUE(visit.pick("Preset:", "Save as …"));
        EXPECT_FALSE(editor.box.isHidden());
        EXPECT_EQ(visit.dialog.focused, &editor.name());
        EXPECT_TRUE(editor.button().press());
        EXPECT_EQ(visit.tab->tree().line(), "A preset needs a name of at most 200 bytes.");
        editor.name().edit(" Ivory, both sides ");
        EXPECT_EQ(editor.button().title().text, "Save");
        editor.name().end();
        EXPECT_TRUE(editor.box.isHidden());
        EXPECT_EQ(visit.shown("Preset:"), "Ivory, both sides");
        EXPECT_EQ(visit.dialog.focused, &visit.menu("Preset:"));

        // Another one, which replaces nothing, is left; the first gets another name.
        EXPECT_TRUE(visit.pick("Preset:", "Save as …"));
        EXPECT_EQ(editor.button().title().text, "Replace");
        editor.name().edit("Other");
        EXPECT_EQ(editor.button().title().text, "Save");
        editor.name().leave();
        EXPECT_FALSE(visit.pick("Preset:", "Other"));
        EXPECT_TRUE(visit.pick("Preset:", "Rename “Ivory, both sides” …"));
        EXPECT_EQ(editor.question(), "Rename “Ivory, both sides” to:");
        editor.name().edit("Ivory");
        EXPECT_TRUE(editor.button().press());
        EXPECT_EQ(visit.shown("Preset:"), "Ivory");
        EXPECT_TRUE(visit.pick("Preset:", "Defaults"));
        EXPECT_EQ(visit.dialog.options["MediaType"], "Plain");
        EXPECT_EQ(visit.dialog.options["Duplex"], "None");
        dynamic_cast<platform::Button&>(*visit.dialog.tree->subviews()[0]->subviews()[1]).press();
        EXPECT_EQ(visit.dialog.options["Duplex"], "DuplexTumble") << "undone";
        EXPECT_EQ(visit.shown("Preset:"), "None");
        visit.tab->accepted();
    }

    // Meanwhile the printer's papers have changed, and so has the document's size.
    const struct {
        Papers papers;
        const char* line;
        const char* paper;
    } cases[] = {
        {{{"Certificates", "2"}, {"Ivory", "5"}},
            "The preset “Ivory” is chosen. No tray holds “Ivory” in A4; Tray 1 holds “Plain” A4, Tray 2 "
            "holds “Certificates” A4.",
            "CustomType5"},
        {{{"Ivory 120", "2"}, {"Certificates", "3"}}, "“Ivory” is now called “Ivory 120”.", "CustomType2"},
        {{{"Certificates", "3"}}, "The printer has no paper “Ivory” any more.", "Plain"},
    };
    for (const auto& [papers, line, paper] : cases) {
        SCOPED_TRACE(line);
        printer.replaceDocument(documentWith(papers));
        Visit visit("Office");
        visit.dialog.size = {842, 1191}; // A3
        ASSERT_TRUE(waitUntil([&] { return visit.tab->tree().hasPanel(); }));
        EXPECT_TRUE(visit.pick("Preset:", "Ivory"));
        EXPECT_EQ(visit.tab->tree().line(), line);
        EXPECT_EQ(visit.tab->marked().at("MediaType").choice, paper);
        EXPECT_EQ(visit.dialog.options["Duplex"], "DuplexTumble");
        EXPECT_EQ(visit.dialog.size.width, 595) << "the preset's";
        dynamic_cast<platform::Button&>(*visit.dialog.tree->subviews()[0]->subviews()[1]).press();
        EXPECT_EQ(visit.dialog.size.width, 842) << "undone";
        EXPECT_EQ(visit.dialog.options["Duplex"], "None");
        visit.dialog.keepsPaper = true;
        EXPECT_TRUE(visit.pick("Preset:", "Ivory"));
        EXPECT_NE(visit.tab->tree().line().find("The size stays A3."), std::string::npos);
        EXPECT_TRUE(visit.pick("Preset:", "Last used"));
        EXPECT_EQ(visit.shown("Preset:"), "Last used");
        EXPECT_EQ(visit.tab->marked().at("Duplex").choice, "DuplexTumble");
    }

    // The program for files begins with what was used last, and can be told another.
    struct Beginning {
        const char* wanted;
        const char* shown;
        const char* line;
    };
    for (const Beginning& c : {Beginning{"", "Last used", "The printer has no paper “Ivory” any more."},
             Beginning{"Ivory", "Ivory", "The printer has no paper “Ivory” any more."},
             Beginning{"Gold", "Defaults", "There is no preset “Gold” for this printer."}}) {
        FakeDialog dialog({});
        const auto tab = DialogTab::create(dialog, c.wanted);
        tab->printerSelected("Office");
        ASSERT_TRUE(waitUntil([&] { return tab->tree().line() == c.line; })) << tab->tree().line();
        EXPECT_NE(tabText(*dialog.tree).find(std::string("Preset: [") + c.shown), std::string::npos);
    }

    // It is deleted, after a question.
    Visit visit("Office");
    ASSERT_TRUE(waitUntil([&] { return visit.tab->tree().hasPanel(); }));
    EXPECT_TRUE(visit.pick("Preset:", "Ivory"));
    EXPECT_TRUE(visit.pick("Preset:", "Delete “Ivory” …"));
    const Editor editor(visit);
    EXPECT_TRUE(editor.name().isHidden());
    EXPECT_TRUE(editor.cancel().press());
    EXPECT_TRUE(visit.pick("Preset:", "Delete “Ivory” …"));
    EXPECT_EQ(editor.question(), "Delete “Ivory”?");
    EXPECT_TRUE(editor.button().press());
    EXPECT_FALSE(visit.pick("Preset:", "Ivory"));
}

} // namespace
} // namespace orvan
