#include "BiDi/Common/StoredPassword.h"

#include "Platform/SystemLog.h"
#include "Platform/UserDefaults.h"

namespace orvan {

std::string storedPassword(platform::Failure& problem) {
    const auto domain = platform::persistentDomainForName(kPasswordDomain, problem);
    if (!domain) return {};
    const auto found = domain->find(kPasswordKey);
    if (found == domain->end()) return {};
    const std::string* const password = found->second.asString();
    if (password == nullptr)
        problem = platform::persistentDomainPath(kPasswordDomain) + " is not used: its \"" +
                  std::string(kPasswordKey) + "\" is no text";
    return password != nullptr ? *password : std::string();
}

std::string storedPassword() {
    platform::Failure problem;
    std::string password = storedPassword(problem);
    // A job asks for it with every line.
    static std::string logged;
    if (problem && logged != *problem) platform::systemLog("the printer's password: " + *problem);
    logged = problem.value_or("");
    return password;
}

} // namespace orvan
