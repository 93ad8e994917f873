#include "Platform/HTTPStreamError.h"

#include <openssl/x509_vfy.h>

#include <array>
#include <cstring>

namespace platform {
namespace {

struct CertificateRow {
    long result;
    std::int32_t code;
};

constexpr std::array<CertificateRow, 11> kCertificateRows{{
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT, -9807},
    {X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT, -9807},
    {X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN, -9807},
    {X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY, -9807},
    {X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE, -9807},
    {X509_V_ERR_CERT_UNTRUSTED, -9807},
    {X509_V_ERR_CERT_HAS_EXPIRED, -9814},
    {X509_V_ERR_CERT_NOT_YET_VALID, -9815},
    // libcurl compares the name itself, and the result is then the one before anything was verified.
    {X509_V_ERR_UNSPECIFIED, -9843},
    {X509_V_ERR_HOSTNAME_MISMATCH, -9843},
    {X509_V_ERR_IP_ADDRESS_MISMATCH, -9843},
}};
constexpr std::int32_t kOtherCertificate = -9808;

struct TLSRow {
    CURLcode result;
    std::int32_t code;
    const char* problem; // before the server's name
};

constexpr std::array<TLSRow, 6> kTLSRows{{
    {CURLE_PEER_FAILED_VERIFICATION, kOtherCertificate, "no trust in the certificate of "},
    {CURLE_SSL_ISSUER_ERROR, kOtherCertificate, "no trust in the certificate of "},
    {CURLE_SSL_INVALIDCERTSTATUS, kOtherCertificate, "no trust in the certificate of "},
    {CURLE_SSL_CACERT_BADFILE, -9807, "no root certificates to check the one of "},
    {CURLE_SSL_CONNECT_ERROR, -9824, "no encrypted connection to "},
    {CURLE_SSL_CIPHER, -9801, "no common encryption with "},
}};

struct TransferRow {
    CURLcode result;
    const char* before; // the server's name
    const char* after;
};

constexpr std::array<TransferRow, 9> kTransferRows{{
    {CURLE_COULDNT_RESOLVE_HOST, "the name of ", " cannot be resolved"},
    {CURLE_COULDNT_CONNECT, "cannot connect to ", ""},
    {CURLE_GOT_NOTHING, "", " closed the connection without an answer"},
    {CURLE_PARTIAL_FILE, "", " closed the connection before its answer was complete"},
    {CURLE_RECV_ERROR, "the connection to ", " broke before the answer was complete"},
    {CURLE_SEND_ERROR, "the connection to ", " broke before it was asked"},
    {CURLE_TOO_MANY_REDIRECTS, "", " redirects again and again"},
    {CURLE_UNSUPPORTED_PROTOCOL, "", " answers in another protocol than HTTP, or redirects to one"},
    {CURLE_WEIRD_SERVER_REPLY, "", " does not speak HTTP"},
}};

std::int32_t certificateCode(long result) {
    for (const CertificateRow& row : kCertificateRows)
        if (row.result == result) return row.code;
    return kOtherCertificate;
}

std::string reason(const std::string& text) {
    return text.empty() ? text : ": " + text;
}

std::string transferProblem(const HTTPTransferFailure& failure) {
    for (const TransferRow& row : kTransferRows)
        if (row.result == failure.result)
            return row.before + failure.server + row.after +
                   reason(failure.systemError != 0 ? std::strerror(failure.systemError) : "");
    return "cannot read the answer of " + failure.server + reason(curl_easy_strerror(failure.result));
}

} // namespace

HTTPStreamError httpStreamError(const HTTPTransferFailure& failure) {
    for (const TLSRow& row : kTLSRows) {
        if (row.result != failure.result) continue;
        const bool verification = failure.result == CURLE_PEER_FAILED_VERIFICATION;
        return {verification ? certificateCode(failure.certificateResult) : row.code,
            HTTPStreamErrorDomain::tls, row.problem + failure.server + reason(failure.details)};
    }
    if (failure.systemError != 0)
        return {failure.systemError, HTTPStreamErrorDomain::system, transferProblem(failure)};
    return {failure.result, HTTPStreamErrorDomain::transfer, transferProblem(failure)};
}

} // namespace platform
