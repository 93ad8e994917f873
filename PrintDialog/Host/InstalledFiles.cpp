#include "PrintDialog/Host/InstalledFiles.h"

#include <dlfcn.h>

#include <system_error>

namespace orvan {

std::filesystem::path privateFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&privateFolder), &info) == 0 || info.dli_fname == nullptr)
        return {};
    std::error_code status;
    // A program knows itself by the name it was started with; the kernel knows better.
    std::filesystem::path self = std::filesystem::canonical(info.dli_fname, status);
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", status);
    if (self.extension() != ".so") self = program;

    for (std::filesystem::path folder = self.parent_path();; folder = folder.parent_path()) {
        std::filesystem::path candidate = folder / "lib" / "orvan";
        if (std::filesystem::is_directory(candidate, status)) return candidate;
        if (folder == folder.parent_path()) return {};
    }
}

std::filesystem::path paperOptionsBundleFolder() {
    return privateFolder() / "OrvanPaperOptions.plugin";
}

std::filesystem::path gtkModuleFile() {
    return (privateFolder() / ORVAN_MODULE_FROM_PRIVATE_FOLDER).lexically_normal();
}

} // namespace orvan
