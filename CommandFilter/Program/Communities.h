// The SNMP communities that this machine's printing system asks with.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orvan {

// Those of "snmp.conf" in the scheduler's folder of configuration (cups-snmp.conf(5)), in their order;
// "public" when it has no line of them or cannot be read. None when a line names none: SNMP is switched off
// then, and no agent is to be asked.
std::vector<std::string> snmpCommunities(const std::filesystem::path& serverRoot);

} // namespace orvan
