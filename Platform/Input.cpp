#include "Platform/Input.h"

#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace platform {
namespace {

// False, and errno says why, when it cannot be read to its end.
bool readAll(int descriptor, std::string& bytes) {
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count == 0) return true;
        if (count > 0)
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
}

} // namespace

std::string nameOfInput(const std::string& file) {
    return file == "-" ? "standard input" : file;
}

std::optional<std::string> readFile(const std::string& file, Failure& error) {
    const bool isInput = file == "-";
    const FileDescriptor opened(isInput ? -1 : ::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    std::string bytes;
    if ((isInput || opened) && readAll(isInput ? STDIN_FILENO : opened.get(), bytes)) return bytes;
    error = "cannot read " + nameOfInput(file) + ": " + std::strerror(errno);
    return std::nullopt;
}

} // namespace platform
