// "orvan ticket": what the command filter makes of a status document.
#include "CommandFilter/OVOVGParser.h"
#include "CommandFilter/OVSNMPParser.h"
#include "Tools/Orvan/Command.h"
#include "Tools/Orvan/Input.h"
#include "Tools/Orvan/PropertyListJson.h"
#include "Tools/Orvan/StatusReport.h"
#include "Tools/Orvan/Terminal.h"

#include <unistd.h>

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace orvan {
namespace {

struct TicketArguments {
    std::string file;
    std::vector<std::string> snmp;
    bool json = false;
    bool plist = false;
};

std::string checkObject(const std::string& text) {
    const std::size_t equals = text.find('=');
    const std::string identifier = text.substr(0, equals);
    const bool isDotted =
        !identifier.empty() && identifier.find_first_not_of("0123456789.") == std::string::npos;
    return equals == std::string::npos || !isDotted ? "\"" + text + "\" has not the form OID=VALUE" : "";
}

Ticket responseOf(const std::vector<std::string>& objects) {
    Ticket response;
    for (const std::string& object : objects) {
        const std::size_t equals = object.find('=');
        response.insert_or_assign(object.substr(0, equals), object.substr(equals + 1));
    }
    return response;
}

int writeTicket(const TicketArguments& arguments) {
    std::string error;
    const std::optional<std::string> bytes = readFile(arguments.file, &error);
    if (!bytes) return cannot(error);
    const auto parser = OVOVGParser::initWithData(*bytes, &error);
    if (parser == nullptr) return cannot(arguments.file + " is no status document: " + error);

    Ticket ticket;
    parser->writeToTicket(ticket);
    const Ticket response = responseOf(arguments.snmp);
    OVSNMPParser::initWithSNMPResponse(&response).writeToTicket(ticket);

    const platform::PropertyList list(std::move(ticket));
    if (arguments.json) {
        nlohmann::ordered_json answer{{"schemaVersion", 1}};
        answer.update(jsonFromPropertyList(list));
        std::cout << answer.dump(2) << '\n';
    }
    if (arguments.plist) std::cout << list.writeXML();
    if (!arguments.json && !arguments.plist) writeStatus({list}, isDecorated(STDOUT_FILENO), std::cout);
    return kDone;
}

} // namespace

void addTicketCommand(CLI::App& program, CommandBody& run) {
    const auto arguments = std::make_shared<TicketArguments>();
    CLI::App* command = program.add_subcommand("ticket", "Read a printer's status document");
    command->add_option("FILE", arguments->file, "The status document, XML; - is standard input")->required();
    command->add_option("--snmp", arguments->snmp, "An object that the printer answered; may be repeated")
        ->type_name("OID=VALUE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(checkObject);
    auto* const json = command->add_flag("--json", arguments->json, "Write the ticket as JSON");
    auto* const plist = command->add_flag("--plist", arguments->plist, "Write it as an XML property list");
    plist->excludes(json);
    command->footer("Without --json and --plist the ticket is shown as \"orvan status\" shows it.\n"
                    "Examples:\n"
                    "  orvan ticket status.xml\n"
                    "  orvan fetch http://printer.example/status.xml | orvan ticket --json -");
    command->callback([arguments, &run] { run = [arguments] { return writeTicket(*arguments); }; });
}

} // namespace orvan
