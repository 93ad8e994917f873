#include "BiDi/Common/SupportedCommands.h"

#include "Formats/Unicode.h"

#include <string_view>

namespace orvan {

std::optional<CommandList> supportedCommandsInPPD(ppd_file_t* ppd) {
    const ppd_attr_t* const attribute = ppdFindAttr(ppd, "cupsCommands", nullptr);
    if (attribute == nullptr || attribute->value == nullptr) return std::nullopt;
    std::string_view rest = attribute->value;
    if (platform::findInvalidUTF8(rest) != std::string_view::npos) return std::nullopt;

    CommandList commands;
    for (auto space = rest.find(' '); space != std::string_view::npos; space = rest.find(' ')) {
        commands.emplace_back(rest.substr(0, space));
        rest.remove_prefix(space + 1);
    }
    commands.emplace_back(rest);
    return commands;
}

} // namespace orvan
