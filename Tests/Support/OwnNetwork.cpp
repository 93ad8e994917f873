#include "Tests/Support/OwnNetwork.h"

#include "Platform/FileDescriptor.h"

#include <linux/sockios.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace orvan {
namespace {

// A bridge, which is down until somebody switches it on.
bool addDownInterface(int socket) {
    ifreq request{};
    std::snprintf(request.ifr_name, sizeof request.ifr_name, "down0");
    sockaddr_in address{AF_INET, 0, {htonl(0x0A090001)}, {}};
    std::memcpy(&request.ifr_addr, &address, sizeof address);
    return ::ioctl(socket, SIOCBRADDBR, request.ifr_name) == 0 &&
           ::ioctl(socket, SIOCSIFADDR, &request) == 0 && ::ioctl(socket, SIOCGIFFLAGS, &request) == 0 &&
           (request.ifr_flags & IFF_UP) == 0;
}

// Empty, or what does not work.
std::string enter(const OwnNetwork& network) {
    const auto problem = [](const std::string& what) { return what + ": " + std::strerror(errno); };
    if (::unshare(CLONE_NEWNET | CLONE_NEWNS) != 0) return problem("no namespace of one's own");
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return problem("no own mounts");

    const platform::FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM, 0));
    ifreq request{};
    std::snprintf(request.ifr_name, sizeof request.ifr_name, "lo");
    request.ifr_flags = static_cast<short>(IFF_UP | (network.multicast ? IFF_MULTICAST : 0));
    if (::ioctl(socket.get(), SIOCSIFFLAGS, &request) != 0) return problem("no loopback interface");

    if (network.hasDownInterface && !addDownInterface(socket.get())) return problem("no second interface");

    std::ofstream groups("/proc/sys/net/ipv4/ping_group_range");
    if (!(groups << network.pingGroups << std::endl)) return "net.ipv4.ping_group_range cannot be set";
    return {};
}

} // namespace

std::string inOwnNetwork(const OwnNetwork& network, const std::function<std::string()>& body) {
    return inChild({}, [&] {
        const std::string problem = enter(network);
        return problem.empty() ? body() : "skip: " + problem;
    });
}

} // namespace orvan
