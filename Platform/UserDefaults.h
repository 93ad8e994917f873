// The settings of the person at whose desktop the process runs.
#pragma once

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
// is read afresh with each call. Nothing when there is no such file, or none that can be read.
//
// Domains hold passwords, so the file should be of mode 0600. A file that somebody else could have written
// counts as absent: one that belongs neither to this process's user nor to root, or that group or others may
// write. One that others may only read is taken, since refusing it would hide nothing any more. It counts as
// absent, too, when it is not a regular file or has more than 1 MiB.
std::optional<PropertyList::Dictionary> persistentDomainForName(std::string_view domain);

} // namespace platform
