#include "TestBed/Simulator/Certificate.h"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509v3.h>

#include <array>

namespace orvan {
namespace {

constexpr long kSecondsADay = 24L * 60 * 60;
constexpr long kVersion3 = 2; // as it is written in a certificate, RFC 5280 section 4.1.2.1

struct FreeKey {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct FreeCertificate {
    void operator()(X509* certificate) const { X509_free(certificate); }
};
struct FreeExtension {
    void operator()(X509_EXTENSION* extension) const { X509_EXTENSION_free(extension); }
};

bool addNames(X509* certificate) {
    const std::unique_ptr<X509_EXTENSION, FreeExtension> names(
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1,DNS:localhost"));
    return names && X509_add_ext(certificate, names.get(), -1) == 1;
}

bool fill(X509* certificate, EVP_PKEY* key) {
    static constexpr std::array<unsigned char, 16> kName = {"Simulated Orvan"};
    X509_NAME* name = X509_get_subject_name(certificate);
    return X509_set_version(certificate, kVersion3) == 1 &&
           ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1) == 1 &&
           X509_gmtime_adj(X509_getm_notBefore(certificate), 0) != nullptr &&
           X509_gmtime_adj(X509_getm_notAfter(certificate), kSecondsADay) != nullptr &&
           X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, kName.data(), -1, -1, 0) == 1 &&
           X509_set_issuer_name(certificate, name) == 1 && X509_set_pubkey(certificate, key) == 1 &&
           addNames(certificate) && X509_sign(certificate, key, EVP_sha256()) > 0;
}

} // namespace

TLSContext makeTLSContext(Failure* failure) {
    const std::unique_ptr<EVP_PKEY, FreeKey> key(EVP_EC_gen("P-256"));
    const std::unique_ptr<X509, FreeCertificate> certificate(X509_new());
    TLSContext context(SSL_CTX_new(TLS_server_method()));
    if (key && certificate && context && fill(certificate.get(), key.get()) &&
        SSL_CTX_use_certificate(context.get(), certificate.get()) == 1 &&
        SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1 &&
        SSL_CTX_set_num_tickets(context.get(), 0) == 1)
        return context;
    std::array<char, 256> reason{};
    ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
    *failure = std::string("A certificate could not be made: ") + reason.data() + '.';
    return nullptr;
}

} // namespace orvan
