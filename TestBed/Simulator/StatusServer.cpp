#include "TestBed/Simulator/StatusServer.h"

#include "DefaultDocument.h"
#include "Platform/Input.h"
#include "TestBed/Simulator/Certificate.h"
#include "TestBed/Simulator/Channel.h"

#include <httplib.h>

#include <cstdio>
#include <optional>
#include <thread>

namespace orvan {
namespace {

constexpr const char* kAddress = "127.0.0.1";
constexpr const char* kOtherName = "localhost";
constexpr const char* kDocumentPath = "/status.xml";
constexpr const char* kMovedPath = "/moved/status.xml";
constexpr const char* kDocumentType = "application/xml";
constexpr const char* kPage =
    "<!DOCTYPE html>\n"
    "<html><head><title>Printer</title></head><body><p>Welcome.</p></body></html>\n";
// How often a stalled answer looks whether its client is still there.
constexpr std::chrono::milliseconds kGlance{20};

void say(const std::string& text) {
    std::fputs(("orvan-simulator: " + text + '\n').c_str(), stderr);
}

// What came over the network, fit for a terminal.
std::string printable(std::string text) {
    for (char& character : text)
        if (character <= ' ' || character > '~') character = '?';
    return text;
}

// A channel as the HTTP library sees it. A silent one takes requests and lets no answer out.
class ChannelStream final : public httplib::Stream {
public:
    ChannelStream(Channel& channel, bool silent) : channel_(channel), silent_(silent) {}

    bool is_readable() const override { return true; }
    bool is_writable() const override { return channel_.isOpen(); }
    ssize_t read(char* bytes, std::size_t size) override { return channel_.read(bytes, size); }
    ssize_t write(const char* bytes, std::size_t size) override {
        if (!silent_) return channel_.write(bytes, size);
        channel_.waitUntilClosed();
        return -1;
    }
    // Every client is on this machine, and nobody asks for its port.
    void get_remote_ip_and_port(std::string& address, int& port) const override {
        address = kAddress;
        port = 0;
    }
    void get_local_ip_and_port(std::string& address, int& port) const override {
        get_remote_ip_and_port(address, port);
    }
    socket_t socket() const override { return channel_.socket(); }

private:
    Channel& channel_;
    bool silent_;
};

} // namespace

class StatusServer::Implementation final : public httplib::Server {
public:
    explicit Implementation(StatusServerOptions options) : options_(std::move(options)) {}
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;
    ~Implementation() override;

    Failure open();
    std::string url(const std::string& host, const std::string& path) const;

private:
    using Request = httplib::Request;
    using Response = httplib::Response;

    bool process_and_close_socket(socket_t socket) override;
    template <typename Library>
    static bool process(Library& server, httplib::Stream& stream);

    void setHandlers();
    HandlerResponse checkCredentials(const Request& request, Response& response) const;
    void logRequest(const Request& request, const Response& response) const;

    std::optional<std::string> document() const;
    void answer(Response& response) const;
    void answerWithDocument(Response& response) const;
    void answerInPieces(Response& response, std::string document) const;
    bool writePiece(const std::string& document, std::size_t offset, const httplib::DataSink& sink) const;

    StatusServerOptions options_;
    int port_ = 0;
    TLSContext tls_;
    StopSignal stop_;
    std::thread thread_;
};

Failure StatusServer::Implementation::open() {
    Failure failure;
    if (options_.tls && !(tls_ = makeTLSContext(&failure))) return failure;
    // The library's own choice would let two servers share a port.
    set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
    });
    set_tcp_nodelay(true);
    setHandlers();
    port_ = options_.port;
    if (port_ == 0) port_ = bind_to_any_port(kAddress);
    if (port_ <= 0 || (options_.port != 0 && !bind_to_port(kAddress, port_)))
        return "TCP port " + std::to_string(options_.port) + " of " + kAddress +
               " could not be opened: it is taken, or not for this user. Choose another with --port.";
    thread_ = std::thread([this] { listen_after_bind(); });
    // Before that stop() does nothing.
    while (!is_running())
        std::this_thread::yield();
    return std::nullopt;
}

StatusServer::Implementation::~Implementation() {
    stop_.raise();
    stop();
    if (thread_.joinable()) thread_.join();
}

std::string StatusServer::Implementation::url(const std::string& host, const std::string& path) const {
    return (tls_ ? "https://" : "http://") + host + ':' + std::to_string(port_) + path;
}

bool StatusServer::Implementation::process_and_close_socket(socket_t socket) {
    Channel channel(socket, tls_.get(), stop_);
    if (!channel.open()) return false;
    ChannelStream stream(channel, options_.misbehaviour == Misbehaviour::silent);
    const bool answered = process(*this, stream);
    if (answered) channel.finish();
    return answered;
}

// Later releases of the library want both ends' addresses as well.
template <typename Library>
bool StatusServer::Implementation::process(Library& server, httplib::Stream& stream) {
    bool closed = false;
    const auto leave = [](Request&) {};
    if constexpr (requires { server.process_request(stream, true, closed, leave); })
        return server.process_request(stream, true, closed, leave);
    else
        return server.process_request(stream, kAddress, 0, kAddress, 0, true, closed, leave);
}

void StatusServer::Implementation::setHandlers() {
    set_pre_routing_handler(
        [this](const Request& request, Response& response) { return checkCredentials(request, response); });
    Get(kDocumentPath, [this](const Request&, Response& response) { answer(response); });
    Get(kMovedPath, [this](const Request&, Response& response) { answerWithDocument(response); });
    set_post_routing_handler(
        [this](const Request& request, Response& response) { logRequest(request, response); });
}

// RFC 7617.
httplib::Server::HandlerResponse StatusServer::Implementation::checkCredentials(
    const Request& request, Response& response) const {
    if (options_.user.empty()) return HandlerResponse::Unhandled;
    const auto [header, wanted] = httplib::make_basic_authentication_header(options_.user, options_.password);
    if (request.get_header_value(header) == wanted) return HandlerResponse::Unhandled;
    response.status = 401;
    response.set_header("WWW-Authenticate", "Basic realm=\"Printer\", charset=\"UTF-8\"");
    return HandlerResponse::Handled;
}

void StatusServer::Implementation::logRequest(const Request& request, const Response& response) const {
    if (!options_.log) return;
    const bool silent = options_.misbehaviour == Misbehaviour::silent;
    say(printable(request.method) + ' ' + printable(request.target) + ' ' +
        (silent ? "-" : std::to_string(response.status)) +
        (request.has_header("Authorization") ? " credentials" : " no credentials"));
}

std::optional<std::string> StatusServer::Implementation::document() const {
    if (options_.document.empty()) return std::string(kDefaultDocument);
    platform::Failure error;
    std::optional<std::string> text = platform::readFile(options_.document.string(), error);
    if (!text) say(*error);
    return text;
}

void StatusServer::Implementation::answer(Response& response) const {
    switch (options_.misbehaviour) {
    case Misbehaviour::redirect:
        return response.set_redirect(url(kAddress, kMovedPath));
    case Misbehaviour::redirectAway:
        return response.set_redirect(url(kOtherName, kMovedPath));
    case Misbehaviour::wrong:
        return response.set_content(kPage, "text/html");
    default:
        return answerWithDocument(response);
    }
}

void StatusServer::Implementation::answerWithDocument(Response& response) const {
    std::optional<std::string> text = document();
    if (!text) {
        response.status = 500;
        return;
    }
    switch (options_.misbehaviour) {
    case Misbehaviour::slow:
    case Misbehaviour::cut:
    case Misbehaviour::stall:
        return answerInPieces(response, std::move(*text));
    case Misbehaviour::malformed:
        text->resize(text->size() / 2);
        [[fallthrough]];
    default:
        return response.set_content(*text, kDocumentType);
    }
}

void StatusServer::Implementation::answerInPieces(Response& response, std::string document) const {
    const std::size_t size = document.size();
    if (size == 0) return response.set_content(document, kDocumentType);
    response.set_content_provider(size, kDocumentType,
        [this, document = std::move(document)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
            return writePiece(document, offset, sink);
        });
}

// False ends the connection. The library calls again until everything is written.
bool StatusServer::Implementation::writePiece(
    const std::string& document, std::size_t offset, const httplib::DataSink& sink) const {
    if (options_.misbehaviour == Misbehaviour::slow)
        return !(offset > 0 && stop_.waitFor(options_.interval)) && sink.write(&document[offset], 1);
    const std::size_t half = document.size() / 2;
    if (offset < half) return sink.write(document.data(), half);
    if (options_.misbehaviour == Misbehaviour::cut) return false;
    return sink.is_writable() && !stop_.waitFor(kGlance);
}

std::unique_ptr<StatusServer> StatusServer::start(const StatusServerOptions& options, Failure* failure) {
    auto implementation = std::make_unique<Implementation>(options);
    *failure = implementation->open();
    if (*failure) return nullptr;
    return std::unique_ptr<StatusServer>(new StatusServer(std::move(implementation)));
}

StatusServer::StatusServer(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {}

StatusServer::~StatusServer() = default;

std::string StatusServer::url() const {
    return implementation_->url(kAddress, kDocumentPath);
}

} // namespace orvan
