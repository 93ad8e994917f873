// The file of remembered certificates gives servers and fingerprints that stand in it, and reads back as the
// same when it is written anew.
#include "CommandFilter/Program/KnownCertificates.h"

#include <cstdint>
#include <cstdlib>

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const orvan::CertificateTable table = orvan::readCertificates(text);
    std::string again;
    for (const auto& [server, fingerprint] : table) {
        promise(!server.empty() && server.find_first_of(" \n") == std::string::npos);
        const std::string line = server + ' ' + fingerprint + '\n';
        promise(line.size() == server.size() + 97 && text.find(line) != std::string::npos);
        again += line;
    }
    promise(orvan::readCertificates(again) == table);
    return 0;
}
