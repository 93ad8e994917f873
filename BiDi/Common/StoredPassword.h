// The password that a person stored for printers.
#pragma once

#include <string>
#include <string_view>

namespace orvan {

// Where it is: the domain of Platform/UserDefaults.h and the key of a string in it.
inline constexpr std::string_view kPasswordDomain = "com.orvan.qbv.print.pde.cocoa.OrvanJobType";
inline constexpr std::string_view kPasswordKey = "defaultPassword";

// "" when none is stored, or what is stored is no text.
std::string storedPassword();

} // namespace orvan
