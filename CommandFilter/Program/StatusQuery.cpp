#include "CommandFilter/Program/StatusQuery.h"

#include "CommandFilter/OVOVGParser.h"
#include "CommandFilter/OVSNMPParser.h"
#include "CommandFilter/PrinterWords.h"
#include "CommandFilter/Program/Communities.h"
#include "Common/CommandJob.h"
#include "Common/Utilities/HostAddress.h"
#include "Common/Utilities/HostContact.h"
#include "Common/Utilities/URIParts.h"
#include "Common/Utilities/URLFetch.h"
#include "Platform/HTTPStream.h"

#include <strings.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvan {
namespace {

constexpr std::chrono::seconds kMaximumTime{20};
constexpr std::chrono::milliseconds kAgentPatience{900};
constexpr long kUnauthorized = 401; // RFC 9110, section 15.5.2
constexpr long kForbidden = 403;
constexpr long kFirstError = 400;
constexpr long kFirstServerError = 500;
constexpr long kUnavailable = 503; // RFC 9110, section 15.6.4

constexpr const char* kAddressAdvice =
    "the address is right: the queue's device, or OVNStatusDocument in its PPD.";

// Fills in the answer when the document's host is not there, and says so with true.
bool isAbsent(const PrinterAddress& address, const std::string& where, StatusAnswer& answer) {
    const std::optional<URIParts> url = separateURI(address.documentURL);
    if (!url) return false; // the fetch says why
    const HostContact contact = contactHost(url->host, url->port);
    if (!contact.pingProblem.empty())
        answer.trace.push_back("No reply to an echo request: " + contact.pingProblem +
                               (contact.isThere ? ". But a connection was accepted." : "."));
    if (contact.isThere) return false;
    answer.isOffline = true;
    answer.problemWord = problemWord::kOffline;
    answer.problem = where + " does not answer: " + contact.problem +
                     ". Check that it is switched on and connected to the network, and that " +
                     kAddressAdvice;
    return true;
}

std::string refusal(const std::string& where, long status, bool hadPassword) {
    if (status == kUnauthorized || status == kForbidden)
        return hadPassword ? where + " refuses the user name and password of this job. Correct the stored "
                                     "password."
                           : where + " wants a user name and a password. Store the printer's password, or "
                                     "permit everybody to read its status.";
    const std::string error = "HTTP " + std::to_string(status);
    if (status == kUnavailable)
        return where + " is starting or busy (" + error + "). Try again in a minute, or restart the printer.";
    if (status >= kFirstServerError)
        return where + " has an error of its own (" + error + "). Try again later, or restart the printer.";
    return where + " answers with the error " + error +
           ". Check the path: OVNStatusDocument in the queue's PPD.";
}

// A document for people begins with its type or its root (HTML Standard, section 13.1).
bool isWebPage(const std::string& bytes) {
    constexpr std::size_t kBeginning = 1024;
    std::string text = bytes.substr(0, kBeginning);
    std::ranges::transform(text, text.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text.find("<!doctype html") != std::string::npos || text.find("<html") != std::string::npos;
}

std::string whyNoTicket(
    const std::string& where, const FetchResult& result, const std::string& parseError, bool hadPassword) {
    if (result.status >= kFirstError) return refusal(where, result.status, hadPassword);
    if (!result.problem.empty()) return where + " did not give its whole status: " + result.problem;
    if (isWebPage(result.bytes))
        return where +
               " answers a web page, and no status document. Check the path: OVNStatusDocument in the "
               "queue's PPD.";
    const std::string reason =
        parseError.empty() ? "it has none of the sections of a status document" : parseError;
    return where + " answers something that is no status document (" + reason +
           "). Check the address: the queue's device, or OVNStatusDocument in its PPD.";
}

// Whether a redirect stays with the printer, and with TLS where that was used.
bool staysThere(const URIParts& from, const URIParts& to) {
    return strcasecmp(from.host.c_str(), to.host.c_str()) == 0 &&
           (from.scheme != "https" || to.scheme == "https");
}

// Fetches the document; redirects are followed as long as they stay with the printer.
FetchResult fetchFromPrinter(FetchRequest request, std::vector<std::string>& trace) {
    const auto deadline = std::chrono::steady_clock::now() + request.maximumTime;
    for (int count = 0;; ++count) {
        request.maximumTime = std::max(
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now()),
            std::chrono::milliseconds{0});
        FetchResult result = fetchDocument(request);
        const auto from = separateURI(request.url.value_or(""));
        const auto to = result.redirect.empty() ? std::nullopt : separateURI(result.redirect);
        if (!from || !to || count == platform::HTTPStream::kMaximumRedirects) return result;
        if (!staysThere(*from, *to)) {
            result.problem = "it leads to " + to->scheme + "://" + to->host + ", which is not asked";
            return result;
        }
        trace.push_back("The document is at " + to->scheme + "://" + to->host + to->resource + ".");
        request.url = result.redirect;
    }
}

} // namespace

StatusAnswer askForDocument(
    const PrinterAddress& address, const Credentials& credentials, const KnownCertificates& certificates) {
    StatusAnswer answer;
    const std::string where = "The printer at " + address.shownURL;
    if (isAbsent(address, where, answer)) return answer;

    FetchRequest request;
    request.url = address.documentURL;
    request.user = credentials.user;
    request.password = credentials.password;
    request.maximumSize = platform::XMLDocument::kMaximumSize + 1;
    request.maximumTime = kMaximumTime;
    request.followsRedirects = false;
    CertificateVerdict verdict;
    request.examineCertificate = [&](const std::string& server, const std::string& fingerprint) {
        verdict = certificates.examine(server, fingerprint);
        return verdict.refusal;
    };
    const FetchResult result = fetchFromPrinter(std::move(request), answer.trace);
    if (verdict.refusal) {
        answer.isOther = verdict.isOther;
        answer.problemWord = problemWord::kCertificate;
        answer.problem = where + " was not asked: " + *verdict.refusal + '.';
        return answer;
    }
    if (!result.uncheckedCertificate.empty())
        answer.trace.push_back(
            "Its certificate is one that nobody vouches for, with the SHA-256 fingerprint " +
            result.uncheckedCertificate + ".");
    answer.trace.push_back(address.shownURL + " answered HTTP " + std::to_string(result.status) + " with " +
                           std::to_string(result.bytes.size()) + " bytes");
    if (result.bytes.empty() && result.status == 0) {
        answer.isOffline = true;
        answer.problemWord = problemWord::kOffline;
        answer.problem = where + " does not answer: " + result.problem +
                         ". Check that its web server is on, and that " + kAddressAdvice;
        return answer;
    }
    platform::Failure parseError;
    if (const auto parser = OVOVGParser::initWithData(result.bytes, parseError, result.charset)) {
        const platform::XMLDocument& document = *parser->document();
        if (isStatusDocument(document)) {
            parser->writeToTicket(answer.ticket.emplace());
            addPrinterWords(document, *answer.ticket);
            return answer;
        }
    }
    const bool isPassword = result.status == kUnauthorized || result.status == kForbidden;
    answer.problemWord = isPassword ? problemWord::kPassword : problemWord::kDocument;
    answer.problem = whyNoTicket(where, result, parseError.value_or(""), credentials.password.has_value());
    return answer;
}

StatusAnswer askForAccounting(const PrinterAddress& address, const std::filesystem::path& serverRoot) {
    StatusAnswer answer;
    platform::SNMPRequest request;
    request.communities = snmpCommunities(serverRoot);
    if (request.communities.empty()) {
        answer.problemWord = problemWord::kAgentOff;
        answer.problem = "The printer's job accounting is not known: SNMP is switched off here, by a "
                         "\"Community\" without a name in " +
                         (serverRoot / "snmp.conf").string();
        return answer;
    }
    const HostAddress found = findHostAddress(address.snmpHost);
    if (!found.problem.empty()) {
        answer.problemWord = problemWord::kAgentSilent;
        answer.problem = "The printer's job accounting is not known: " + found.problem;
        return answer;
    }
    request.host = found.address.empty() ? address.snmpHost : found.address;
    request.port = address.snmpPort;
    request.objects = {std::string(OVSNMPJobAccountingOID)};
    request.patience = kAgentPatience / 2;
    request.retries = 1;
    platform::Failure problem;
    bool isSilent = false;
    if (const auto response = platform::getSNMPObjects(request, problem, &isSilent)) {
        OVSNMPParser::initWithSNMPResponse(&*response).writeToTicket(answer.ticket.emplace());
        return answer;
    }
    answer.problemWord = isSilent ? problemWord::kAgentSilent : problemWord::kAgentRefuses;
    answer.problem = "The printer's job accounting is not known: " + problem.value_or("");
    return answer;
}

} // namespace orvan
