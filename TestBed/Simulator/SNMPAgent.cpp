#include "TestBed/Simulator/SNMPAgent.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <net-snmp/agent/net-snmp-agent-includes.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <array>

namespace orvan {
namespace {

constexpr const char* kProgram = "orvan-simulator";
constexpr const char* kAgentAddress = "127.0.0.1";
constexpr std::array<oid, 15> kJobAccounting = {1, 3, 6, 1, 4, 1, 97531, 8, 83, 1, 1, 2, 1, 7, 1};
constexpr const char* kReadableTree = ".1.3.6.1.4.1.97531";

// What keeps the library to itself.
constexpr std::array<int, 7> kSwitches = {
    NETSNMP_DS_LIB_DONT_READ_CONFIGS,
    NETSNMP_DS_LIB_DONT_LOAD_HOST_FILES,
    NETSNMP_DS_LIB_DONT_PERSIST_STATE,
    NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD,
    NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE,
    NETSNMP_DS_LIB_DISABLE_V3,
    NETSNMP_DS_LIB_ALARM_DONT_USE_SIG,
};

void keepLibraryToItself() {
    netsnmp_register_loghandler(NETSNMP_LOGHANDLER_NONE, LOG_DEBUG);
    for (const int which : kSwitches)
        netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, which, 1);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_MIBDIRS, "");
    // The library looks for certificates there, and makes folders for them: below a device it cannot.
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_CONFIGURATION_DIR, "/dev/null");
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_PERSISTENT_DIR, "/dev/null");
}

void allowReading(const std::string& community) {
    std::string line = "rocommunity \"";
    for (const char character : community) {
        if (character == '"' || character == '\\') line += '\\';
        line += character;
    }
    line.append("\" ").append(kAgentAddress).append(" ").append(kReadableTree);
    netsnmp_config(line.data());
}

int portOf(int socket) {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

} // namespace

std::unique_ptr<SNMPAgent> SNMPAgent::start(const SNMPAgentOptions& options, Failure* failure) {
    std::unique_ptr<SNMPAgent> agent(new SNMPAgent(options.jobAccounting));
    keepLibraryToItself();
    init_agent(kProgram);
    init_snmp(kProgram);
    *failure = agent->open(options);
    if (*failure) return nullptr;
    agent->thread_ = std::thread([served = agent.get()] { served->serve(); });
    return agent;
}

Failure SNMPAgent::open(const SNMPAgentOptions& options) {
    allowReading(options.community);
    if (netsnmp_register_read_only_int_instance("jobAccounting", kJobAccounting.data(), kJobAccounting.size(),
            &jobAccounting_, nullptr) != MIB_REGISTERED_OK)
        return "The SNMP object for job accounting could not be registered.";
    const std::string wanted = std::string("udp:") + kAgentAddress + ':' + std::to_string(options.port);
    netsnmp_transport* transport = netsnmp_transport_open_server("snmp", wanted.c_str());
    if (!transport)
        return "UDP port " + std::to_string(options.port) + " of " + kAgentAddress +
               " could not be opened: it is taken, or not for this user. Choose another with --snmp-port.";
    fcntl(transport->sock, F_SETFD, FD_CLOEXEC);
    port_ = portOf(transport->sock);
    registration_ = netsnmp_register_agent_nsap(transport);
    if (registration_ == 0) return "The SNMP agent could not be started.";
    return std::nullopt;
}

SNMPAgent::~SNMPAgent() {
    stop_.raise();
    if (thread_.joinable()) thread_.join();
    if (registration_ != 0) netsnmp_deregister_agent_nsap(registration_);
    snmp_shutdown(kProgram);
    shutdown_agent();
}

std::string SNMPAgent::address() const {
    return std::string(kAgentAddress) + ':' + std::to_string(port_);
}

void SNMPAgent::serve() const {
    while (true) {
        int count = stop_.descriptor() + 1;
        int block = 1;
        fd_set sockets;
        FD_ZERO(&sockets);
        timeval untilAlarm{};
        snmp_select_info(&count, &sockets, &untilAlarm, &block);
        FD_SET(stop_.descriptor(), &sockets);
        const int ready = select(count, &sockets, nullptr, nullptr, block != 0 ? nullptr : &untilAlarm);
        if (stop_.waitFor(std::chrono::milliseconds(0))) return;
        if (ready > 0)
            snmp_read(&sockets);
        else
            snmp_timeout();
        run_alarms();
        netsnmp_check_outstanding_agent_requests();
    }
}

} // namespace orvan
