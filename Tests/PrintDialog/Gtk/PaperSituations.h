// What the tab shows and what arrives at the printer on good days and bad ones: the real command filter in
// front of a simulated printer whose papers have types in another order than their places.
#pragma once

#include "Tests/PrintDialog/Gtk/Application.h"
#include "Tests/Support/SimulatedPrinter.h"

#include <string>

namespace orvan::test {

inline constexpr const char* kAsks = "ORVAN_SYSTEM_RELEASE=10.9.0";
inline constexpr const char* kRow = "Paper Type:";
inline constexpr const char* kUnlisted = " (not in the printer\u2019s list)";

// Certificates come first and are type 3; Ivory is type 2.
inline const NamedPapers kPapers{{"Certificates", "3"}, {"Ivory", "2"}, {"Labels A", "1"}};

class PaperSituations : public DialogTest {
protected:
    void SetUp() override;

    // A queue whose output goes into a file, and a printer for it.
    void addQueue(const std::string& name, const std::string& url, const std::string& device = "",
        const char* byDefault = "Plain") const;
    bool isQuestionOver(const std::string& queue, std::size_t count = 1) const;
    // The paper type in the bytes of the queue's last job, behind the code.
    std::string printed(const std::string& queue, const std::string& code = "<</MediaType(") const;

    struct Visit {
        const char* name;
        std::string queue = "Office";
        std::string remembered = {}; // the paper type in the application's settings
        bool opensTab = true;
        std::string shown = {};  // in the row, when the tab is opened
        std::string picks = {};  // "" for nothing
        std::string says = {};   // on the tab
        std::string prints = {}; // "" where it is only looked at
    };
    // One application: a dialog that is opened with its settings, looked at, and printed from.
    virtual void visit(const Visit& visit) const;

    // A custom paper is its type, whatever its place, its name or the way to it is.
    void visitOnGoodDays(bool isPublished = false);
    // The names of the last time, with their age; and where there are none, that is said.
    void visitAPrinterThatIsOff();
    // A printer that takes its time, asked for the first time.
    void visitASlowPrinter();
    // Another job keeps the printer busy, so the question waits behind it.
    void visitABusyPrinter();
    // No tray has the paper; or the queue's driver has no choice for it.
    void visitAPrinterWithoutThePaper();
    // The question is held back, so the names of the last time stay.
    void visitBeforeALateAnswer();

private:
    // Makes the printer's names titles in the queue's PPD.
    void publish(const std::string& queue) const;
};

} // namespace orvan::test
