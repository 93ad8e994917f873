#include "Common/Utilities/DeviceChecks.h"
#include "Orvan/Commands.h"
#include "Orvan/CommonOptions.h"
#include "Orvan/PPDArgument.h"
#include "Orvan/PropertyListJson.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <string>

namespace orvan {
namespace {

int check(const Arguments& arguments) {
    platform::Failure error;
    const std::unique_ptr<DialogPPD> ppd = openPPD(arguments.text("PPD"), error);
    if (ppd == nullptr) return cannot(*error);

    const std::int32_t family = MyCheckPDEContextCUPS(ppd->record());
    const std::string model = getDeviceModelNumber(ppd->record());
    if (arguments.has("--json")) {
        const nlohmann::ordered_json answer{{"schemaVersion", 1}, {"family", family}, {"modelNumber", model}};
        std::cout << jsonText(answer) << '\n';
    } else if (family == kPDEContextValid) {
        std::cout << "Orvan printer, model " << model << ": the paper options serve it (status " << family
                  << ").\n";
    } else {
        std::cout << "Not an Orvan printer: the paper options do not serve it (status " << family
                  << "). Model number " << model << ".\n";
    }
    return kDone;
}

constexpr ArgumentSpec kCheckArguments[]{
    {.name = "PPD",
        .text = "The printer's PPD file; - is standard input",
        .count = ArgumentSpec::Count::required},
    kJSONFlag,
};

} // namespace

const Command kCheckCommand{
    .name = "check",
    .text = "Say whether a PPD is of a printer that is served, and its model number",
    .arguments = kCheckArguments,
    .footer = "Examples:\n"
              "  orvan check /etc/cups/ppd/Office.ppd\n"
              "  orvan check --json Orvan-4500.ppd | jq -r .modelNumber",
    .run = check,
};

} // namespace orvan
