#include "Common/RendezvousUtilities.h"

#include "Formats/TextEncoding.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Gestalt.h"
#include "Platform/HostLookup.h"
#include "Platform/LinkDatagram.h"

#include <arpa/nameser.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <poll.h>
#include <resolv.h>
#include <strings.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace orvan {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint16_t kPort = 5353;
constexpr std::uint32_t kGroup = 0xE00000FB;
constexpr int kTimeToLive = 255;
constexpr int kAttempts = 3;
constexpr std::chrono::milliseconds kWait{1000};
constexpr std::size_t kQuerySize = 1024;
constexpr std::size_t kMaximumAnswer = 9000; // RFC 6762, section 17
constexpr std::int32_t kResolverKnowsLocal = 0x1023;

sockaddr_in groupAddress() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kPort);
    address.sin_addr.s_addr = htonl(kGroup);
    return address;
}

// The text behind the last dot that something follows; empty when there is none.
std::string_view lastLabel(std::string_view name) {
    const std::size_t dot = name.size() < 2 ? std::string_view::npos : name.rfind('.', name.size() - 2);
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

bool isForMulticast(const char* name) {
    std::int32_t release = 0;
    if (platform::Gestalt(platform::kGestaltSystemVersion, &release) == 0 && release >= kResolverKnowsLocal)
        return false;
    const std::string label(lastLabel(name));
    return ::strcasecmp(label.c_str(), "local") == 0 || ::strcasecmp(label.c_str(), "local.") == 0;
}

std::vector<std::uint8_t> makeQuery(const char* name, int queryClass, int type) {
    if ((_res.options & RES_INIT) == 0 && ::res_init() != 0) return {};
    std::vector<std::uint8_t> query(kQuerySize);
    const int length = ::res_mkquery(ns_o_query, name, queryClass, type, nullptr, 0, nullptr, query.data(),
        static_cast<int>(query.size()));
    query.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return query;
}

// The IPv4 addresses of the interfaces that take part; nothing when the system does not tell.
std::optional<std::vector<in_addr>> multicastInterfaces() {
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) return std::nullopt;
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(list, &::freeifaddrs);
    std::vector<in_addr> addresses;
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_INET) continue;
        if ((entry->ifa_flags & (IFF_MULTICAST | IFF_POINTOPOINT)) != IFF_MULTICAST) continue;
        sockaddr_in address{};
        std::memcpy(&address, entry->ifa_addr, sizeof address);
        addresses.push_back(address.sin_addr);
    }
    return addresses;
}

// What ends a query that is under way.
enum class Manner : std::uint8_t {
    strict,  // the first failure of an interface or a datagram
    patient, // only an answer or the time
};

// One question to the local network.
class MulticastQuery {
public:
    MulticastQuery(std::vector<std::uint8_t> query, std::span<std::uint8_t> answer, Manner manner)
        : query_(std::move(query)), answer_(answer), manner_(manner) {}

    int run() {
        if (query_.empty()) return -1;
        socket_ = platform::FileDescriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        if (!socket_) return -1;
        const std::optional<std::vector<in_addr>> interfaces = multicastInterfaces();
        if (!interfaces || !set(IP_MULTICAST_TTL, kTimeToLive)) return -1;
        for (int attempt = 0; attempt < kAttempts && Clock::now() < deadline_; ++attempt) {
            if (!sendByAll(*interfaces)) return -1;
            if (const std::optional<int> result = waitForAnswer()) return *result;
        }
        errno = ETIMEDOUT;
        return -1;
    }

private:
    template <class T>
    bool set(int option, const T& value) {
        return ::setsockopt(socket_.get(), IPPROTO_IP, option, &value, sizeof value) == 0;
    }

    bool isPatient() const { return manner_ == Manner::patient; }

    // Whether that was enough to wait for an answer.
    bool sendByAll(const std::vector<in_addr>& interfaces) {
        const auto send = [this](in_addr address) { return sendBy(address); };
        if (!isPatient()) return std::ranges::all_of(interfaces, send);
        return std::ranges::count_if(interfaces, send) > 0;
    }

    bool sendBy(in_addr interfaceAddress) {
        return set(IP_MULTICAST_IF, interfaceAddress) &&
               ::sendto(socket_.get(), query_.data(), query_.size(), 0,
                   reinterpret_cast<const sockaddr*>(&mDNS_addr),
                   sizeof mDNS_addr) == static_cast<ssize_t>(query_.size());
    }

    // The result of the whole query; nothing when the attempt ended without one.
    std::optional<int> waitForAnswer() {
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now());
            if (left.count() <= 0) return std::nullopt;
            pollfd waiting{socket_.get(), POLLIN, 0};
            const int ready = ::poll(&waiting, 1, static_cast<int>(std::min(left, kWait).count()));
            if (ready < 0 && isPatient() && errno == EINTR) continue;
            if (ready < 0) return ready;
            if (ready == 0) return std::nullopt;
            const auto length = platform::receiveFromLink(socket_.get(), kPort, answer_);
            if (!length) continue; // anybody's
            if (*length <= 0 && isPatient()) continue;
            if (*length <= 0) return -1;
            if (isAnswer(static_cast<std::size_t>(*length))) return static_cast<int>(*length);
        }
    }

    // A message that the resolver cannot read counts as one, unless there is time for another; whoever reads
    // the answer finds out.
    bool isAnswer(std::size_t length) const {
        const std::span<const std::uint8_t> query(query_);
        const std::span<const std::uint8_t> answer = answer_.first(length);
        const int match = ::res_queriesmatch(std::to_address(query.begin()), std::to_address(query.end()),
            std::to_address(answer.begin()), std::to_address(answer.end()));
        return isPatient() ? match > 0 : match != 0;
    }

    std::vector<std::uint8_t> query_;
    std::span<std::uint8_t> answer_;
    Manner manner_;
    platform::FileDescriptor socket_;
    Clock::time_point deadline_ = Clock::now() + kMaximumMulticastTime;
};

int ask(const char* name, int queryClass, int type, std::span<std::uint8_t> answer, Manner manner) {
    if (isForMulticast(name)) return MulticastQuery(makeQuery(name, queryClass, type), answer, manner).run();
    return ::res_query(name, queryClass, type, answer.data(), static_cast<int>(answer.size()));
}

} // namespace

const sockaddr_in mDNS_addr = groupAddress();

int mDNS_res_query(const char* name, int queryClass, int type, std::span<std::uint8_t> answer) {
    return ask(name, queryClass, type, answer, Manner::strict);
}

int askLocalNetwork(const char* name, int queryClass, int type, std::span<std::uint8_t> answer) {
    return ask(name, queryClass, type, answer, Manner::patient);
}

std::optional<in_addr> addressUnderLocal(const std::string& host) {
    std::array<std::uint8_t, kMaximumAnswer> answer{};
    const int length = askLocalNetwork(host.c_str(), ns_c_in, ns_t_a, answer);
    ns_msg message{};
    if (length <= 0 || ::ns_initparse(answer.data(), std::min<int>(length, answer.size()), &message) != 0)
        return std::nullopt;
    ns_rr record{};
    in_addr address{};
    for (int i = 0; i < ns_msg_count(message, ns_s_an); ++i) {
        if (::ns_parserr(&message, ns_s_an, i, &record) != 0) return std::nullopt;
        if (ns_rr_type(record) != ns_t_a || ns_rr_rdlen(record) != sizeof address) continue;
        std::memcpy(&address, ns_rr_rdata(record), sizeof address);
        return address;
    }
    return std::nullopt;
}

std::optional<std::string> ResolveToIP(const std::optional<std::string>& host) {
    if (!host) return std::nullopt;
    const std::optional<std::string> text = platform::encodeLatin1(*host);
    const std::optional<in_addr> address = text ? platform::lookUpHost(*text) : std::nullopt;
    if (!address) return host;
    return platform::dottedText(*address);
}

} // namespace orvan
