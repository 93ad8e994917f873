// An owned expat parser, shared by what reads XML here.
#pragma once

#include <expat.h>

#include <memory>
#include <string>
#include <string_view>

namespace platform {

struct ExpatParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ExpatParser = std::unique_ptr<XML_ParserStruct, ExpatParserDeleter>;

// "line 3, column 7" of what the parser is at, both counted from 1. Expat counts further from 2.9 on, by
// other names.
inline std::string expatPosition(XML_Parser parser) {
#if XML_MAJOR_VERSION > 2 || XML_MINOR_VERSION >= 9
    const auto line = XML_GetCurrentLineNumber64(parser);
    const auto column = XML_GetCurrentColumnNumber64(parser);
#else
    const auto line = XML_GetCurrentLineNumber(parser);
    const auto column = XML_GetCurrentColumnNumber(parser);
#endif
    return "line " + std::to_string(line) + ", column " + std::to_string(column + 1);
}

} // namespace platform
