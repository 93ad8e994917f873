#include "Formats/PropertyList.h"
#include "Orvan/Commands.h"
#include "Orvan/PropertyListJson.h"
#include "Platform/Input.h"

#include <iostream>
#include <optional>
#include <string>

namespace orvan {
namespace {

int convert(const Arguments& arguments) {
    const std::string file = arguments.text("FILE");
    platform::Failure error;
    const std::optional<std::string> bytes = platform::readFile(file, error);
    if (!bytes) return cannot(*error);
    const std::optional<platform::PropertyList> list = platform::PropertyList::read(*bytes, error);
    if (!list) return cannot(platform::nameOfInput(file) + " is no property list: " + *error);
    if (arguments.has("--xml"))
        std::cout << list->writeXML();
    else if (arguments.has("--binary"))
        std::cout << list->writeBinary();
    else
        std::cout << jsonText(jsonFromPropertyList(*list), 2) << '\n';
    return kDone;
}

constexpr ArgumentSpec kPlistArguments[]{
    {.name = "FILE",
        .text = "The property list: XML, binary, or text; - is standard input",
        .count = ArgumentSpec::Count::required},
    {.name = "--json", .text = "Write JSON (the default)", .group = "form"},
    {.name = "--xml", .text = "Write the XML form", .group = "form"},
    {.name = "--binary", .text = "Write the binary form", .group = "form"},
};

} // namespace

const Command kPlistCommand{
    .name = "plist",
    .text = "Convert a property list, for example a printer's answer",
    .arguments = kPlistArguments,
    .footer = "In JSON a date is {\"date\": \"2013-07-09T10:00:00Z\"}, data {\"data\": \"base 64\"}.\n"
              "Examples:\n"
              "  orvan plist answer.plist\n"
              "  orvan chunks decode com.orvan.DeviceStatus --ppd Office.ppd | orvan plist --xml -",
    .run = convert,
};

} // namespace orvan
