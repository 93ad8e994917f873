#include "Orvan/Interruption.h"

#include <unistd.h>

#include <array>
#include <csignal>

namespace orvan {
namespace {

constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};
constexpr int kSignalExitBase = 128;

volatile std::sig_atomic_t notedSignal = 0;
std::array<struct sigaction, kSignals.size()> actionsBefore{};

void note(int signal) {
    notedSignal = signal;
}

} // namespace

InterruptionGuard::InterruptionGuard() {
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        sigaction(kSignals[i], nullptr, &actionsBefore[i]);
        // nohup(1), and jobs that a shell runs in the background
        if (actionsBefore[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
    }
}

InterruptionGuard::~InterruptionGuard() {
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        sigaction(kSignals[i], &actionsBefore[i], nullptr);
}

bool wasInterrupted() {
    return notedSignal != 0;
}

void endAsInterrupted() {
    const int signal = notedSignal;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    _exit(kSignalExitBase + signal);
}

} // namespace orvan
