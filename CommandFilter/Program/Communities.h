// The SNMP communities that this machine's printing system asks with.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvan {

// Those of "snmp.conf" in the scheduler's folder of configuration (cups-snmp.conf(5)), in their order;
// "public" when it names none or cannot be read.
std::vector<std::string> snmpCommunities(const std::filesystem::path& serverRoot);

} // namespace orvan
