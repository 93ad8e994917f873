// The settings of the person at whose desktop the process runs.
#pragma once

#include "Formats/Failure.h"
#include "Formats/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// The languages that the person prefers, best first, as language tags with "-" ("de-AT", "de", "en"), from
// the locale settings of the process (LANGUAGE, LC_ALL, LC_MESSAGES, LANG). The C locale names no language,
// so the list can be empty.
std::vector<std::string> preferredLanguages();

// The account's display name, as UTF-8; empty when the account has none.
std::string fullUserName();

// The file of a named persistent domain: orvan/DOMAIN.plist in the person's configuration folder
// (XDG_CONFIG_HOME, otherwise ~/.config). Empty for a name that is not a plain file name.
std::string persistentDomainPath(std::string_view domain);

// A named persistent domain: what is in its file, a property list in any form whose root is a dictionary. It
// is read afresh with each call. Nothing when there is no such file, or none that is used; `problem` then
// says why a file that is there is not.
//
// Domains hold passwords. So a file is used when it belongs to this process's user or to root and nobody else
// may read or write it (mode 0600). It has to be a regular file of no more than 1 MiB.
std::optional<PropertyList::Dictionary> persistentDomainForName(
    std::string_view domain, Failure& problem = ignoredFailure());

} // namespace platform
