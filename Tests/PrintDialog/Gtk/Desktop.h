// A desktop of the tests' own: a display without a screen, a private printing system, and GTK applications
// that know nothing of the paper options but load GTK's modules as every application does.
#pragma once

#include "TestBed/PrintingSystem/PrintingSystem.h"
#include "Tests/Support/Processes.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvan::test {

// The module of this build.
std::filesystem::path builtModule();

// An X server of its own; ends with this.
class Display {
public:
    // Null, and why in *problem, when there is none to be had.
    static std::unique_ptr<Display> start(std::string* problem);
    ~Display();
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    const std::string& name() const { return name_; }

private:
    explicit Display(int process, std::string name) : process_(process), name_(std::move(name)) {}
    int process_;
    std::string name_;
};

// Both, once a test. `skipReason` says what this machine lacks; then the rest is not there.
struct Desktop {
    std::string skipReason;
    std::unique_ptr<Display> display;
    std::unique_ptr<PrintingSystem> printing;

    // With the queues "Office" and "Annex" of Orvan printers and "Other" of another maker's.
    static Desktop start(const PrintingSystemOptions& options = {});

    // What an application finds: the display, the printing system, folders of its own, and nothing of the
    // session in which the test runs.
    Environment environment() const;

    // Runs the body in a process of its own, as an application that has just started: it has the environment
    // above, the module and `environment` ("NAME=VALUE"), GTK is not initialised. Answers
    // whether no expectation of the body failed and it ended by itself.
    bool runApplication(const std::vector<std::string>& environment, const std::function<void()>& body,
        const std::filesystem::path& module = builtModule()) const;
};

// For an application in which GTK's print back end loses memory by itself.
void doNotLookForLeaks();
// What the process wrote to the system log so far, a line each. The log of the machine gets nothing of it.
std::vector<std::string> systemLogLines();
// What GTK complained of so far (warnings and criticals that the paper options' code or ours could be blamed
// for).
std::vector<std::string> gtkComplaints();

} // namespace orvan::test
