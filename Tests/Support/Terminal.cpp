#include "Tests/Support/Terminal.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <array>

namespace orvan {

Terminal::Terminal(const std::vector<std::string>& command, const Environment& environment) {
    int ours = -1;
    int theirs = -1;
    if (openpty(&ours, &theirs, nullptr, nullptr, nullptr) != 0) return;
    master_ = platform::FileDescriptor(ours);
    slave_ = platform::FileDescriptor(theirs);
    process_ = fork();
    if (process_ != 0) return;
    changeEnvironment(environment);
    close(ours);
    login_tty(theirs);
    runInstead(command);
}

void Terminal::type(const std::string& text) const {
    EXPECT_EQ(write(master_.get(), text.data(), text.size()), ssize_t(text.size()));
}

bool Terminal::echoes() const {
    termios state{};
    return tcgetattr(slave_.get(), &state) == 0 && (state.c_lflag & ECHO) != 0;
}

std::string Terminal::shownUntil(const std::string& text) {
    constexpr int kPatience = 100'000; // milliseconds without a byte
    std::string shown;
    std::array<char, 256> piece{};
    pollfd source{master_.get(), POLLIN, 0};
    while ((text.empty() || shown.find(text) == std::string::npos) && poll(&source, 1, kPatience) > 0) {
        const ssize_t size = read(master_.get(), piece.data(), piece.size());
        if (size <= 0) break;
        shown.append(piece.data(), static_cast<std::size_t>(size));
    }
    return shown;
}

std::string Terminal::shownUntilEnd() {
    slave_.reset();
    return shownUntil("");
}

int Terminal::waitForEnd() const {
    int status = 0;
    waitpid(process_, &status, 0);
    return status;
}

} // namespace orvan
