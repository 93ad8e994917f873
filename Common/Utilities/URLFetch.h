// Documents of a printer's web server.
//
// All of it blocks its caller, for as long as the limits allow, and may be called from several threads at
// once. A fetch ends when the header has not come within two seconds, or nothing more for two seconds.
// Redirects are followed, without the credentials when they lead to another host, port or scheme. Passwords
// are in no message.
//
// A fetch that fails because of TLS (isTLSErrorCode) is made once more over HTTPS, with every check of the
// certificate switched off and no redirect followed: printers certify themselves. What the first one had got
// is dropped; its problem is told with the second one's.
#pragma once

#include "Formats/Failure.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace orvan {

struct FetchRequest {
    std::optional<std::string> url = std::nullopt;
    // Basic credentials (RFC 7617), sent at once when either is given; the other then counts as empty.
    std::optional<std::string> user = std::nullopt;
    std::optional<std::string> password = std::nullopt;
    std::size_t maximumSize = std::size_t{16} << 20U; // bytes
    std::chrono::milliseconds maximumTime = std::chrono::minutes{2};
    bool followsRedirects = true;
    // Asked before anything is sent, when the fetch is made without checks: why the certificate of the server
    // ("host:port"), by its SHA-256 fingerprint ("AB:CD:..."), is not taken. Nothing takes it, and so does no
    // function.
    std::function<platform::Failure(const std::string& server, const std::string& fingerprint)>
        examineCertificate = nullptr;
};

struct FetchResult {
    std::string bytes;                // the body as far as it came, whatever the status
    long status = 0;                  // of the last response, RFC 9110 section 15; 0 when there was none
    std::string problem;              // for people, a clause; empty when the whole answer came
    std::string redirect;             // the URL that a redirect leads to which was not followed
    std::string charset;              // that the last response's Content-Type names; "" for none
    std::string uncheckedCertificate; // the fingerprint of the one that nobody vouches for; "" for none
};

FetchResult fetchDocument(const FetchRequest& request);

// The same as bytes alone, with the limits that a FetchRequest has by itself. No URL: no bytes. These and the
// next are of the given vocabulary; nothing here calls them.
std::string GetURLWithAuthentication(const std::optional<std::string>& url,
    const std::optional<std::string>& user, const std::optional<std::string>& password);
std::string GetURLWithAuthentication_CFNetwork(const std::optional<std::string>& url,
    const std::optional<std::string>& user, const std::optional<std::string>& password);
// Only the fetch over HTTPS: the URL with "https" in place of its scheme. Writes a line with the error's code
// and domain to standard output when a read fails, and so do the two above when this is what they end with.
std::string GetURLWithAuthentication_SSL(const std::optional<std::string>& url,
    const std::optional<std::string>& user, const std::optional<std::string>& password);

// The bytes of an XML document, fetched without credentials; they are not parsed. Of the given vocabulary;
// nothing here calls it.
std::string MyXMLTreeCreateWithDataFromURL(const std::optional<std::string>& url);

// Whether a stream's error code is one of those after which the fetch is made over HTTPS: from -9848 to
// -9801. The error's domain does not count.
bool isTLSErrorCode(std::int32_t code);

} // namespace orvan
