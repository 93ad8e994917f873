#include "CommandFilter/Program/FilterMessages.h"

#include "Formats/OneLine.h"
#include "Formats/TextEncoding.h"

#include <unistd.h>

namespace orvan {
namespace {

constexpr std::size_t kMaximumLine = 2046;

void tell(std::string_view kind, const std::string& text) {
    std::string line = std::string(kind) + ": " + platform::onOneLine(text);
    line = platform::prefixOfUTF8(line, kMaximumLine - 1);
    line += '\n';
    // A scheduler that reads no more has nobody to tell.
    static_cast<void>(!::write(STDERR_FILENO, line.data(), line.size()));
}

} // namespace

void tellDebug(const std::string& text) {
    tell("DEBUG", text);
}

void tellInfo(const std::string& text) {
    tell("INFO", text);
}

void tellWarning(const std::string& text) {
    tell("WARNING", text);
}

void tellError(const std::string& text) {
    tell("ERROR", text);
}

void tellState(char sign, const std::string& reasons) {
    if (!reasons.empty()) tell("STATE", sign + reasons);
}

void tellPPD(const std::string& keyword, const std::string& value) {
    tell("PPD", keyword + '=' + value);
}

void tellAttributes(const std::string& attributes) {
    tell("ATTR", attributes);
}

} // namespace orvan
