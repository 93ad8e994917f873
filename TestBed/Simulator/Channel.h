// A connection of the simulated printer to one client, plain or with TLS.
#pragma once

#include "Platform/FileDescriptor.h"
#include "TestBed/Simulator/StopSignal.h"

#include <openssl/ssl.h>
#include <sys/types.h>

#include <cstddef>
#include <memory>

namespace orvan {

// For one thread. Every operation that waits ends when the signal is raised, with what it answers when the
// client has gone.
class Channel {
public:
    // Takes the socket over, which is then closed with this object. `context` is null for a plain connection.
    // Both others are to outlive it.
    Channel(int socket, SSL_CTX* context, const StopSignal& stop);

    // Agrees with the client on TLS; a plain connection is open as it is. False when that fails.
    bool open();
    // At most that many bytes: how many came, 0 at the end, -1 when there is no more to be had, also because
    // the client takes more than some seconds to send any.
    ssize_t read(char* bytes, std::size_t size);
    // All bytes or none: `size`, or -1.
    ssize_t write(const char* bytes, std::size_t size);
    // Tells the client that this was all.
    void finish();

    // False from when the client has closed its end.
    bool isOpen() const;
    void waitUntilClosed() const;

    int socket() const { return socket_.get(); }

private:
    struct FreeTLS {
        void operator()(SSL* tls) const { SSL_free(tls); }
    };

    short await(short events) const;
    bool awaitTLS(int result) const;
    ssize_t writeSome(const char* bytes, std::size_t size);

    platform::FileDescriptor socket_;
    std::unique_ptr<SSL, FreeTLS> tls_;
    const StopSignal& stop_;
};

} // namespace orvan
