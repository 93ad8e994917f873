#include "Orvan/CommonOptions.h"

#include "Platform/Gestalt.h"

#include <algorithm>

namespace orvan {
namespace {

constexpr double kDefaultTimeout = 10; // seconds

} // namespace

std::string checkPositive(const std::string& number) {
    return numberIn(number).value_or(0) > 0 ? "" : "\"" + number + "\" is not a number above 0";
}

std::string checkNotNegative(const std::string& number) {
    return numberIn(number).value_or(-1) >= 0 ? "" : "\"" + number + "\" is not a number of 0 or more";
}

std::string checkServer(const std::string& server) {
    return server.empty() ? "a host is missing" : "";
}

std::string checkRelease(const std::string& release) {
    const bool wellFormed = !release.empty() &&
                            release.find_first_not_of("0123456789.") == std::string::npos &&
                            release.front() != '.' && release.back() != '.' &&
                            release.find("..") == std::string::npos && std::ranges::count(release, '.') <= 2;
    return wellFormed ? ""
                      : "\"" + release + "\" is not a release such as " + platform::kDefaultSystemRelease;
}

std::chrono::duration<double> timeoutIn(const Arguments& arguments) {
    return std::chrono::duration<double>(arguments.number("--timeout").value_or(kDefaultTimeout));
}

} // namespace orvan
