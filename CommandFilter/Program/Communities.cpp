#include "CommandFilter/Program/Communities.h"

#include <fstream>
#include <sstream>

namespace orvan {

std::vector<std::string> snmpCommunities(const std::filesystem::path& serverRoot) {
    std::vector<std::string> communities;
    std::ifstream file(serverRoot / "snmp.conf");
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string keyword;
        std::string community;
        if (words >> keyword >> community && keyword == "Community") communities.push_back(community);
    }
    if (communities.empty()) communities.emplace_back("public");
    return communities;
}

} // namespace orvan
