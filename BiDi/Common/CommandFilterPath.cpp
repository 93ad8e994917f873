#include "BiDi/Common/CommandFilterPath.h"

#include "BiDi/WhiteSpace.h"
#include "Formats/Unicode.h"
#include "Platform/PMPrinter.h"

#include <string_view>

namespace orvan {
namespace {

// isspace of the C locale.
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

bool isForCommandFiles(std::string_view filter) {
    constexpr std::string_view type = platform::kCommandFileType;
    return filter.starts_with(type) && filter.size() > type.size() &&
           kWhiteSpace.find(filter[type.size()]) != std::string_view::npos;
}

} // namespace

std::optional<std::string> pathForCommandFilterInPPD(ppd_file_t* ppd) {
    for (const ppd_attr_t* filter = ppdFindAttr(ppd, "cupsFilter2", nullptr); filter != nullptr;
         filter = ppdFindNextAttr(ppd, "cupsFilter2", nullptr)) {
        const std::string_view value = filter->value != nullptr ? filter->value : "";
        if (!isForCommandFiles(value) || platform::findInvalidUTF8(value) != std::string_view::npos) continue;
        PieceReader pieces(value);
        std::string_view last;
        while (pieces.next(&last, PieceReader::At::everySeparator)) {
        }
        return std::string(last);
    }
    return std::nullopt;
}

} // namespace orvan
