#include "Orvan/CommandLine.h"

#include "Orvan/Commands.h"

#include <CLI/CLI.hpp>

#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

int cannot(const std::string& message) {
    std::cerr << "orvan: " + message + '\n';
    return kNotDone;
}

namespace {

// One line: what is wrong with the arguments, and where to read on.
std::string wrongUsage(const CLI::App* program, const CLI::Error& problem) {
    std::string what = problem.what();
    const std::vector<std::string> unknown = program->remaining();
    if (program->get_subcommands().empty())
        what = unknown.empty() ? "a command is missing" : "there is no command " + unknown.front();
    return "orvan: " + what + " (\"orvan --help\" says more)\n";
}

// What is to be done: a command, and its parser, which knows what was given.
struct Chosen {
    const Command* command = nullptr;
    const CLI::App* parser = nullptr;
};

// "-q,--queue" goes by "--queue".
std::string lastName(const std::string& names) {
    return names.substr(names.rfind(',') + 1);
}

CLI::Option* addArgument(CLI::App& parser, const ArgumentSpec& spec) {
    const std::string name = spec.name;
    if (name.starts_with('-') && spec.value == nullptr) return parser.add_flag(name, spec.text);
    CLI::Option* const option = parser.add_option(name, spec.text);
    option->type_name(spec.value != nullptr ? spec.value : "TEXT");
    option->required(spec.count == ArgumentSpec::Count::required);
    if (spec.count == ArgumentSpec::Count::repeatable)
        option->expected(1, CLI::detail::expected_max_vector_size)->allow_extra_args(false);
    if (spec.check != nullptr) option->check(spec.check);
    return option;
}

void addArguments(CLI::App& parser, const Command& command) {
    std::map<std::string, CLI::Option_group*> groups;
    for (const ArgumentSpec& spec : command.arguments) {
        if (spec.group == nullptr) {
            addArgument(parser, spec);
            continue;
        }
        CLI::Option_group*& group = groups[spec.group];
        if (group == nullptr) group = parser.add_option_group(spec.group);
        addArgument(*group, spec);
        group->require_option(1);
    }
    for (const ArgumentSpec& spec : command.arguments)
        if (spec.excludes != nullptr)
            parser.get_option(lastName(spec.name))->excludes(parser.get_option(spec.excludes));
}

// An option of a group belongs to the group's parser.
const CLI::Option* findOption(const CLI::App& parser, const std::string& name) {
    if (const CLI::Option* const option = parser.get_option_no_throw(name)) return option;
    for (const CLI::App* const group : parser.get_subcommands([](const CLI::App*) { return true; }))
        if (const CLI::Option* const option = group->get_option_no_throw(name)) return option;
    return nullptr;
}

Arguments argumentsOf(const Chosen& chosen) {
    Arguments arguments;
    for (const ArgumentSpec& spec : chosen.command->arguments) {
        const std::string name = lastName(spec.name);
        const CLI::Option* const option = findOption(*chosen.parser, name);
        arguments.set(name, option != nullptr ? option->results() : Arguments::Values());
    }
    return arguments;
}

void addCommand(CLI::App& program, const Command& command, Chosen& chosen) {
    CLI::App* const parser =
        program.add_subcommand(command.name, command.text != nullptr ? command.text : "");
    if (command.text == nullptr) parser->group("");
    if (command.footer != nullptr) parser->footer(command.footer);
    addArguments(*parser, command);
    for (const Command& below : command.below)
        addCommand(*parser, below, chosen);
    if (!command.below.empty()) parser->require_subcommand(1);
    if (command.run != nullptr)
        parser->callback([&command, parser, &chosen] { chosen = {&command, parser}; });
}

} // namespace

int runCommandLine(int argc, const char* const* argv, const char* version) {
    CLI::App program("Paper options of Orvan printers, from the command line.", "orvan");
    program.set_version_flag("--version", std::string("orvan ") + version);
    program.require_subcommand(1);
    program.failure_message(wrongUsage);
    program.footer("Exit codes: 0 done, 1 it could not be done, 2 wrong usage.\n"
                   "\"orvan COMMAND --help\" says more about a command.");
    Chosen chosen;
    for (const Command* const command : kCommands)
        addCommand(program, *command, chosen);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return program.exit(problem) == 0 ? kDone : kWrongUsage;
    }
    const Arguments arguments = argumentsOf(chosen);
    if (findOption(*chosen.parser, "--server") != nullptr && arguments.has("--server"))
        setenv("CUPS_SERVER", arguments.text("--server").c_str(), 1);
    return chosen.command->run(arguments);
}

} // namespace orvan
