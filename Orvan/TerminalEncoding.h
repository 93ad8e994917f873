// UTF-8 for a terminal of another encoding.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace orvan {

// While it exists, what is written to the stream as UTF-8 comes out in the encoding of the process's locale
// (setlocale(3)), with "?" for what that does not have. Nothing is changed where that is UTF-8, or when
// the descriptor behind the stream is no terminal: files and programs get UTF-8. One thread.
class TerminalEncoding : std::streambuf {
public:
    TerminalEncoding(std::ostream& stream, int descriptor);
    TerminalEncoding(const TerminalEncoding&) = delete;
    TerminalEncoding& operator=(const TerminalEncoding&) = delete;
    ~TerminalEncoding() override;

private:
    int_type overflow(int_type character) override;
    int sync() override { return flush() ? 0 : -1; }
    bool flush();

    std::ostream& stream_;
    std::streambuf* below_ = nullptr; // null when nothing is changed
    std::string text_;                // what is not written yet
};

} // namespace orvan
