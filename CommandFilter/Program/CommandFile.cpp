#include "CommandFilter/Program/CommandFile.h"

namespace orvan {
namespace {

constexpr std::string_view kHeader = "#CUPS-COMMAND";
constexpr std::string_view kUserName = " username=";
constexpr std::string_view kPassword = " password=";

std::string_view nextLine(std::string_view& text) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(line.size() < text.size() ? line.size() + 1 : line.size());
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

void readCommand(std::string_view line, CommandFile& file) {
    const std::string_view name = line.substr(0, line.find(' '));
    if (name.empty() || name.starts_with('#')) return;
    file.commands.emplace_back(name);

    std::string_view rest = line.substr(name.size());
    const std::size_t password = rest.find(kPassword);
    if (file.password || password == std::string_view::npos) return;
    file.password = rest.substr(password + kPassword.size());
    rest = rest.substr(0, password);
    if (const std::size_t user = rest.find(kUserName); user != std::string_view::npos)
        file.user = rest.substr(user + kUserName.size());
}

} // namespace

std::optional<CommandFile> readCommandFile(std::string_view text) {
    if (!nextLine(text).starts_with(kHeader)) return std::nullopt;
    CommandFile file;
    while (!text.empty())
        readCommand(nextLine(text), file);
    return file;
}

} // namespace orvan
