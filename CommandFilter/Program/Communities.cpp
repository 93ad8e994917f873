#include "CommandFilter/Program/Communities.h"

#include <cups/file.h>
#include <strings.h>

#include <array>
#include <memory>

namespace orvan {
namespace {

struct CloseFile {
    void operator()(cups_file_t* file) const { cupsFileClose(file); }
};

} // namespace

std::vector<std::string> snmpCommunities(const std::filesystem::path& serverRoot) {
    std::vector<std::string> communities;
    const std::unique_ptr<cups_file_t, CloseFile> file(cupsFileOpen((serverRoot / "snmp.conf").c_str(), "r"));
    std::array<char, 1024> line{};
    char* value = nullptr;
    int number = 0;
    while (file && cupsFileGetConf(file.get(), line.data(), line.size(), &value, &number) != nullptr) {
        if (strcasecmp(line.data(), "Community") != 0) continue;
        if (value == nullptr || *value == '\0') return {};
        communities.emplace_back(value);
    }
    if (communities.empty()) communities.emplace_back("public");
    return communities;
}

} // namespace orvan
