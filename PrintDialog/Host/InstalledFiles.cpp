#include "PrintDialog/Host/InstalledFiles.h"

#include <dlfcn.h>
#include <sys/auxv.h>

#include <system_error>

namespace orvan {

std::filesystem::path privateFolder() {
    std::error_code status;
    Dl_info self{};
    Dl_info program{};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel tells the place as a number
    const auto* const headers = reinterpret_cast<const void*>(getauxval(AT_PHDR));
    if (dladdr(reinterpret_cast<const void*>(&privateFolder), &self) == 0 || dladdr(headers, &program) == 0)
        return {};
    if (self.dli_fbase != program.dli_fbase)
        return std::filesystem::canonical(self.dli_fname, status).parent_path();
    // The kernel knows the program's place; its own name for itself is whatever it was started with.
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", status).parent_path();
    return (folder / ORVAN_PRIVATE_FROM_PROGRAM).lexically_normal();
}

std::filesystem::path paperOptionsBundleFolder() {
    return privateFolder() / "OrvanPaperOptions.plugin";
}

std::filesystem::path gtkModuleFile() {
    return (privateFolder() / ORVAN_MODULE_FROM_PRIVATE_FOLDER).lexically_normal();
}

std::filesystem::path gtk4ModuleFile() {
    return (privateFolder() / ORVAN_GTK4_MODULE_FROM_PRIVATE_FOLDER).lexically_normal();
}

} // namespace orvan
