// An application that prints, and a person at it. It has GTK's public interface and what is on the screen.
#pragma once

#include "Tests/PrintDialog/Gtk/Desktop.h"

#include <gtest/gtest.h>
#include <gtk/gtkunixprint.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace orvan::test {

// Runs the main loop until the condition holds; false when it does not within five minutes.
bool waitUntil(const std::function<bool()>& condition);
// Runs the main loop until it has nothing to do, and for at least this long.
void letPass(std::chrono::milliseconds time);
// The same, and answers the longest time in which the main loop did not get round. Whoever waits for a
// scheduler that does not answer takes ten seconds for it.
std::chrono::steady_clock::duration longestTurn(std::chrono::milliseconds time);
inline constexpr std::chrono::seconds kHeldUp{8};

using Settings = std::map<std::string, std::string>;

// One print dialog.
class OpenDialog {
public:
    // Shows the dialog with the settings that an application remembers ("printer", "cups-MediaType" ...).
    explicit OpenDialog(const Settings& remembered);
    // As when the application closes it.
    ~OpenDialog();
    OpenDialog(const OpenDialog&) = delete;
    OpenDialog& operator=(const OpenDialog&) = delete;

    GtkPrintUnixDialog* dialog() const { return dialog_; }

    // Chooses a printer in the list and waits until the dialog has it.
    void selectPrinter(const std::string& queue) const;
    std::string selectedPrinter() const;

    // The names of the tabs that can be seen.
    std::vector<std::string> tabs() const;
    bool waitForTab(const std::string& name);
    // Brings a tab to the front, as by a click on it.
    void openTab(const std::string& name);

    // The pop-ups of the front tab, each by the text of its label.
    std::map<std::string, GtkWidget*> popUps() const;
    // Whatever the label of the front tab is for; null when there is none.
    GtkWidget* controlOf(const std::string& label) const;
    std::string shownIn(const std::string& label) const;
    std::vector<std::string> choicesOf(const std::string& label) const;
    // Picks an entry of a pop-up of the front tab.
    void pick(const std::string& label, const std::string& choice);
    // Clicks a button of the front tab; false when none that can be seen has that text.
    bool press(const std::string& text) const;
    // Writes into the entry of the front tab.
    void type(const std::string& text) const;
    // Unfolds what is folded away on the front tab.
    void unfold() const;
    // Whether a text of the front tab contains this.
    bool says(const std::string& text) const;

    // Into the folder that the environment variable ORVAN_PICTURES names, as NAME.png; nothing without it.
    void keepPicture(const std::string& name) const;

    // Presses Print and sends the file, as applications do. Answers the scheduler's word on it, "" for
    // accepted.
    std::string print(const std::filesystem::path& file);

    GtkWidget* frontPage() const;

private:
    GtkPrintUnixDialog* dialog_;
};

inline constexpr const char* kTab = "Paper Options";

// A desktop, and a document to print in its applications.
class DialogTest : public ::testing::Test {
protected:
    void SetUp() override { start({}); }
    void start(const PrintingSystemOptions& options);

    // Runs an application, which must not be heard of on its terminal, and whose panels must all end.
    void inApplication(const std::function<void()>& body, const std::vector<std::string>& environment = {},
        const std::filesystem::path& module = builtModule()) const;

    std::vector<PrintJob> jobs(const std::string& queue) const;

    Desktop desktop_;
    std::filesystem::path document_;
};

} // namespace orvan::test
