#include "Platform/PropertyList.h"
#include "Tools/Orvan/Command.h"
#include "Tools/Orvan/Input.h"
#include "Tools/Orvan/PropertyListJson.h"

#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace orvan {
namespace {

struct PlistArguments {
    std::string file;
    bool json = false; // the default as well
    bool xml = false;
    bool binary = false;
};

int convert(const PlistArguments& arguments) {
    std::string error;
    const std::optional<std::string> bytes = readFile(arguments.file, &error);
    if (!bytes) return cannot(error);
    const std::optional<platform::PropertyList> list = platform::PropertyList::read(*bytes, &error);
    if (!list) return cannot(arguments.file + " is no property list: " + error);
    if (arguments.xml)
        std::cout << list->writeXML();
    else if (arguments.binary)
        std::cout << list->writeBinary();
    else
        std::cout << jsonFromPropertyList(*list).dump(2) << '\n';
    return kDone;
}

} // namespace

void addPlistCommand(CLI::App& program, CommandBody& run) {
    const auto arguments = std::make_shared<PlistArguments>();
    CLI::App* command =
        program.add_subcommand("plist", "Convert a property list, for example a printer's answer");
    command
        ->add_option("FILE", arguments->file, "The property list: XML, binary, or text; - is standard input")
        ->required();
    auto* const json = command->add_flag("--json", arguments->json, "Write JSON (the default)");
    auto* const xml = command->add_flag("--xml", arguments->xml, "Write the XML form");
    auto* const binary = command->add_flag("--binary", arguments->binary, "Write the binary form");
    xml->excludes(json, binary);
    binary->excludes(json);
    command->footer("In JSON a date is {\"date\": \"2013-07-09T10:00:00Z\"}, data {\"data\": \"base 64\"}.\n"
                    "Examples:\n"
                    "  orvan plist answer.plist\n"
                    "  orvan chunks decode com.orvan.DeviceStatus --ppd Office.ppd | orvan plist --xml -");
    command->callback([arguments, &run] { run = [arguments] { return convert(*arguments); }; });
}

} // namespace orvan
