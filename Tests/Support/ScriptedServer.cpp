#include "Tests/Support/ScriptedServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace orvan {
namespace {

void replaceAll(std::string& text, std::string_view from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

bool isReadable(int descriptor) {
    pollfd source{descriptor, POLLIN, 0};
    return poll(&source, 1, 20) > 0;
}

bool sendBytes(int connection, std::string_view bytes) {
    return ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL) == ssize_t(bytes.size());
}

// A line of the request behind its name.
std::string fieldOf(const std::string& request, std::string_view name) {
    const std::size_t field = request.find(name);
    if (field == std::string::npos) return "none";
    const std::size_t value = field + name.size();
    return request.substr(value, request.find('\r', value) - value);
}

} // namespace

std::string wholeAnswer(std::string_view body) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           std::string(body);
}

platform::FileDescriptor listenOnLoopback(int backlog, int* port) {
    platform::FileDescriptor listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener.get(), generic, size) != 0 || listen(listener.get(), backlog) != 0) return {};
    getsockname(listener.get(), generic, &size);
    *port = ntohs(address.sin_port);
    return listener;
}

FullServer::FullServer() : listener_(listenOnLoopback(0, &port_)) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    getsockname(listener_.get(), generic, &size);
    for (int i = 0; i < 3; ++i) {
        clients_.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        if (connect(clients_.back().get(), generic, size) == 0) throw std::runtime_error("connected at once");
    }
}

ScriptedServer::ScriptedServer(std::vector<ScriptedAnswer> answers) : answers_(std::move(answers)) {
    listener_ = listenOnLoopback(SOMAXCONN, &port_);
    acceptor_ = std::thread([this] { serveAll(); });
}

ScriptedServer::~ScriptedServer() {
    ends_ = true;
    acceptor_.join();
    for (std::thread& worker : workers_)
        worker.join();
}

std::string ScriptedServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void ScriptedServer::serveAll() {
    while (!ends_) {
        if (!isReadable(listener_.get())) continue;
        const int connection = accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC);
        workers_.emplace_back([this, connection] { serve(connection); });
    }
}

void ScriptedServer::serve(int connection) {
    const platform::FileDescriptor owned(connection);
    std::string request;
    std::array<char, 4096> piece{};
    while (request.find("\r\n\r\n") == std::string::npos) {
        if (ends_) return;
        if (!isReadable(connection)) continue;
        const ssize_t size = recv(connection, piece.data(), piece.size(), 0);
        if (size <= 0) return;
        request.append(piece.data(), static_cast<std::size_t>(size));
        const std::string_view method = std::string_view(request).substr(0, request.find(' '));
        if (!std::string_view("GET").starts_with(method) &&
            !std::string_view("POST").starts_with(method)) { // TLS, for example
            sendBytes(connection, "HTTP/1.1 400 Bad Request\r\n\r\n");
            return;
        }
    }
    ++requestCount_;
    const std::string path = fieldOf(request, request.starts_with("GET ") ? "GET " : "POST ");
    const auto answer = std::ranges::find_if(
        answers_, [&](const ScriptedAnswer& known) { return path.starts_with(known.path + " "); });
    if (answer != answers_.end()) send(connection, *answer, request);
}

void ScriptedServer::send(int connection, const ScriptedAnswer& answer, const std::string& request) {
    std::string text = answer.text;
    replaceAll(text, "$PORT", std::to_string(port_));
    replaceAll(text, "$AUTHORIZATION", fieldOf(request, "\r\nAuthorization: "));
    const std::size_t body = text.find("\r\n\r\n") + 4;
    if (answer.millisecondsPerByte == 0) {
        sendBytes(connection, text);
    } else {
        sendBytes(connection, std::string_view(text).substr(0, body));
        for (std::size_t i = body; i < text.size() && !ends_; ++i) {
            if (!sendBytes(connection, std::string_view(text).substr(i, 1))) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(answer.millisecondsPerByte));
        }
    }
    follow(connection, answer.then);
}

void ScriptedServer::follow(int connection, ScriptedAnswer::Then then) {
    const std::string flood(65536, 'x');
    std::array<char, 4096> rest{};
    switch (then) {
    case ScriptedAnswer::Then::close:
        return;
    case ScriptedAnswer::Then::silence:
        // The client may go on with its request; only its end ends this.
        while (!ends_ && (!isReadable(connection) || recv(connection, rest.data(), rest.size(), 0) > 0)) {
        }
        return;
    case ScriptedAnswer::Then::flood:
        while (!ends_) {
            const ssize_t size = ::send(connection, flood.data(), flood.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
            if (size > 0) sentByFlood_ += static_cast<std::size_t>(size);
            if (size < 0 && isReadable(connection)) return; // closed by the client
        }
    }
}

} // namespace orvan
