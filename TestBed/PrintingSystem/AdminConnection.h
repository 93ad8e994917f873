// Requests to one scheduler on its Unix socket, whatever CUPS_SERVER of this process says.
#pragma once

#include "Scheduler/SchedulerConnection.h"
#include "TestBed/Session/Failure.h"

#include <cups/cups.h>

#include <filesystem>
#include <memory>
#include <string>

namespace orvan {

// One connection; a request waits for its answer for at most some seconds, so that a scheduler which hangs is
// an error and not a wait for ever. One thread.
class AdminConnection {
public:
    // Connects at once; see isOpen().
    explicit AdminConnection(const std::filesystem::path& socket);
    AdminConnection(const AdminConnection&) = delete;
    AdminConnection& operator=(const AdminConnection&) = delete;
    ~AdminConnection();

    bool isOpen() const { return http_ != nullptr; }
    // Borrowed, for libcups calls that take a connection; null when it is not open.
    http_t* http() const { return http_; }

    // A request that names a queue and the user, as most do. Not sent.
    static IPPMessage queueRequest(ipp_op_t operation, const std::string& queue);

    // Sends the request, with the file as its document unless the path is empty. *response may be null when
    // only success matters. The failure is the scheduler's or the connection's own reason, without a subject.
    Failure send(IPPMessage request, const std::string& resource, IPPMessage* response,
        const std::filesystem::path& file = {});

private:
    http_t* http_;
};

} // namespace orvan
