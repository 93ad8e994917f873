// The body of an HTTP or HTTPS document as a stream (GET, HTTP/1.1: RFC 9110, RFC 9112).
//
// A stream belongs to one thread; several threads may each have their own. Nothing of it blocks for longer
// than it says, except that name look-up and connection go on only while the stream is asked to proceed or
// read. The environment has no say: no proxy, no file with passwords.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

struct HTTPRequest {
    std::string url;
    // Basic credentials (RFC 7617), sent with the first request when either is given; the other then counts
    // as empty. They go to the host, the port and the scheme of the URL and nowhere else.
    std::optional<std::string> user = std::nullopt;
    std::optional<std::string> password = std::nullopt;
    // Where the URL's host is, an IPv4 address in dotted form; empty: the host is looked up.
    std::string address = {};
};

struct TLSSettings {
    // When false, any root and expired certificates are accepted, and so are the versions, keys and ciphers
    // of old devices.
    bool validatesCertificateChain = true;
    bool verifiesPeerName = true;
    // Asked before anything is sent, when the chain is not validated: whether the certificate of the server
    // ("host:port") is taken, by its SHA-256 fingerprint ("AB:CD:..."). Otherwise the read fails. Null takes
    // all.
    std::function<bool(const std::string& server, const std::string& fingerprint)> takesCertificate = nullptr;
};

enum class HTTPStreamStatus : std::int8_t {
    notOpen = 0,
    opening = 1, // the header has not come yet; headers of redirects that are followed do not count
    open = 2,    // the header has come, or the end or a failure, which a read finds; nothing was read yet
    reading = 3, // a part of the body was read
    writing = 4, // never: a GET has no body
    atEnd = 5,   // the whole body was read
    closed = 6,
    error = 7, // a read has failed
};

enum class HTTPStreamErrorDomain : std::int32_t {
    none = 0,
    system = 1,   // the code is an errno value
    tls = 3,      // the code is negative, from -9848 to -9801
    transfer = 4, // the code is libcurl's (CURLcode)
};

struct HTTPStreamError {
    std::int32_t code = 0;
    HTTPStreamErrorDomain domain = HTTPStreamErrorDomain::none;
    std::string problem; // for people: a clause with host and port, and without passwords
};

enum class HTTPRead : std::int8_t { bytes, nothingYet, end, failed };

class HTTPStream {
public:
    // How long a read waits for bytes.
    static constexpr std::chrono::milliseconds kReadSlice{50};
    static constexpr int kMaximumRedirects = 10;

    // Null when the URL is not one of an HTTP or HTTPS server.
    static std::unique_ptr<HTTPStream> create(const HTTPRequest& request, const TLSSettings& tls = {});
    HTTPStream(const HTTPStream&) = delete;
    HTTPStream& operator=(const HTTPStream&) = delete;
    ~HTTPStream();

    // Before the stream is opened: whether redirects to other HTTP and HTTPS URLs are followed, which they
    // are not until this is set. False when that is impossible.
    bool setAutoRedirect(bool follows);

    // Before the stream is opened: it is at its end, without a request and without a byte, as soon as the
    // server has accepted the connection. With an http URL nothing is sent at all. False when that is
    // impossible.
    bool setConnectsOnly();

    // Begins, and does not wait. False when it cannot; a stream is opened once.
    bool open();

    HTTPStreamStatus status() const { return status_; }

    // Whether a read has an answer at once, be it bytes, the end or the failure.
    bool hasBytesAvailable() const;

    // Lets the transfer get on until a read has an answer, or opening is over, for so long at most.
    void proceed(std::chrono::milliseconds slice);

    // Appends at most `maximum` bytes of the body to `bytes`, one at least when it answers HTTPRead::bytes.
    // Waits for kReadSlice at most. What is not read stays with the server, but for a bounded buffer.
    HTTPRead read(std::string& bytes, std::size_t maximum);

    // What made a read fail.
    const HTTPStreamError& error() const { return error_; }

    // The status code of the last response whose header has come, of a redirect as well; 0 before the first.
    long responseStatus() const;

    // Whether a part of the header, at least, has come that ends opening.
    bool isAnswering() const;

    // The charset that the last response's Content-Type names (RFC 9110, section 8.3); "" for none.
    std::string charset() const;

    // Where the last response leads that was a redirect and is not followed; "" for none.
    std::string redirectURL() const;

    // The server that is asked, after redirects the last one: "host:port".
    std::string server() const;

    // Ends the connection. Does not wait.
    void close();

private:
    class Transfer;

    explicit HTTPStream(std::unique_ptr<Transfer> transfer);
    HTTPRead readEnd();

    std::unique_ptr<Transfer> transfer_;
    HTTPStreamStatus status_ = HTTPStreamStatus::notOpen;
    HTTPStreamError error_;
};

} // namespace platform
