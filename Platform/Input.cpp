#include "Platform/Input.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <system_error>

namespace platform {

std::string readAll(std::istream& stream) {
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::optional<std::string> readFile(const std::string& file, Failure& error) {
    if (file == "-") return readAll(std::cin);
    std::error_code status;
    std::ifstream stream;
    if (std::filesystem::is_directory(file, status))
        errno = EISDIR;
    else
        stream.open(file, std::ios::binary);
    if (stream.is_open()) return readAll(stream);
    error = "cannot read " + file + ": " + std::strerror(errno);
    return std::nullopt;
}

} // namespace platform
