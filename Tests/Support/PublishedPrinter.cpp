#include "Tests/Support/PublishedPrinter.h"

#include "Tests/Support/Processes.h"

#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvan {
namespace {

constexpr const char* kServices = "/etc/avahi/services";

} // namespace

PublishedPrinter::PublishedPrinter() {
    const std::string configuration =
        folder_.write("conf", "[server]\nhost-name=office-printer\nuse-ipv6=no\n"
                              "enable-dbus=no\n[wide-area]\nenable-wide-area=no\n");
    folder_.write("services/printer.service",
        "<service-group><name>Orvan 4500 in the Office</name>"
        "<service><type>_ipp._tcp</type><port>631</port></service></service-group>");
    mount((folder_.path() / "services").c_str(), kServices, nullptr, MS_BIND, nullptr);
    mount("tmpfs", "/run", "tmpfs", 0, nullptr);
    std::filesystem::create_directory("/run/avahi-daemon");
    process_ = fork();
    if (process_ != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    runInstead({kDaemon, "-f", configuration, "--no-drop-root", "--no-chroot", "--no-rlimits"});
}

PublishedPrinter::~PublishedPrinter() {
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
    umount(kServices);
}

} // namespace orvan
