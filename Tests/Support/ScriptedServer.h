// A web server of a test's own that answers, or does not, as a table says.
#pragma once

#include "Platform/FileDescriptor.h"

#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace orvan {

struct ScriptedAnswer {
    enum class Then { close, silence, flood };

    std::string path;
    std::string
        text; // sent first; "$PORT" is the server's port, "$AUTHORIZATION" the request's field or "none"
    Then then = Then::close;
    int millisecondsPerByte = 0; // of what follows the header
};

// "HTTP/1.1 200 OK" with a body and its length.
std::string wholeAnswer(std::string_view body);

// Listens on 127.0.0.1 and serves each connection on a thread, for one request.
class ScriptedServer {
public:
    explicit ScriptedServer(std::vector<ScriptedAnswer> answers);
    ~ScriptedServer();
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    int port() const { return port_; }
    std::string url(const std::string& path) const;

    int requestCount() const { return requestCount_; }
    std::size_t sentByFlood() const { return sentByFlood_; }

private:
    void serveAll();
    void serve(int connection);
    void send(int connection, const ScriptedAnswer& answer, const std::string& request);
    void follow(int connection, ScriptedAnswer::Then then);

    std::vector<ScriptedAnswer> answers_;
    platform::FileDescriptor listener_;
    int port_ = 0;
    std::atomic<bool> ends_ = false;
    std::atomic<int> requestCount_ = 0;
    std::atomic<std::size_t> sentByFlood_ = 0;
    std::thread acceptor_;
    std::vector<std::thread> workers_; // of the acceptor's thread
};

// A listening socket on 127.0.0.1 with the port that the system chose.
platform::FileDescriptor listenOnLoopback(int backlog, int* port);

// A server on 127.0.0.1 whose queue of connections is full, so that the system answers to no further one.
class FullServer {
public:
    FullServer();
    int port() const { return port_; }

private:
    int port_ = 0;
    platform::FileDescriptor listener_;
    std::vector<platform::FileDescriptor> clients_;
};

} // namespace orvan
