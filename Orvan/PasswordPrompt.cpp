#include "Orvan/PasswordPrompt.h"

#include "Platform/FileDescriptor.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <iostream>

namespace orvan {
namespace {

constexpr std::size_t kLongestLine = 4096; // of a terminal, termios(3)

// Signals wait while it exists, and take effect after the terminal is as it was.
class SilentTerminal {
public:
    explicit SilentTerminal(const termios& shown) : shown_(shown) {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP})
            sigaddset(&signals, signal);
        sigprocmask(SIG_BLOCK, &signals, &mask_);
        signals_ = platform::FileDescriptor(signalfd(-1, &signals, SFD_CLOEXEC));
        termios silent = shown;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= ECHONL;
        tcsetattr(STDIN_FILENO, TCSADRAIN, &silent);
    }
    ~SilentTerminal() {
        tcsetattr(STDIN_FILENO, TCSADRAIN, &shown_);
        sigprocmask(SIG_SETMASK, &mask_, nullptr);
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;

    // Waits. False when a signal has come first.
    bool waitForLine() const {
        std::array<pollfd, 2> sources{{{STDIN_FILENO, POLLIN, 0}, {signals_.get(), POLLIN, 0}}};
        return poll(sources.data(), sources.size(), -1) > 0 && sources[1].revents == 0;
    }

private:
    termios shown_;
    sigset_t mask_{};
    platform::FileDescriptor signals_;
};

} // namespace

std::optional<std::string> askForPassword(const std::string& question) {
    termios shown{};
    if (tcgetattr(STDIN_FILENO, &shown) != 0) return std::nullopt;
    for (;;) {
        const SilentTerminal silence(shown);
        std::cerr << question << std::flush;
        if (!silence.waitForLine()) continue;
        std::array<char, kLongestLine> line{};
        const ssize_t size = read(STDIN_FILENO, line.data(), line.size());
        if (size <= 0) return std::nullopt;
        std::string password(line.data(), static_cast<std::size_t>(size));
        if (password.ends_with('\n')) password.pop_back();
        return password;
    }
}

} // namespace orvan
