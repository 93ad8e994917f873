// A connection to a CUPS scheduler.
#pragma once

#include "Platform/FileDescriptor.h"
#include "Scheduler/SchedulerProblem.h"

#include <cups/cups.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace orvan {

struct IPPDelete {
    void operator()(ipp_t* message) const { ippDelete(message); }
};
using IPPMessage = std::unique_ptr<ipp_t, IPPDelete>;

// The scheduler that a thread talks to (CUPS_SERVER, client.conf, cupsSetServer), and as whom. libcups knows
// them for each thread by itself.
struct SchedulerAddress {
    std::string server; // a host or a socket's path
    int port = 0;
    http_encryption_t encryption = HTTP_ENCRYPTION_IF_REQUESTED;
    std::string user;
    bool operator==(const SchedulerAddress&) const = default;

    static SchedulerAddress ofThisThread();
    void setForThisThread() const;
};

// Kept from one request to the next. Everything blocks, until the deadline at the most: libcups may wait a
// second longer, and longer still for the look-up of a host's name, so whoever must not wait does not ask
// here but a SchedulerWorker. One thread, but for abort().
//
// libcups authenticates as far as it can without asking anybody (local peer credentials, tickets); for the
// rest its password callback, on this thread alone, gives nothing. Encryption is as the user's settings for
// CUPS say.
class SchedulerConnection {
public:
    using Clock = std::chrono::steady_clock;

    SchedulerConnection();
    ~SchedulerConnection();
    SchedulerConnection(const SchedulerConnection&) = delete;
    SchedulerConnection& operator=(const SchedulerConnection&) = delete;

    // What follows is one request to that scheduler, with this deadline over the whole of it.
    void begin(Clock::time_point deadline, const SchedulerAddress& address);
    void disconnect();
    // Ends it: what reads or writes gives up at once. From any thread.
    void abort();

    // The scheduler's answer; null, and why in `problem`, when it is not there, does not answer or refuses. A
    // list of nothing is an answer. When a kept connection turns out dead, the question is repeated once on a
    // new one.
    IPPMessage ask(const IPPMessage& request, SchedulerProblem& problem);
    // A request with a document, Print-Job (RFC 8011, section 4.2.1) or CUPS-Add-Modify-Printer, to
    // "/printers/..." or "/admin/": not without its document, whatever happens. Is never repeated, so that
    // there are not two jobs.
    IPPMessage send(IPPMessage request, const std::string& resource, std::string_view document,
        SchedulerProblem& problem);
    // The queue's PPD, into the descriptor.
    bool fetchPPD(const std::string& queue, int descriptor, SchedulerProblem& problem);

private:
    struct Close {
        void operator()(http_t* http) const { httpClose(http); }
    };

    bool connect(SchedulerProblem& problem);
    bool isOver() const;
    bool isDead() const;
    SchedulerProblem problemWith(const std::string& what, ipp_status_t status) const;
    template <class Step>
    bool repeatedOnce(SchedulerProblem& problem, const Step& step);

    SchedulerAddress address_; // of the connection
    std::unique_ptr<http_t, Close> http_;
    Clock::time_point deadline_;
    bool wantsPassword_ = false;

    mutable std::mutex mutex_; // of what abort() touches
    bool isAborted_ = false;
    platform::FileDescriptor socket_; // another descriptor of the connection's socket
};

// For messages: this thread's scheduler and where it is.
std::string schedulerName();
// That it does not answer.
SchedulerProblem schedulerSilence();

} // namespace orvan
