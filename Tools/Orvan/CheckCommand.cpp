#include "Common/Utilities/DeviceChecks.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "Tools/Orvan/Command.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <string>

namespace orvan {
namespace {

struct CheckArguments {
    std::string ppdFile;
    bool json = false;
};

int check(const CheckArguments& arguments) {
    std::string error;
    const std::unique_ptr<DialogPPD> ppd = DialogPPD::open(arguments.ppdFile, &error);
    if (ppd == nullptr) return cannot(error);

    const std::int32_t family = MyCheckPDEContextCUPS(ppd->record());
    const std::string model = getDeviceModelNumber(ppd->record());
    if (arguments.json) {
        const nlohmann::ordered_json answer{{"schemaVersion", 1}, {"family", family}, {"modelNumber", model}};
        std::cout << answer << '\n';
    } else if (family == kPDEContextValid) {
        std::cout << "Orvan printer, model " << model << ": the paper options serve it (status " << family
                  << ").\n";
    } else {
        std::cout << "Not an Orvan printer: the paper options do not serve it (status " << family
                  << "). Model number " << model << ".\n";
    }
    return kDone;
}

} // namespace

void addCheckCommand(CLI::App& program, CommandBody& run) {
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App* command = program.add_subcommand(
        "check", "Say whether a PPD is of a printer that is served, and its model number");
    command->add_option("PPD", arguments->ppdFile, "The printer's PPD file")->required();
    command->add_flag("--json", arguments->json, "Answer in JSON");
    command->footer("Examples:\n"
                    "  orvan check /etc/cups/ppd/Office.ppd\n"
                    "  orvan check --json Orvan-4500.ppd | jq -r .modelNumber");
    command->callback([arguments, &run] { run = [arguments] { return check(*arguments); }; });
}

} // namespace orvan
