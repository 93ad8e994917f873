#include "Common/Utilities/URLFetch.h"
#include "Formats/OneLine.h"
#include "Orvan/Commands.h"
#include "Orvan/PasswordPrompt.h"
#include "Orvan/Terminal.h"

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

namespace orvan {
namespace {

constexpr const char* kPasswordVariable = "ORVAN_PASSWORD";

std::optional<std::string> passwordFor(const std::optional<std::string>& user) {
    if (!user) return std::nullopt;
    if (const char* const password = std::getenv(kPasswordVariable)) return password;
    return askForPassword("Password of " + platform::onOneLine(*user) + ": ");
}

// What is wrong with the answer, for people; empty when it is a document.
std::string problemOf(const FetchResult& result) {
    if (!result.problem.empty()) return result.problem;
    if (result.status >= 200 && result.status < 300) return {};
    const std::string problem = "the server answers with HTTP status " + std::to_string(result.status);
    return result.status == 401 ? problem + ": it wants a user (--user) and the right password" : problem;
}

FetchResult fetch(const FetchRequest& request) {
    ProgressLine line;
    line.show("Waiting for the document");
    return fetchDocument(request);
}

int writeDocument(const Arguments& arguments) {
    const std::optional<std::string> user = arguments.optionalText("--user");
    FetchRequest request{arguments.text("URL"), user, passwordFor(user)};
    const FetchResult result = fetch(request);
    if (!result.uncheckedCertificate.empty())
        say("certificate not checked: nobody vouches for it; its SHA-256 fingerprint is " +
            result.uncheckedCertificate);
    std::cout.write(result.bytes.data(), static_cast<std::streamsize>(result.bytes.size()));
    const std::string problem = problemOf(result);
    return problem.empty() ? kDone : cannot(platform::onOneLine(problem));
}

// The URL is not repeated, for the same reason for which it is refused. RFC 3986 section 3.2: what stands
// before an @ is the user's.
std::string checkURL(const std::string& url) {
    const std::size_t scheme = url.find(":/");
    const std::size_t start = url.find_first_not_of('/', scheme == std::string::npos ? 0 : scheme + 1);
    const bool hasUser = url.substr(0, url.find_first_of("/?#", start)).find('@') != std::string::npos;
    return hasUser ? std::string(
                         "a user or password in the URL is not taken, others can see it; use --user and ") +
                         kPasswordVariable
                   : "";
}

constexpr ArgumentSpec kFetchArguments[]{
    {.name = "URL",
        .text = "The document: http://... or https://...",
        .count = ArgumentSpec::Count::required,
        .check = checkURL},
    {.name = "--user", .text = "The user whom the server knows", .value = "NAME"},
};

} // namespace

const Command kFetchCommand{
    .name = "fetch",
    .text = "Get a document from a printer's web server",
    .arguments = kFetchArguments,
    .footer = "The password of the user is that of the environment variable ORVAN_PASSWORD; without it, it "
              "is asked for.\nA certificate that cannot be checked is accepted, with a line that says so.\n"
              "Examples:\n"
              "  orvan fetch \"$(orvan url -q Office)/status.xml\" | orvan ticket -\n"
              "  orvan fetch http://printer.example/status.xml --user admin > status.xml",
    .run = writeDocument,
};

} // namespace orvan
