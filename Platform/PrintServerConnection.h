// A connection of one's own to the CUPS scheduler that this process talks to (CUPS_SERVER, client.conf).
#pragma once

#include "Platform/Patience.h"

#include <cups/cups.h>

#include <memory>
#include <string>

namespace platform {

struct IPPDelete {
    void operator()(ipp_t* message) const { ippDelete(message); }
};
using IPPMessage = std::unique_ptr<ipp_t, IPPDelete>;

struct HTTPClose {
    void operator()(http_t* http) const { httpClose(http); }
};
using HTTPConnection = std::unique_ptr<http_t, HTTPClose>;

// For one request, or a few in a row. libcups gives a request at least a second, whatever time-out is set; so
// the a connection is preceded by another that only asks the scheduler for a sign of life, and is none when
// that takes longer than `patience` gives a request. What it cannot bound is the look-up of a host's name,
// and a scheduler that stops between that sign and the request. One thread.
class PrintServerConnection {
public:
    // Connects, and waits for a sign of life. `patience` outlives the connection.
    explicit PrintServerConnection(Patience& patience);
    PrintServerConnection(const PrintServerConnection&) = delete;
    PrintServerConnection& operator=(const PrintServerConnection&) = delete;

    // Borrowed; null when the scheduler is not there or does not answer.
    http_t* http() const { return http_.get(); }

    // The queue's PPD; an empty path when it cannot be had. When the scheduler is not there it is the queue's
    // own file, if that is on this machine and may be read.
    struct PPDFile {
        std::string path;
        // A copy, or a symbolic link to the queue's own file, that is new and the caller's to remove.
        bool isTemporary = false;
    };
    PPDFile fetchPPD(const std::string& queue) const;

private:
    HTTPConnection http_;
};

} // namespace platform
