// The certificates of printers that nobody vouches for, remembered from the first time.
#pragma once

#include "Formats/Failure.h"

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace orvan {

// From a server ("host:port", small letters) to the fingerprint of its certificate, as
// Platform/HTTPStream.h has it.
using CertificateTable = std::map<std::string, std::string, std::less<>>;

// The file's text: a line a certificate, the server, a space and the fingerprint. Of several lines of a
// server the last counts; a line that is none of these is skipped.
CertificateTable readCertificates(std::string_view text);

// What came of looking one up.
struct CertificateVerdict {
    // For people: why the certificate is not to be used. Nothing when it is the one that is remembered, and
    // when there was none, so that it is the one from now on.
    platform::Failure refusal;
    bool isOther = false; // because another one is remembered
};

// Several processes may use the same file at once.
class KnownCertificates {
public:
    // usualFile() without an argument.
    KnownCertificates() : KnownCertificates(usualFile()) {}
    explicit KnownCertificates(std::filesystem::path file) : file_(std::move(file)) {}

    // In the scheduler's cache folder for its filters and for root, and in that of a person otherwise.
    static std::filesystem::path usualFile();

    // A certificate that cannot be remembered is refused as well.
    CertificateVerdict examine(const std::string& server, const std::string& fingerprint) const;

    // Remembers this one instead; *before, when given, becomes the one that was remembered, or "".
    platform::Failure accept(
        const std::string& server, const std::string& fingerprint, std::string* before) const;

private:
    std::filesystem::path file_;
};

// Asks the server ("host", "host:port", or the URL of a document there) for its certificate, and remembers it
// in the place of the one before. Says what it did on standard output and what went wrong on standard error,
// and answers the exit code. The scheduler's certificates: for root alone.
int acceptCertificate(const std::string& server);

} // namespace orvan
