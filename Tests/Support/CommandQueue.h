// Tests with queues whose command filter is the real one.
#pragma once

#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/SimulatedPrinter.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace orvan {

// Replaces the first occurrence; a failure of the test when there is none.
void replace(std::string& text, const std::string& from, const std::string& to);

// A printing system of the test's own that has the command filter.
class CommandQueue : public testing::Test {
protected:
    void SetUp() override;
    virtual SchedulerFolderOptions folderOptions() const;

    // The driver's own PPD, but for the places of the filter and of the printer.
    static std::string queuePPD(
        const std::string& filter, const std::string& url, const std::string& agent = "127.0.0.1:9");
    // A queue with that PPD.
    void addQueue(const std::string& name, const std::string& filter, const std::string& url,
        const std::string& agent = "127.0.0.1:9") const;
    void addQueue(const std::string& name, const SimulatedPrinter& printer) const {
        addQueue(name, "commandtoorvan", printer.url(), printer.snmpAgent());
    }

    // One whose filter asks nobody while the gate is shut, which it is not at first.
    void addGatedQueue(const std::string& name, const SimulatedPrinter& printer) const;
    void shutGate() const { gate_.write("shut", ""); }
    void openGate() const { std::filesystem::remove(gate_.path() / "shut"); }

    // The variables by which clients find the system, and English.
    Environment environment() const;
    ProgramEnd run(const std::vector<std::string>& command, const Environment& more = {}) const;
    // A command that asks printers gets all the time that a busy machine needs.
    ProgramEnd orvan(std::vector<std::string> arguments, const Environment& more = {}) const;

    std::unique_ptr<PrintingSystem> system_;

private:
    TempFolder gate_;
};

} // namespace orvan
