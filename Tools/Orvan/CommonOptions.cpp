#include "Tools/Orvan/CommonOptions.h"

#include "Tools/Orvan/PrinterQuery.h"

#include <cstdlib>
#include <optional>

namespace orvan {
namespace {

std::optional<double> numberIn(const std::string& text) {
    double value = 0;
    return CLI::detail::lexical_cast(text, value) ? std::optional(value) : std::nullopt;
}

} // namespace

CLI::Option* addQueueOption(CLI::App* command, std::string& queue) {
    return command->add_option("-q,--queue", queue, "A queue of the print scheduler")->type_name("QUEUE");
}

void addServerOption(CLI::App* command) {
    command
        ->add_option_function<std::string>(
            "-H,--server", [](const std::string& server) { setenv("CUPS_SERVER", server.c_str(), 1); },
            "The print scheduler to ask (default CUPS_SERVER, or this computer's)")
        ->type_name("HOST[:PORT]")
        ->check([](const std::string& server) { return server.empty() ? "a host is missing" : ""; });
}

void addReleaseOption(CLI::App* command, std::string& release) {
    command->add_option("--release", release, "The system release to stand for (default 10.9.0)")
        ->type_name("R")
        ->check(checkRelease);
}

void addTimeoutOption(CLI::App* command, double& timeout) {
    command->add_option("--timeout", timeout, "How long to wait for the printer's answer (default 10)")
        ->type_name("SECONDS")
        ->check(checkNotNegative);
}

void addJSONFlag(CLI::App* command, bool& json) {
    command->add_flag("--json", json, "Answer in JSON");
}

std::string checkPositive(const std::string& number) {
    return numberIn(number).value_or(0) > 0 ? "" : "\"" + number + "\" is not a number above 0";
}

std::string checkNotNegative(const std::string& number) {
    return numberIn(number).value_or(-1) >= 0 ? "" : "\"" + number + "\" is not a number of 0 or more";
}

} // namespace orvan
