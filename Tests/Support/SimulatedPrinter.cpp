#include "Tests/Support/SimulatedPrinter.h"

#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace orvan {
namespace {

constexpr const char* kDocument = "status.xml";
constexpr const char* kLog = "log";

// The value of `name` in the program's lines for a shell; empty when it is unset there.
std::string exported(const std::string& lines, const std::string& name) {
    const std::string before = "export " + name + "='";
    const std::size_t start = lines.find(before);
    if (start == std::string::npos) return {};
    const std::size_t value = start + before.size();
    return lines.substr(value, lines.find('\'', value) - value);
}

} // namespace

std::string statusDocument(const NamedPapers& papers, const std::string& rest) {
    std::string text = "<status>" + rest + "<customPaperTypes><printer>";
    for (const auto& [name, type] : papers)
        text.append("<customPaperType><name>")
            .append(name)
            .append("</name><type>")
            .append(type)
            .append("</type><baseClass>Plain</baseClass></customPaperType>");
    return text + "</printer></customPaperTypes></status>";
}

SimulatedPrinter::SimulatedPrinter(std::vector<std::string> arguments,
    const std::optional<std::string>& document, const Environment& environment) {
    if (document) {
        replaceDocument(document);
        arguments.insert(arguments.end(), {"--document", file(kDocument).string()});
    }
    arguments.insert(arguments.begin(), ORVAN_SIMULATOR);
    const std::string errors = file(kLog).string();
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const platform::FileDescriptor output(ends[0]);
    platform::FileDescriptor input(ends[1]);
    process_.emplace(arguments, [&] {
        changeEnvironment(environment);
        dup2(input.get(), STDOUT_FILENO);
        dup2(open(errors.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), STDERR_FILENO);
    });
    input.reset();
    readEnvironment(output.get());
}

void SimulatedPrinter::readEnvironment(int output) {
    std::string lines;
    std::array<char, 512> buffer{};
    for (ssize_t size = 1; size > 0 && lines.find("ORVAN_SIMULATOR_SNMP") == std::string::npos;) {
        size = read(output, buffer.data(), buffer.size());
        if (size > 0) lines.append(buffer.data(), static_cast<std::size_t>(size));
    }
    url_ = exported(lines, "ORVAN_SIMULATOR_URL");
    snmpAgent_ = exported(lines, "ORVAN_SIMULATOR_SNMP");
    if (!url_.empty()) return;
    end();
    throw std::runtime_error("The simulated printer did not start: " + log());
}

std::string SimulatedPrinter::log() const {
    return contents(file(kLog));
}

void SimulatedPrinter::replaceDocument(const std::optional<std::string>& document) const {
    if (document)
        std::filesystem::rename(folder_.write("new", *document), file(kDocument));
    else
        std::filesystem::remove(file(kDocument));
}

} // namespace orvan
