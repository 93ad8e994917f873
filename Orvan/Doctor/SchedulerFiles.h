// The files of the scheduler, where it runs on this computer and this user may look.
#pragma once

#include "Orvan/Doctor/Checkup.h"

#include <sys/types.h>

#include <optional>
#include <string>

namespace orvan {

// As whom the scheduler runs: who has made its socket. Root, where that cannot be seen.
uid_t schedulerUser();

// A problem when the scheduler's filters, which run as the user and the group of cups-files.conf(5), may not
// read the PPD that the scheduler keeps for the queue; nothing when they may, or when that cannot be seen.
std::optional<Finding> examineFileOfPPD(const std::string& queue);

// Why the scheduler has no room for a job: what is free on the disk of its spool folder.
Finding examineSpool();

} // namespace orvan
