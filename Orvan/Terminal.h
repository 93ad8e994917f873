// What `orvan` writes when a person looks on.
#pragma once

#include <cstddef>
#include <string>

namespace orvan {

// How wide the text that is written to the descriptor may be, in columns, for wrapped() (Wrapping.h):
// COLUMNS, or what the terminal says, and 40 at least. 0 when the descriptor is no terminal: then nothing is
// wrapped.
std::size_t wrappingWidth(int descriptor);

// Whether what is written to the descriptor may have bars and colors: it is a terminal, and NO_COLOR is not
// set to anything.
bool isDecorated(int descriptor);

enum class Color { red = 31, green = 32, yellow = 33 }; // ECMA-48, section 8.3.117

// The text in that color; as it is when `decorated` is false.
std::string colored(const std::string& text, Color color, bool decorated);

// One line on standard error that says what is waited for, and goes when it is over. Nothing is written when
// standard error is no terminal. One thread; a line within another takes its place.
class ProgressLine {
public:
    ProgressLine();
    ~ProgressLine() { show({}); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Replaces what stands there. A text that does not fit is cut.
    void show(const std::string& text);

private:
    std::size_t width_ = 0; // in columns, that the terminal takes on one line; 0 when there is none
};

} // namespace orvan
