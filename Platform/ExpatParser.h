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

// "line 3, column 7" of what the parser is at, both counted from 1.
inline std::string expatPosition(XML_Parser parser) {
    return "line " + std::to_string(XML_GetCurrentLineNumber(parser)) + ", column " +
           std::to_string(XML_GetCurrentColumnNumber(parser) + 1);
}

} // namespace platform
