#include "Orvan/Terminal.h"

#include "Formats/OneLine.h"
#include "Orvan/Wrapping.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace orvan {
namespace {

constexpr std::size_t kUsualWidth = 80;
constexpr std::size_t kLeastWidth = 40;

// In columns, of what stands on the progress line.
std::size_t shownWidth = 0;

bool isDumb() {
    const char* const terminal = std::getenv("TERM");
    return terminal == nullptr || std::string_view(terminal) == "dumb";
}

// Of a terminal. XBD, section 8.3: COLUMNS is what the person prefers.
std::size_t terminalWidth(int descriptor) {
    const char* const variable = std::getenv("COLUMNS");
    const std::string_view columns = variable != nullptr ? variable : "";
    std::size_t width = 0;
    const auto [end, error] = std::from_chars(columns.begin(), columns.end(), width);
    if (error == std::errc() && end == columns.end() && width > 0) return width;
    winsize size{};
    return ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

} // namespace

std::size_t wrappingWidth(int descriptor) {
    return isatty(descriptor) == 1 ? std::max(terminalWidth(descriptor), kLeastWidth) : 0;
}

bool isDecorated(int descriptor) {
    const char* const noColor = std::getenv("NO_COLOR"); // no-color.org: empty is as if unset
    return (noColor == nullptr || *noColor == '\0') && isatty(descriptor) == 1 && !isDumb();
}

std::string colored(const std::string& text, Color color, bool decorated) {
    if (!decorated) return text;
    return "\033[" + std::to_string(static_cast<int>(color)) + "m" + text + "\033[m";
}

ProgressLine::ProgressLine() {
    if (isatty(STDERR_FILENO) == 0 || isDumb()) return;
    width_ = terminalWidth(STDERR_FILENO) - 1;
}

void ProgressLine::show(const std::string& text) {
    if (width_ == 0 || (text.empty() && shownWidth == 0)) return;
    const std::string whole = platform::onOneLine(text);
    const std::string line(prefixOfColumns(whole, width_));
    const std::size_t columns = columnsOf(line);
    const std::string blanks(shownWidth - std::min(shownWidth, columns), ' ');
    std::cerr << '\r' + line + blanks + (line.empty() ? "\r" : "") << std::flush;
    shownWidth = columns;
}

} // namespace orvan
