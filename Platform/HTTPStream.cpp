#include "Platform/HTTPStream.h"

#include "Platform/HTTPStreamError.h"

#include <curl/curl.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <strings.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <exception>
#include <span>
#include <string_view>
#include <utility>

namespace platform {
namespace {

using Clock = std::chrono::steady_clock;

struct CleanUp {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct CleanUpMulti {
    void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
struct CleanUpURL {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
struct FreeText {
    void operator()(char* text) const { curl_free(text); }
};

bool isLibraryReady() {
    static const bool ready = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return ready;
}

std::string partOf(CURLU* url, CURLUPart part) {
    char* text = nullptr;
    curl_url_get(url, part, &text, CURLU_DEFAULT_PORT);
    const std::unique_ptr<char, FreeText> owned(text);
    return text != nullptr ? text : "";
}

struct Server {
    std::string host;
    std::string port;
};

// That of a URL of an HTTP or HTTPS server; nothing when it is none.
std::optional<Server> separateServer(const std::string& text) {
    const std::unique_ptr<CURLU, CleanUpURL> url(curl_url());
    if (url == nullptr || text.find('\0') != std::string::npos) return std::nullopt;
    if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK) return std::nullopt;
    const std::string scheme = partOf(url.get(), CURLUPART_SCHEME);
    if (scheme != "http" && scheme != "https") return std::nullopt;
    return Server{partOf(url.get(), CURLUPART_HOST), partOf(url.get(), CURLUPART_PORT)};
}

// "host:port" of the same; empty when it is none.
std::string serverOf(const std::string& text) {
    const std::optional<Server> server = separateServer(text);
    return server ? server->host + ":" + server->port : "";
}

} // namespace

// "AB:CD:..." of a certificate; "" when there is none.
std::string fingerprintOf(const X509* certificate) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned size = 0;
    if (certificate == nullptr || X509_digest(certificate, EVP_sha256(), digest.data(), &size) != 1)
        return {};
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const unsigned byte : std::span(digest).first(size)) {
        if (!text.empty()) text += ':';
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

// libcurl's side of a stream.
class HTTPStream::Transfer {
public:
    explicit Transfer(const HTTPRequest& request) : url_(request.url) { buffer_.reserve(kBufferSize); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer() { stop(); }

    bool prepare(const HTTPRequest& request, const TLSSettings& tls);
    bool follow(bool follows) {
        follows_ = follows;
        return set(CURLOPT_FOLLOWLOCATION, follows ? 1L : 0L);
    }
    bool connectOnly() { return set(CURLOPT_CONNECT_ONLY, 1L); }
    bool start();
    void stop();

    // Whether there are bytes, or there will be no more.
    bool hasAnswer() const { return !buffer_.empty() || ended_; }
    bool hasBytes() const { return !buffer_.empty(); }
    bool hasHeader() const { return header_ == Header::complete; }
    bool isAnswering() const { return header_ != Header::awaited; }
    CURLcode result() const { return result_; }
    long responseStatus() const { return information<long>(CURLINFO_RESPONSE_CODE, 0); }

    void proceed(std::chrono::milliseconds slice, bool untilHeader);
    void take(std::string& bytes, std::size_t maximum);
    std::string redirectURL() const {
        const char* const url = information<const char*>(CURLINFO_REDIRECT_URL, nullptr);
        return url != nullptr ? url : "";
    }
    std::string contentType() const {
        const char* const type = information<const char*>(CURLINFO_CONTENT_TYPE, nullptr);
        return type != nullptr ? type : "";
    }
    std::string server() const;
    HTTPTransferFailure failure() const;

private:
    // That of the answer whose body is read.
    enum class Header : std::uint8_t { awaited, begun, complete };

    // libcurl delivers pieces of 16 KiB at most.
    static constexpr std::size_t kBufferSize = std::size_t{4} * CURL_MAX_WRITE_SIZE;

    template <typename Value>
    bool set(CURLoption option, Value value) {
        return curl_easy_setopt(easy_.get(), option, value) == CURLE_OK;
    }
    bool setIfGiven(CURLoption option, const std::optional<std::string>& value) {
        return !value || set(option, value->c_str());
    }
    template <typename Value>
    Value information(CURLINFO which, Value otherwise) const {
        Value value = otherwise;
        return curl_easy_getinfo(easy_.get(), which, &value) == CURLE_OK ? value : otherwise;
    }
    bool setCredentials(const HTTPRequest& request);
    bool setAddress(const HTTPRequest& request);
    bool setTLS(const TLSSettings& tls);
    void end(CURLcode result);
    static CURLcode prepareTLS(CURL*, void* context, void* transfer);
    static int examine(X509_STORE_CTX* store, void* transfer);
    void noteHeader(std::string_view line);
    static std::size_t receive(char* bytes, std::size_t, std::size_t size, void* receiver);
    static std::size_t receiveHeader(char* bytes, std::size_t, std::size_t size, void* receiver);

    std::string url_;
    TLSSettings tls_;
    std::array<char, CURL_ERROR_SIZE> details_{};
    std::string buffer_; // what has come and is not read
    std::unique_ptr<curl_slist, FreeList> addresses_;
    std::unique_ptr<CURLM, CleanUpMulti> multi_;
    std::unique_ptr<CURL, CleanUp> easy_;
    bool isAdded_ = false; // to multi_
    bool isPaused_ = false;
    bool follows_ = false;    // redirects
    bool isRedirect_ = false; // what the header that has begun is of
    Header header_ = Header::awaited;
    bool ended_ = false;
    CURLcode result_ = CURLE_OK; // when it has ended
};

bool HTTPStream::Transfer::prepare(const HTTPRequest& request, const TLSSettings& tls) {
    multi_.reset(curl_multi_init());
    easy_.reset(curl_easy_init());
    if (multi_ == nullptr || easy_ == nullptr) return false;
    // Without CURLOPT_QUICK_EXIT, closing would wait for a name look-up that is under way. A connection that
    // is used once more for a redirect may be one that the server closes meanwhile.
    return set(CURLOPT_URL, url_.c_str()) && set(CURLOPT_ERRORBUFFER, details_.data()) &&
           set(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1}) && set(CURLOPT_NOSIGNAL, 1L) &&
           set(CURLOPT_QUICK_EXIT, 1L) && set(CURLOPT_FORBID_REUSE, 1L) && set(CURLOPT_PROXY, "") &&
           set(CURLOPT_NOPROXY, "*") && set(CURLOPT_NETRC, long{CURL_NETRC_IGNORED}) &&
           set(CURLOPT_PROTOCOLS_STR, "http,https") && set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https") &&
           set(CURLOPT_MAXREDIRS, long{kMaximumRedirects}) && set(CURLOPT_WRITEFUNCTION, &receive) &&
           set(CURLOPT_WRITEDATA, this) && set(CURLOPT_HEADERFUNCTION, &receiveHeader) &&
           set(CURLOPT_HEADERDATA, this) && setCredentials(request) && setAddress(request) && setTLS(tls);
}

// libcurl looks some names up without their final dot.
bool HTTPStream::Transfer::setAddress(const HTTPRequest& request) {
    const std::optional<Server> server = separateServer(url_);
    if (request.address.empty() || !server) return true;
    std::string host = server->host;
    if (host.ends_with('.')) host.pop_back();
    for (const char* const dot : {"", "."}) {
        const std::string entry = host + dot + ":" + server->port + ":" + request.address;
        curl_slist* const longer = curl_slist_append(addresses_.get(), entry.c_str());
        if (longer == nullptr) return false;
        static_cast<void>(addresses_.release());
        addresses_.reset(longer);
    }
    return set(CURLOPT_RESOLVE, addresses_.get());
}

bool HTTPStream::Transfer::setCredentials(const HTTPRequest& request) {
    if (!request.user && !request.password) return true;
    return set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC) && setIfGiven(CURLOPT_PASSWORD, request.password) &&
           set(CURLOPT_USERNAME, request.user.value_or("").c_str());
}

bool HTTPStream::Transfer::setTLS(const TLSSettings& tls) {
    if (!set(CURLOPT_SSL_VERIFYHOST, tls.verifiesPeerName ? 2L : 0L)) return false;
    if (tls.validatesCertificateChain) return true;
    // Whom one speaks with is not checked, so a short key or an old version takes nothing away.
    if (tls.takesCertificate) {
        tls_ = tls;
        if (!set(CURLOPT_SSL_CTX_FUNCTION, &prepareTLS) || !set(CURLOPT_SSL_CTX_DATA, this)) return false;
    }
    return set(CURLOPT_SSL_VERIFYPEER, 0L) && set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_0}) &&
           set(CURLOPT_SSL_CIPHER_LIST, "DEFAULT:@SECLEVEL=0");
}

// The question takes the place of OpenSSL's own checks, and has their weight: a refusal ends the handshake.
CURLcode HTTPStream::Transfer::prepareTLS(CURL*, void* context, void* transfer) {
    auto* const tls = static_cast<SSL_CTX*>(context);
    SSL_CTX_set_verify(tls, SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_cert_verify_callback(tls, &examine, transfer);
    return CURLE_OK;
}

int HTTPStream::Transfer::examine(X509_STORE_CTX* store, void* self) {
    const auto& transfer = *static_cast<const Transfer*>(self);
    try {
        const std::string fingerprint = fingerprintOf(X509_STORE_CTX_get0_cert(store));
        if (!fingerprint.empty() && transfer.tls_.takesCertificate(transfer.server(), fingerprint)) return 1;
    } catch (const std::exception&) {
        // libcurl and OpenSSL know no exceptions.
    }
    X509_STORE_CTX_set_error(store, X509_V_ERR_APPLICATION_VERIFICATION);
    return 0;
}

bool HTTPStream::Transfer::start() {
    isAdded_ = curl_multi_add_handle(multi_.get(), easy_.get()) == CURLM_OK;
    return isAdded_;
}

void HTTPStream::Transfer::stop() {
    if (std::exchange(isAdded_, false)) curl_multi_remove_handle(multi_.get(), easy_.get());
}

void HTTPStream::Transfer::end(CURLcode result) {
    ended_ = true;
    result_ = result;
}

std::size_t HTTPStream::Transfer::receive(char* bytes, std::size_t, std::size_t size, void* receiver) {
    auto* const transfer = static_cast<Transfer*>(receiver);
    transfer->isPaused_ = transfer->buffer_.size() + size > kBufferSize;
    if (transfer->isPaused_) return CURL_WRITEFUNC_PAUSE;
    transfer->buffer_.append(bytes, size); // room was reserved, so it does not throw into libcurl
    return size;
}

std::size_t HTTPStream::Transfer::receiveHeader(char* bytes, std::size_t, std::size_t size, void* receiver) {
    static_cast<Transfer*>(receiver)->noteHeader({bytes, size});
    return size;
}

// Line by line. The headers of interim answers (RFC 9110, section 15.2) and of redirects that are followed
// are not the awaited one; those behind a chunked body are none.
void HTTPStream::Transfer::noteHeader(std::string_view line) {
    if (header_ == Header::complete) return;
    if (std::exchange(header_, Header::begun) == Header::awaited) isRedirect_ = false;
    constexpr std::string_view kLocation = "location:";
    isRedirect_ = isRedirect_ || (line.size() > kLocation.size() &&
                                     strncasecmp(line.data(), kLocation.data(), kLocation.size()) == 0);
    if (!line.empty() && line.front() != '\r' && line.front() != '\n') return;
    constexpr long kOK = 200;
    constexpr long kMultipleChoices = 300;
    constexpr long kBadRequest = 400;
    const long status = responseStatus();
    const bool isFollowed = follows_ && isRedirect_ && status >= kMultipleChoices && status < kBadRequest;
    header_ = status < kOK || isFollowed ? Header::awaited : Header::complete;
}

void HTTPStream::Transfer::proceed(std::chrono::milliseconds slice, bool untilHeader) {
    const auto deadline = Clock::now() + slice;
    const auto isDone = [&] { return hasAnswer() || (untilHeader && hasHeader()); };
    while (!isDone()) {
        if (std::exchange(isPaused_, false)) curl_easy_pause(easy_.get(), CURLPAUSE_CONT);
        int count = 0;
        if (curl_multi_perform(multi_.get(), &count) != CURLM_OK) end(CURLE_FAILED_INIT);
        if (const CURLMsg* const message = curl_multi_info_read(multi_.get(), &count); message != nullptr)
            end(message->data.result);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        if (isDone() || left.count() <= 0) return;
        curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(left.count()), nullptr);
    }
}

void HTTPStream::Transfer::take(std::string& bytes, std::size_t maximum) {
    const std::size_t size = std::min(maximum, buffer_.size());
    bytes.append(buffer_, 0, size);
    buffer_.erase(0, size);
}

std::string HTTPStream::Transfer::server() const {
    const char* const last = information<const char*>(CURLINFO_EFFECTIVE_URL, nullptr);
    const std::string server = last != nullptr ? serverOf(last) : std::string();
    return server.empty() ? serverOf(url_) : server;
}

HTTPTransferFailure HTTPStream::Transfer::failure() const {
    const auto systemError = static_cast<int>(information<long>(CURLINFO_OS_ERRNO, 0));
    return {result_, result_ == CURLE_COULDNT_CONNECT ? systemError : 0,
        information<long>(CURLINFO_SSL_VERIFYRESULT, 0), server(), details_.data()};
}

HTTPStream::HTTPStream(std::unique_ptr<Transfer> transfer) : transfer_(std::move(transfer)) {}

HTTPStream::~HTTPStream() = default;

std::unique_ptr<HTTPStream> HTTPStream::create(const HTTPRequest& request, const TLSSettings& tls) {
    if (!isLibraryReady() || serverOf(request.url).empty()) return nullptr;
    auto transfer = std::make_unique<Transfer>(request);
    if (!transfer->prepare(request, tls)) return nullptr;
    return std::unique_ptr<HTTPStream>(new HTTPStream(std::move(transfer)));
}

bool HTTPStream::setAutoRedirect(bool follows) {
    return status_ == HTTPStreamStatus::notOpen && transfer_->follow(follows);
}

bool HTTPStream::setConnectsOnly() {
    return status_ == HTTPStreamStatus::notOpen && transfer_->connectOnly();
}

bool HTTPStream::open() {
    if (status_ != HTTPStreamStatus::notOpen || !transfer_->start()) return false;
    status_ = HTTPStreamStatus::opening;
    return true;
}

bool HTTPStream::hasBytesAvailable() const {
    return transfer_->hasAnswer();
}

void HTTPStream::proceed(std::chrono::milliseconds slice) {
    switch (status_) {
    case HTTPStreamStatus::opening:
        transfer_->proceed(slice, true);
        if (transfer_->hasAnswer() || transfer_->hasHeader()) status_ = HTTPStreamStatus::open;
        return;
    case HTTPStreamStatus::open:
    case HTTPStreamStatus::reading:
    case HTTPStreamStatus::writing:
        transfer_->proceed(slice, false);
        return;
    case HTTPStreamStatus::notOpen:
    case HTTPStreamStatus::atEnd:
    case HTTPStreamStatus::closed:
    case HTTPStreamStatus::error:
        return;
    }
}

HTTPRead HTTPStream::read(std::string& bytes, std::size_t maximum) {
    if (status_ == HTTPStreamStatus::atEnd) return HTTPRead::end;
    proceed(kReadSlice);
    switch (status_) {
    case HTTPStreamStatus::opening:
        return HTTPRead::nothingYet;
    case HTTPStreamStatus::open:
    case HTTPStreamStatus::reading:
    case HTTPStreamStatus::writing:
        break;
    case HTTPStreamStatus::notOpen:
    case HTTPStreamStatus::atEnd:
    case HTTPStreamStatus::closed:
    case HTTPStreamStatus::error:
        return HTTPRead::failed;
    }
    if (!transfer_->hasAnswer()) return HTTPRead::nothingYet;
    if (!transfer_->hasBytes()) return readEnd();
    transfer_->take(bytes, maximum);
    status_ = HTTPStreamStatus::reading;
    return HTTPRead::bytes;
}

HTTPRead HTTPStream::readEnd() {
    const bool whole = transfer_->result() == CURLE_OK;
    status_ = whole ? HTTPStreamStatus::atEnd : HTTPStreamStatus::error;
    if (!whole) error_ = httpStreamError(transfer_->failure());
    return whole ? HTTPRead::end : HTTPRead::failed;
}

long HTTPStream::responseStatus() const {
    return transfer_->responseStatus();
}

bool HTTPStream::isAnswering() const {
    return transfer_->isAnswering();
}

std::string HTTPStream::charset() const {
    constexpr std::string_view kName = "charset=";
    const std::string type = transfer_->contentType();
    const auto sameLetter = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
    const auto found = std::search(type.begin(), type.end(), kName.begin(), kName.end(), sameLetter);
    if (found == type.end()) return {};
    std::string value(found + kName.size(), type.end());
    value.resize(std::min(value.find_first_of("; \t"), value.size()));
    std::erase(value, '"');
    return value;
}

std::string HTTPStream::redirectURL() const {
    return transfer_->redirectURL();
}

std::string HTTPStream::server() const {
    return transfer_->server();
}

void HTTPStream::close() {
    transfer_->stop();
    status_ = HTTPStreamStatus::closed;
}

} // namespace platform
