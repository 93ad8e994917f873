#include "Orvan/CommandHelp.h"

#include "Orvan/Wrapping.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <utility>

namespace orvan {
namespace {

constexpr const char* kProgramText = "Paper options of Orvan printers, from the command line.";
constexpr const char* kProgramFooter = "Exit codes: 0 done, 1 it could not be done, 2 wrong usage.\n"
                                       "\"orvan COMMAND --help\" says more about a command.";
constexpr ArgumentSpec kHelpFlag{.name = "-h,--help", .text = "Show this help and end"};
constexpr ArgumentSpec kVersionFlag{.name = "--version", .text = "Show the version and end"};

using Rows = std::vector<std::pair<std::string, std::string>>; // what stands on the left and on the right

bool isOption(const ArgumentSpec& spec) {
    return spec.name[0] == '-';
}

std::string inWords(const std::vector<std::string>& words, const char* conjunction) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) text.append(i + 1 < words.size() ? ", " : std::string(" ") + conjunction + " ");
        text += words[i];
    }
    return text;
}

std::string leftOf(const ArgumentSpec& spec) {
    std::string left = spec.name;
    if (spec.value != nullptr) left.append(" ").append(spec.value);
    return left + (spec.count == ArgumentSpec::Count::repeatable ? " ..." : "");
}

std::string usage(const std::string& path, const Command* command, bool hasCommands) {
    std::string text = "Usage: " + path + (hasCommands ? " COMMAND" : " [OPTIONS]");
    if (command != nullptr)
        for (const ArgumentSpec& spec : command->arguments)
            if (!isOption(spec)) text.append(" ").append(spec.name);
    return text;
}

// Two columns of text, or, where they do not fit side by side, the right one below the left one.
std::string table(const char* heading, const Rows& rows, std::size_t width) {
    constexpr std::size_t kColumn = 30;
    constexpr std::size_t kIndent = 6;
    const bool isNarrow = width > 0 && width < 2 * kColumn;
    std::string text = rows.empty() ? "" : std::string("\n") + heading + ":\n";
    for (const auto& [left, right] : rows) {
        const std::string start = "  " + left;
        if (isNarrow) {
            text.append(start).append("\n").append(kIndent, ' ');
            text.append(wrapped(right, width, kIndent, kIndent)).append("\n");
            continue;
        }
        const std::size_t used = std::max(kColumn, columnsOf(start) + 2);
        text.append(start).append(used - columnsOf(start), ' ');
        text.append(wrapped(right, width, kColumn, used)).append("\n");
    }
    return text;
}

// Each line by itself, its further ones below its beginning.
std::string wrappedLines(const std::string& text, std::size_t width) {
    constexpr std::size_t kHang = 4;
    std::istringstream stream(text);
    std::string lines;
    for (std::string line; std::getline(stream, line);)
        lines += wrapped(line, width, std::min(line.find_first_not_of(' '), line.size()) + kHang) + '\n';
    return lines;
}

// A sentence about each group of options.
std::string groupsOf(const Command& command) {
    std::map<std::string, std::vector<std::string>> groups;
    for (const ArgumentSpec& spec : command.arguments)
        if (spec.group != nullptr) groups[spec.group].push_back(lastName(spec));
    std::string text;
    for (const auto& [group, names] : groups)
        text.append("At most one of ").append(inWords(names, "and")).append(" can be given.\n");
    return text;
}

} // namespace

bool isFlag(const ArgumentSpec& spec) {
    return isOption(spec) && spec.value == nullptr;
}

std::string lastName(const ArgumentSpec& spec) {
    const std::string names = spec.name;
    return names.substr(names.rfind(',') + 1);
}

bool isNamed(const ArgumentSpec& spec, std::string_view word) {
    const std::string names = std::string(",") + spec.name + ",";
    return names.find("," + std::string(word) + ",") != std::string::npos;
}

std::string listOf(const std::vector<const Command*>& commands, const char* conjunction) {
    std::vector<std::string> names;
    for (const Command* const command : commands)
        if (command->text != nullptr) names.emplace_back(command->name);
    return inWords(names, conjunction);
}

std::string helpText(const std::string& path, const Command* command,
    const std::vector<const Command*>& below, std::size_t width) {
    Rows operands;
    Rows options{{leftOf(kHelpFlag), kHelpFlag.text}};
    if (command == nullptr) options.emplace_back(leftOf(kVersionFlag), kVersionFlag.text);
    if (command != nullptr)
        for (const ArgumentSpec& spec : command->arguments)
            (isOption(spec) ? options : operands).emplace_back(leftOf(spec), spec.text);
    Rows commands;
    for (const Command* const other : below)
        if (other->text != nullptr) commands.emplace_back(other->name, other->text);

    const char* const purpose = command != nullptr ? command->text : kProgramText;
    const char* const footer = command != nullptr ? command->footer : kProgramFooter;
    std::string text;
    if (purpose != nullptr) text += wrappedLines(purpose, width);
    text += wrappedLines(usage(path, command, !below.empty()), width);
    text += table("Arguments", operands, width) + table("Options", options, width);
    if (command != nullptr) text += wrappedLines(groupsOf(*command), width);
    text += table("Commands", commands, width);
    if (footer != nullptr) text += '\n' + wrappedLines(footer, width);
    return text;
}

} // namespace orvan
