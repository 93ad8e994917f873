// "orvan ticket": what the command filter makes of a status document.
#include "CommandFilter/OVOVGParser.h"
#include "CommandFilter/OVSNMPParser.h"
#include "CommandFilter/PrinterWords.h"
#include "Orvan/Commands.h"
#include "Orvan/PropertyListJson.h"
#include "Orvan/StatusReport.h"
#include "Orvan/Terminal.h"
#include "Platform/Input.h"

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

namespace orvan {
namespace {

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

int writeTicket(const Arguments& arguments) {
    const std::string file = arguments.text("FILE");
    const bool json = arguments.has("--json");
    const bool plist = arguments.has("--plist");
    platform::Failure error;
    const std::optional<std::string> bytes = platform::readFile(file, error);
    if (!bytes) return cannot(*error);
    const auto parser = OVOVGParser::initWithData(*bytes, error);
    if (parser == nullptr) return cannot(platform::nameOfInput(file) + " is no status document: " + *error);

    Ticket ticket;
    parser->writeToTicket(ticket);
    const Ticket response = responseOf(arguments.all("--snmp"));
    OVSNMPParser::initWithSNMPResponse(&response).writeToTicket(ticket);

    // What the page shows beside the ticket.
    if (!json && !plist) addPrinterWords(*parser->document(), ticket);
    const platform::PropertyList list(std::move(ticket));
    if (json) {
        nlohmann::ordered_json answer{{"schemaVersion", 1}};
        answer.update(jsonFromPropertyList(list));
        std::cout << jsonText(answer, 2) << '\n';
    }
    if (plist) std::cout << list.writeXML();
    if (!json && !plist) writeStatus({list}, nullptr, isDecorated(STDOUT_FILENO), std::cout);
    return kDone;
}

constexpr ArgumentSpec kTicketArguments[]{
    {.name = "FILE",
        .text = "The status document, XML; - is standard input",
        .count = ArgumentSpec::Count::required},
    {.name = "--snmp",
        .text = "An object that the printer answered; may be repeated",
        .value = "OID=VALUE",
        .count = ArgumentSpec::Count::repeatable,
        .check = checkObject},
    {.name = "--json", .text = "Write the ticket as JSON", .group = "form"},
    {.name = "--plist", .text = "Write it as an XML property list", .group = "form"},
};

} // namespace

const Command kTicketCommand{
    .name = "ticket",
    .text = "Read a printer's status document",
    .arguments = kTicketArguments,
    .footer = "Without --json and --plist the ticket is shown as \"orvan status\" shows it.\n"
              "Examples:\n"
              "  orvan ticket status.xml\n"
              "  orvan fetch http://printer.example/status.xml | orvan ticket --json -",
    .run = writeTicket,
};

} // namespace orvan
