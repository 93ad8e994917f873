// A command filter for tests, which has its answers in files: it answers each command of
// its job with the bytes of the file of that name in the folder ORVAN_ANSWERS, and commands without a file
// not at all. Run as filter(7) says.
#include "BiDi/ppdx.h"
#include "Common/CommandJob.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

namespace {

void answer(std::istream& job, const std::string& number, const std::filesystem::path& folder) {
    std::string line;
    std::getline(job, line); // #CUPS-COMMAND
    while (std::getline(job, line)) {
        const std::string command = line.substr(0, line.find(' '));
        std::ifstream file(folder / command, std::ios::binary);
        if (command.empty() || command.find('/') != std::string::npos || !file) continue;
        const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        orvan::ppdxWriteData(command.c_str(), bytes.data(), bytes.size());
        if (!number.empty()) std::cerr << "PPD: " << command << orvan::kAnswerJob << '=' << number << '\n';
    }
}

} // namespace

int main(int count, char** arguments) {
    const char* const folder = std::getenv("ORVAN_ANSWERS");
    if (folder == nullptr) return 0;
    if (count > 6) {
        std::ifstream job(arguments[6], std::ios::binary);
        answer(job, arguments[1], folder);
    } else {
        answer(std::cin, count > 1 ? arguments[1] : "", folder);
    }
    return 0;
}
