// A printer of a test's own: the program orvan-simulator.
#pragma once

#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

// Custom papers as an office names them: names and types.
using NamedPapers = std::vector<std::pair<std::string, std::string>>;
// A status document that has these, all of them plain, behind what else it has.
std::string statusDocument(const NamedPapers& papers, const std::string& rest = "");

// Runs as long as this object, or until end().
class SimulatedPrinter {
public:
    // Starts it with these arguments, and with --document when there is a document, and waits until it
    // answers. Throws, with what the program said, when it does not.
    explicit SimulatedPrinter(std::vector<std::string> arguments = {},
        const std::optional<std::string>& document = std::nullopt, const Environment& environment = {});
    SimulatedPrinter(const SimulatedPrinter&) = delete;
    SimulatedPrinter& operator=(const SimulatedPrinter&) = delete;

    // Of the status document.
    const std::string& url() const { return url_; }
    // ADDRESS:PORT; empty with --no-snmp.
    const std::string& snmpAgent() const { return snmpAgent_; }
    // Its standard error until now. With --log a request is there before its answer is.
    std::string log() const;

    // What the next request finds, of a printer that was made with a document; absent: no file.
    void replaceDocument(const std::optional<std::string>& document) const;

    // As BackgroundProcess::end().
    int end(int signal = SIGTERM) { return process_->end(signal); }

private:
    std::filesystem::path file(const char* name) const { return folder_.path() / name; }
    void readEnvironment(int output);

    TempFolder folder_;
    std::optional<BackgroundProcess> process_;
    std::string url_;
    std::string snmpAgent_;
};

} // namespace orvan
