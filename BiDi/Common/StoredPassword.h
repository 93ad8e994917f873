// The password that a person stored for printers.
#pragma once

#include "Formats/Failure.h"

#include <string>
#include <string_view>

namespace orvan {

// Where it is: the domain of Platform/UserDefaults.h and the key of a string in it.
inline constexpr std::string_view kPasswordDomain = "com.orvan.qbv.print.pde.cocoa.OrvanJobType";
inline constexpr std::string_view kPasswordKey = "defaultPassword";

// "" when none is stored, or when what is there is not used; `problem` then says why: its file and the
// reason.
std::string storedPassword(platform::Failure& problem);
// The same with a line in the system log, once. Main thread.
std::string storedPassword();

} // namespace orvan
