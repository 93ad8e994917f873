#include "Orvan/Terminal.h"

#include "Formats/OneLine.h"
#include "Formats/TextEncoding.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string_view>

namespace orvan {
namespace {

constexpr std::size_t kUsualWidth = 80;

// Of what stands on the progress line.
std::size_t shownWidth = 0;

bool isDumb() {
    const char* const terminal = std::getenv("TERM");
    return terminal == nullptr || std::string_view(terminal) == "dumb";
}

} // namespace

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
    winsize size{};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    width_ = (isKnown ? size.ws_col : kUsualWidth) - 1;
}

void ProgressLine::show(const std::string& text) {
    if (width_ == 0 || (text.empty() && shownWidth == 0)) return;
    const std::string line(platform::prefixOfUTF8(platform::onOneLine(text), width_));
    const std::string blanks(shownWidth - std::min(shownWidth, line.size()), ' ');
    std::cerr << '\r' + line + blanks + (line.empty() ? "\r" : "") << std::flush;
    shownWidth = line.size();
}

} // namespace orvan
