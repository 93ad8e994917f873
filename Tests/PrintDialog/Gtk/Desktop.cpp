#include "Tests/PrintDialog/Gtk/Desktop.h"

#include "Tests/PrintDialog/Gtk/Widgets.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/SystemLog.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

// Only an application that hangs takes that many seconds.
constexpr unsigned kPatience = 600;

// GTK 3 says these by itself where the compositor has neither keyboard nor mouse.
bool isOfNoSeat(const std::string& complaint) {
    return complaint.find("'GDK_IS_SEAT (seat)'") != std::string::npos ||
           complaint.find("'GDK_IS_DEVICE (device)'") != std::string::npos;
}

bool leaksAreGTKs = false;

std::vector<std::string>& complaints() {
    static std::vector<std::string> lines;
    return lines;
}

GLogWriterOutput keepComplaint(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer data) {
    if ((level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR)) != 0)
        for (gsize i = 0; i < count; ++i)
            if (const std::string text = static_cast<const char*>(fields[i].value);
                std::string(fields[i].key) == "MESSAGE" && !isOfNoSeat(text))
                complaints().push_back(text);
    return g_log_writer_default(level, fields, count, data);
}

} // namespace

// What GTK's print back end and the font library leave behind by themselves, dialog or not. Whole call stacks
// are needed to tell these from leaks of ours.
// NOLINTBEGIN(bugprone-reserved-identifier): the sanitizers' names
extern "C" const char* __asan_default_options();
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0:malloc_context_size=10";
}
extern "C" const char* __lsan_default_suppressions();
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    // In later releases also the graphics driver, and the dialog's own option widgets and styles.
    return glib_check_version(2, 76, 0) != nullptr
               ? "leak:libfontconfig\nleak:g_strdupv\n"
               : "leak:libfontconfig\nleak:g_strdupv\nleak:libGLX_mesa\n"
                 "leak:gtk_printer_option_widget_set_source\nleak:g_slice_alloc0\n";
}
extern "C" int __lsan_is_turned_off();
extern "C" __attribute__((visibility("default"))) int __lsan_is_turned_off() {
    return leaksAreGTKs ? 1 : 0;
}
// NOLINTEND(bugprone-reserved-identifier)

namespace orvan::test {

void doNotLookForLeaks() {
    leaksAreGTKs = true;
}

std::vector<std::string> systemLogLines() {
    return logLines;
}
std::vector<std::string> gtkComplaints() {
    return complaints();
}

std::filesystem::path builtModule() {
    return ORVAN_MODULE_FILE;
}

std::unique_ptr<Display> Display::start(std::string* problem) {
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) != 0) return nullptr;
    const pid_t process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        close(pipe[0]);
        const std::string number = std::to_string(pipe[1]);
        static_cast<void>(!std::freopen("/dev/null", "w", stderr));
        execlp("Xvfb", "Xvfb", "-displayfd", number.c_str(), "-screen", "0", "1280x1024x24", "-nolisten",
            "tcp", "-noreset", nullptr);
        _exit(127);
    }
    close(pipe[1]);
    std::string name;
    for (char c = 0; read(pipe[0], &c, 1) == 1 && c != '\n';)
        name += c;
    close(pipe[0]);
    std::unique_ptr<Display> display(new Display(process, ":" + name));
    if (!name.empty()) return display;
    *problem = "no display: Xvfb does not start (Debian package xvfb)";
    return nullptr;
}

Display::~Display() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

Desktop Desktop::start(const PrintingSystemOptions& options) {
    Desktop desktop;
    desktop.display = Display::start(&desktop.skipReason);
    if (desktop.display == nullptr) return desktop;
    Failure failure;
    desktop.printing = PrintingSystem::start(options, &failure);
    if (desktop.printing == nullptr) {
        desktop.skipReason = "no printing system: " + failure.value_or("");
        return desktop;
    }
    DerivedPPD other;
    other.replace("*Manufacturer: \"Orvan\"", "*Manufacturer: \"Other\"");
    for (const auto& [queue, ppd] : {std::pair<std::string, std::filesystem::path>{"Office", ORVAN_PPD_FILE},
             {"Annex", ORVAN_PPD_FILE}, {"Other", other.file()}})
        if (Failure added = desktop.printing->addQueue({.name = queue, .ppdFile = ppd}); added)
            desktop.skipReason = *added;
    return desktop;
}

Environment Desktop::environment() const {
    const std::filesystem::path& home = printing->folder().home();
    const std::filesystem::path runtime = home / "runtime";
    std::filesystem::create_directory(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    // No bus answers, so that none starts what this machine happens to have: portals, file systems, settings.
    Environment variables{{"DISPLAY", display->name()}, {"GDK_BACKEND", "x11"}, {"GSK_RENDERER", "cairo"},
        {"GDK_DEBUG", "gl-disable"}, {"GDK_DISABLE", "gl"}, {"NO_AT_BRIDGE", "1"}, {"GTK_A11Y", "none"},
        {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (runtime / "no-bus").string()},
        {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (runtime / "no-bus").string()}, {"GTK_USE_PORTAL", "0"},
        {"GIO_USE_VFS", "local"}, {"GSETTINGS_BACKEND", "memory"}, {"XDG_RUNTIME_DIR", runtime.string()},
        // The printer is asked for the names of its papers by the tests of that alone.
        {"ORVAN_SYSTEM_RELEASE", "10.10"}};
    for (const auto& [name, value] : printing->environment())
        variables[name] = value;
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        variables[name] = (home / name).string();
    for (const char* name :
        {"AT_SPI_BUS_ADDRESS", "DESKTOP_SESSION", "GTK_IM_MODULE", "GTK_MODULES", "GTK_PATH", "GTK_THEME",
            "LANGUAGE", "LC_ALL", "ORVAN_PAPER_OPTIONS", "WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP"})
        variables[name] = std::nullopt;
    return variables;
}

bool Desktop::runApplication(const std::vector<std::string>& environment, const std::function<void()>& body,
    const std::filesystem::path& module) const {
    std::fflush(nullptr);
    const pid_t process = fork();
    if (process == 0) {
        alarm(kPatience);
        printing->adoptEnvironment();
        changeEnvironment(this->environment());
        const auto [name, value] = moduleVariable(module);
        setenv(name.c_str(), value.c_str(), 1);
        for (const std::string& variable : environment) {
            const std::size_t equals = variable.find('=');
            setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
        }
        g_log_set_writer_func(keepComplaint, nullptr, nullptr);
        body();
        std::fflush(nullptr);
        std::exit(::testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status)) ADD_FAILURE() << "the application was ended by signal " << WTERMSIG(status);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace orvan::test
