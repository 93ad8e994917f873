#include "Orvan/Doctor/DesktopStations.h"

#include "BiDi/Common/StoredPassword.h"
#include "Orvan/Commands.h"
#include "Orvan/Doctor/ObjectFile.h"
#include "Orvan/Doctor/PortalStation.h"
#include "Orvan/Doctor/SessionModules.h"
#include "Platform/Bundle.h"
#include "Platform/UserDefaults.h"
#include "PrintDialog/Host/AdministratorSettings.h"
#include "PrintDialog/Host/HostNames.h"
#include "PrintDialog/Host/InstalledFiles.h"

#include <dlfcn.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string_view>

namespace orvan {
namespace {

Finding examineBundle() {
    const auto folder = paperOptionsBundleFolder();
    platform::Failure error;
    const auto bundle = platform::Bundle::open(folder, error);
    if (bundle == nullptr) return problem(*error, kReinstall);
    const auto plugin = bundle->createPrincipalClass(error);
    if (plugin == nullptr) return problem(*error, kReinstall);
    const platform::ViewOwner nobody{[](std::string_view, const std::shared_ptr<platform::View>&) {},
        [](std::string_view) { return platform::PopUpButton::Action(); }};
    if (!plugin->initWithBundle(bundle) || bundle->loadView("PaperOptions", nobody, error) == nullptr)
        return problem(error.value_or(folder.string() + ": the plug-in cannot work"), kReinstall);
    return ok(folder.string() + " is whole");
}

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

// A toolkit's module, what it opens, and what each must have.
struct ModuleFiles {
    const char* toolkit;
    std::string module;
    std::string host;
    const char* entry;
};

ModuleFiles gtk3Files() {
    return {"GTK 3", gtkModuleFile(), privateFolder() / kGtk3HostFile, "gtk_module_init"};
}

ModuleFiles gtk4Files() {
    return {"GTK 4", gtk4ModuleFile(), privateFolder() / kGtk4HostFile, "g_io_module_load"};
}

// In a process of its own: what is opened stays, and may be damaged.
Finding examineModule(const ModuleFiles& files) {
    const auto& [toolkit, module, host, entry] = files;
    std::error_code ignored;
    if (!std::filesystem::exists(module, ignored))
        return problem("the module " + module + " of " + toolkit + " is not there", kReinstall);
    for (const std::string& file : {module, host})
        if (const std::string other = otherArchitecture(file); !other.empty())
            return problem(std::string(file)
                               .append(" is for another kind of computer (")
                               .append(other)
                               .append(") than this (")
                               .append(ownArchitecture())
                               .append(")"),
                "Install the package orvan-paper-options for this kind of computer.");
    std::array<std::string, 5> words{"/proc/self/exe", kOpenModuleCommand.name, module, entry, host};
    std::array<char*, 6> arguments{
        words[0].data(), words[1].data(), words[2].data(), words[3].data(), words[4].data(), nullptr};
    char* said = nullptr;
    GError* error = nullptr;
    int status = 0;
    g_spawn_sync(nullptr, arguments.data(), nullptr, G_SPAWN_STDOUT_TO_DEV_NULL, nullptr, nullptr, nullptr,
        &said, &status, &error);
    const Text message(said);
    const std::unique_ptr<GError, decltype(&g_error_free)> failure(error, g_error_free);
    if (failure != nullptr)
        return notChecked(std::string("no process could be started: ") + failure->message);
    if (status == 0) return ok(module + " and what it opens can be loaded");
    std::string_view why = message != nullptr ? std::string_view(message.get()) : "";
    why = why.substr(0, why.find('\n'));
    constexpr std::string_view kPrefix = "orvan: ";
    if (why.starts_with(kPrefix)) why.remove_prefix(kPrefix.size());
    return problem(std::string(toolkit) + " cannot load its module: " +
                       (why.empty() ? module + " is damaged" : std::string(why)),
        kReinstall);
}

Finding examineGtk3Module() {
    return examineModule(gtk3Files());
}

// GTK 4 looks into its folder by itself. The list there saves it from opening the module to see what it
// offers.
Finding examineGtk4Module() {
    const ModuleFiles files = gtk4Files();
    Finding finding = examineModule(files);
    const std::filesystem::path module(files.module);
    if (finding.verdict != Verdict::ok) return finding;
    std::ifstream list(module.parent_path() / "giomodule.cache");
    const std::string names{std::istreambuf_iterator<char>(list), std::istreambuf_iterator<char>()};
    finding.found +=
        names.find(module.filename().string() + ":") != std::string::npos
            ? "; GTK 4's list of print back ends names it"
            : "; GTK 4's list of print back ends, which gio-querymodules(1) writes, does not name it";
    return finding;
}

// What mends a file whose password is not used.
std::string passwordAdvice(const std::string& file) {
    struct stat status {};
    const std::string name = '"' + file + '"';
    if (stat(file.c_str(), &status) != 0) return "Let this user open " + name + ".";
    if (status.st_uid != geteuid() && status.st_uid != 0)
        return "\"sudo chown " + std::string(g_get_user_name()) + " " + file + "\" makes it this user's.";
    if (S_ISREG(status.st_mode) && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return "\"chmod 600 " + file + "\" keeps the others out, who may know the password by now.";
    return "Write it anew, a property list with the text \"" + std::string(kPasswordKey) + "\", or remove " +
           name + ".";
}

// What goes with the questions of this person.
Finding examinePassword() {
    platform::Failure reason;
    const bool isStored = !storedPassword(reason).empty();
    const std::string file = platform::persistentDomainPath(kPasswordDomain);
    if (reason) return problem(*reason, passwordAdvice(file));
    return ok(isStored ? "one is stored in " + file + ", key " + std::string(kPasswordKey) + ", for you alone"
                       : "none is stored (" + file + ", key " + std::string(kPasswordKey) + ")");
}

Finding examineSession() {
    if (isSwitchedOff())
        return problem(
            std::string("this session has switched the paper options off (") + kSwitchVariable + "=off)",
            "Take that out of ~/.config/environment.d or ~/.xsessionrc, and log in again.");
    if (const AdministratorSettings settings = administratorSettings(); !settings.showsTab)
        return problem("the administrator has switched the paper options off, in " + settings.file,
            "\"Tab=true\" there switches them on for everybody.");
    if (auto named = examineSessionModules()) return *std::move(named);
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr)
        return notChecked("this is no desktop session", "Ask again in a terminal on the desktop.");
    return problem("GTK3_MODULES does not name orvan-paper-options-module, so this session's applications do "
                   "not load it",
        "After the package was installed, log out and in again.");
}

// What that process does: opens the shared objects as GTK and the module do.
int openModule(const Arguments& arguments) {
    struct Object {
        std::string file;
        const char* symbol;
    };
    const std::string entry = arguments.text("ENTRY");
    for (const auto& [file, symbol] :
        {Object{arguments.text("MODULE"), entry.c_str()}, Object{arguments.text("HOST"), kAttachFunction}}) {
        void* const object = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (object == nullptr || dlsym(object, symbol) == nullptr) return cannot(dlerror());
    }
    return kDone;
}

constexpr ArgumentSpec kOpenModuleArguments[]{
    {.name = "MODULE", .text = "", .count = ArgumentSpec::Count::required},
    {.name = "ENTRY", .text = "", .count = ArgumentSpec::Count::required},
    {.name = "HOST", .text = "", .count = ArgumentSpec::Count::required},
};

} // namespace

void examineDesktop(Checkup& checkup) {
    checkup.look("password", examinePassword);
    checkup.look("bundle", examineBundle);
    checkup.look("module", examineGtk3Module);
    checkup.look("GTK 4 module", examineGtk4Module);
    checkup.look("session", examineSession);
    checkup.look("portal", examinePortals);
}
const Command kOpenModuleCommand{
    .name = "open-module", .text = nullptr, .arguments = kOpenModuleArguments, .run = openModule};

} // namespace orvan
