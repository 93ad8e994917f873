#include "BiDi/Common/StoredPassword.h"

#include "Platform/UserDefaults.h"

namespace orvan {

std::string storedPassword() {
    const auto domain = platform::persistentDomainForName(kPasswordDomain);
    if (!domain) return {};
    const auto found = domain->find(kPasswordKey);
    const std::string* const password = found != domain->end() ? found->second.asString() : nullptr;
    return password != nullptr ? *password : std::string();
}

} // namespace orvan
