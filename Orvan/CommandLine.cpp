#include "Orvan/CommandLine.h"

#include "Formats/OneLine.h"
#include "Orvan/CommandHelp.h"
#include "Orvan/Commands.h"
#include "Orvan/Terminal.h"
#include "Orvan/Wrapping.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

void say(const std::string& message) {
    const std::string start = "orvan: ";
    std::cerr << wrapped(start + message, wrappingWidth(STDERR_FILENO), start.size()) + '\n';
}

int cannot(const std::string& message) {
    say(message);
    return kNotDone;
}

namespace {

// Each parser's command; the program's own has none.
using CommandsOfParsers = std::map<const CLI::App*, const Command*>;

// What is to be done, as far as the words say.
struct Chosen {
    const CLI::App* parser = nullptr;
    const Command* command = nullptr; // null when no command was named
    std::string path;                 // "orvan chunks encode"
};

// Every word is taken; which of them make no sense is said by problemWith(), in words of this program's own.
void addArgument(CLI::App& parser, const ArgumentSpec& spec) {
    if (isFlag(spec))
        parser.add_flag(spec.name)->disable_flag_override();
    else
        parser.add_option(spec.name)->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

void addCommand(CLI::App& above, const Command& command, CommandsOfParsers& commands) {
    CLI::App* const parser = above.add_subcommand(command.name);
    commands.emplace(parser, &command);
    parser->allow_extras()->require_subcommand(0, 1);
    for (const ArgumentSpec& spec : command.arguments)
        addArgument(*parser, spec);
    for (const Command& below : command.below)
        addCommand(*parser, below, commands);
}

// No command.
Chosen chosenOf(const CLI::App& program) {
    return {.parser = &program, .command = nullptr, .path = program.get_name()};
}

Chosen chosenIn(const CLI::App& program, const CommandsOfParsers& commands) {
    Chosen chosen = chosenOf(program);
    for (auto named = program.get_subcommands(); !named.empty(); named = chosen.parser->get_subcommands()) {
        chosen.parser = named.front();
        chosen.command = commands.at(named.front());
        chosen.path.append(" ").append(chosen.command->name);
    }
    return chosen;
}

std::vector<const Command*> commandsBelow(const Chosen& chosen) {
    if (chosen.command == nullptr) return {std::begin(kCommands), std::end(kCommands)};
    std::vector<const Command*> below;
    for (const Command& command : chosen.command->below)
        below.push_back(&command);
    return below;
}

Arguments argumentsOf(const Chosen& chosen) {
    Arguments arguments;
    for (const ArgumentSpec& spec : chosen.command->arguments) {
        const std::string name = lastName(spec);
        arguments.set(name, chosen.parser->get_option(name)->results());
    }
    return arguments;
}

// What is wrong with a word that is no argument of the command.
std::string problemWithWord(const Chosen& chosen, const std::string& word) {
    if (word.starts_with('-') && word != "-")
        return "there is no option " + platform::onOneLine(word.substr(0, word.find('=')));
    if (!commandsBelow(chosen).empty()) return "there is no command " + platform::onOneLine(word);
    return '"' + platform::onOneLine(word) + '"' + " is one argument too many";
}

// What is wrong with what was given for the argument.
std::string problemWith(const ArgumentSpec& spec, const Arguments::Values& values) {
    const std::string name = lastName(spec);
    if (values.empty()) return spec.count == ArgumentSpec::Count::required ? name + " is missing" : "";
    if (values.size() > 1 && !isFlag(spec) && spec.count != ArgumentSpec::Count::repeatable)
        return name + " was given more than once";
    for (const std::string& value : values)
        if (const std::string problem = spec.check != nullptr ? spec.check(value) : ""; !problem.empty())
            return name + ": " + platform::onOneLine(problem);
    return {};
}

// The first two options of one group that were both given.
std::string problemWithGroups(const Command& command, const Arguments& arguments) {
    std::map<std::string, std::string> given;
    for (const ArgumentSpec& spec : command.arguments) {
        if (spec.group == nullptr || !arguments.has(lastName(spec))) continue;
        const auto [first, isFirst] = given.emplace(spec.group, lastName(spec));
        if (!isFirst) return first->second + " and " + lastName(spec) + " exclude each other";
    }
    return {};
}

// What is wrong with words that the parser took.
std::string problemWith(const Chosen& chosen) {
    std::vector<std::string> extras = chosen.parser->remaining();
    std::erase(extras, "--");
    if (!extras.empty()) return problemWithWord(chosen, extras.front());
    if (chosen.command == nullptr || chosen.command->run == nullptr)
        return "a command is missing: " + listOf(commandsBelow(chosen), "or");
    const Arguments arguments = argumentsOf(chosen);
    for (const ArgumentSpec& spec : chosen.command->arguments)
        if (std::string problem = problemWith(spec, arguments.all(lastName(spec))); !problem.empty())
            return problem;
    return problemWithGroups(*chosen.command, arguments);
}

// What is wrong with words that the parser did not take: a value too many, or one too few at their end.
std::string problemWithValues(const Chosen& chosen, const std::vector<std::string>& words) {
    for (const std::string& word : words)
        for (const ArgumentSpec& spec : chosen.command->arguments)
            if (isFlag(spec) && word.starts_with(lastName(spec) + '='))
                return lastName(spec) + " takes no value";
    for (const ArgumentSpec& spec : chosen.command->arguments)
        if (!isFlag(spec) && isNamed(spec, words.back()))
            return words.back() + " needs a value: " + words.back() + ' ' + spec.value;
    return "a value is missing behind " + platform::onOneLine(words.back());
}

int refuse(const Chosen& chosen, const std::string& problem) {
    say(problem + " (\"" + chosen.path + " --help\" says more)");
    return kWrongUsage;
}

// "--queue=" has an empty value, which the parser would look for in the next word.
std::vector<std::string> wordsOf(int argc, const char* const* argv) {
    std::vector<std::string> words;
    bool mayBeOption = true;
    for (std::string word : std::vector<std::string>(argv + std::min(argc, 1), argv + argc)) {
        mayBeOption = mayBeOption && word != "--";
        const bool hasEmptyValue = mayBeOption && word.starts_with("--") && word.find('=') == word.size() - 1;
        if (hasEmptyValue) word.pop_back();
        words.push_back(std::move(word));
        if (hasEmptyValue) words.emplace_back();
    }
    return words;
}

} // namespace

int runCommandLine(int argc, const char* const* argv, const char* version) {
    CLI::App program("", "orvan");
    program.set_version_flag("--version", "");
    program.allow_extras()->require_subcommand(0, 1);
    CommandsOfParsers commands;
    for (const Command* const command : kCommands)
        addCommand(program, *command, commands);
    const std::vector<std::string> words = wordsOf(argc, argv);
    try {
        program.parse(std::vector<std::string>(words.rbegin(), words.rend()));
    } catch (const CLI::CallForHelp&) {
        const Chosen chosen = chosenIn(program, commands);
        std::cout << helpText(
            chosen.path, chosen.command, commandsBelow(chosen), wrappingWidth(STDOUT_FILENO));
        return kDone;
    } catch (const CLI::CallForVersion&) {
        std::cout << "orvan " << version << '\n';
        return kDone;
    } catch (const CLI::ParseError&) {
        const Chosen chosen = chosenIn(program, commands);
        return refuse(chosen, problemWithValues(chosen, words));
    }
    // What stands before a command is the program's.
    const Chosen chosen = program.remaining().empty() ? chosenIn(program, commands) : chosenOf(program);
    if (const std::string problem = problemWith(chosen); !problem.empty()) return refuse(chosen, problem);
    const Arguments arguments = argumentsOf(chosen);
    if (arguments.knows("--server") && arguments.has("--server"))
        setenv("CUPS_SERVER", arguments.text("--server").c_str(), 1);
    return chosen.command->run(arguments);
}

} // namespace orvan
