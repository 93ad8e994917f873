#include "Orvan/PPDArgument.h"

#include "Platform/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace orvan {

std::unique_ptr<DialogPPD> openPPD(const std::string& file, platform::Failure& error) {
    if (file == "-") return DialogPPD::read(STDIN_FILENO, "the PPD on standard input", error);
    std::error_code ignored;
    if (!std::filesystem::is_fifo(file, ignored)) return DialogPPD::open(file, error);
    const platform::FileDescriptor pipe(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (pipe) return DialogPPD::read(pipe.get(), "the PPD in the pipe " + file, error);
    error = "cannot open the pipe " + file + ": " + std::strerror(errno);
    return nullptr;
}

} // namespace orvan
