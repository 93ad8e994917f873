// The simulated printer's web server, which has its status document.
#pragma once

#include "TestBed/Session/Failure.h"
#include "TestBed/Simulator/Misbehaviour.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace orvan {

struct StatusServerOptions {
    int port = 0; // 0: a free one
    bool tls = false;
    // The document, read anew for every request; empty: a built-in one.
    std::filesystem::path document;
    // Who may read it; an empty user: anybody.
    std::string user;
    std::string password;
    Misbehaviour misbehaviour = Misbehaviour::none;
    // Between the bytes of Misbehaviour::slow.
    std::chrono::milliseconds interval{1000};
    // Whether each request is a line on standard error.
    bool log = false;
};

// Answers HTTP/1.1 on TCP at 127.0.0.1 from threads of its own, one request a connection.
class StatusServer {
public:
    // Answers once it serves. Null, and *failure says why, when it cannot.
    static std::unique_ptr<StatusServer> start(const StatusServerOptions& options, Failure* failure);
    StatusServer(const StatusServer&) = delete;
    StatusServer& operator=(const StatusServer&) = delete;
    // Closes every connection.
    ~StatusServer();

    // Of the document.
    std::string url() const;

private:
    class Implementation;
    explicit StatusServer(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> implementation_;
};

} // namespace orvan
