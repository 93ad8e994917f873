#include "Common/SimplePing.h"

#include "Platform/HostLookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/ip_icmp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>

namespace orvan {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMessageSize = 48;
constexpr std::size_t kChecksumOffset = 2;
constexpr std::size_t kIdentifierOffset = 4;
constexpr std::size_t kSequenceOffset = 6;
constexpr std::size_t kSecondsOffset = 32;
constexpr std::size_t kMicrosecondsOffset = 40;

constexpr std::size_t kDatagramSize = 2048;
constexpr int kReceiveBuffer = 51200; // bytes
constexpr timeval kReceiveTimeout{1, 0};
constexpr std::chrono::milliseconds kLongestWait{1000};
constexpr int kUnnumberedError = 1;

using Message = std::array<std::uint8_t, kMessageSize>;

int lastError() {
    return errno != 0 ? errno : kUnnumberedError;
}

template <class T>
void put(Message& message, std::size_t offset, T value) {
    std::memcpy(std::span(message).subspan(offset, sizeof value).data(), &value, sizeof value);
}

Message echoRequest(unsigned sequence) {
    using namespace std::chrono;
    Message message{};
    const auto now = system_clock::now().time_since_epoch();
    const auto wholeSeconds = duration_cast<seconds>(now);
    message[0] = ICMP_ECHO;
    put(message, kIdentifierOffset, static_cast<std::uint16_t>(::getpid()));
    put(message, kSequenceOffset, static_cast<std::uint16_t>(sequence));
    put(message, kSecondsOffset, static_cast<std::int64_t>(wholeSeconds.count()));
    put(message, kMicrosecondsOffset,
        static_cast<std::int32_t>(duration_cast<microseconds>(now - wholeSeconds).count()));
    put(message, kChecksumOffset, in_cksum(message));
    return message;
}

// The identifier that the system has given the socket, which stands where other sockets have a port.
std::optional<std::uint16_t> identifierOf(int socket) {
    sockaddr_in own{};
    socklen_t size = sizeof own;
    if (::getsockname(socket, reinterpret_cast<sockaddr*>(&own), &size) != 0) return std::nullopt;
    return own.sin_port;
}

} // namespace

int SimplePing(const char* host, int count, int timeout, bool returnsAfterFirstDatagram) {
    if (host == nullptr || count < 1 || timeout < 1) return EINVAL;
    sockaddr_in address{};
    if (const int error = LookupHostAddress(host, &address); error != 0) return error;
    platform::FileDescriptor socket;
    if (const int error = CreateSocketForCommunicationWithHost(&socket); error != 0) return error;

    int result = 0;
    for (int sequence = 0; sequence < count && result == 0; ++sequence) {
        result = CreateAndSendICMPPacket(address, static_cast<unsigned>(sequence), socket.get());
        bool replySeen = false;
        if (result == 0)
            result = WaitAndPrintICMPs(socket.get(), timeout, returnsAfterFirstDatagram, &replySeen);
    }
    return result;
}

int LookupHostAddress(const char* host, sockaddr_in* address) {
    if (host == nullptr || address == nullptr) return EINVAL;
    *address = {};
    in_addr found{::inet_addr(host)};
    if (found.s_addr == INADDR_NONE) {
        const std::optional<in_addr> lookedUp = platform::lookUpHost(host);
        if (!lookedUp) return EHOSTUNREACH;
        found = *lookedUp;
    }
    address->sin_family = AF_INET;
    address->sin_addr = found;
    return 0;
}

int CreateSocketForCommunicationWithHost(platform::FileDescriptor* socket) {
    std::array<char, 1024> texts{};
    protoent entry{};
    protoent* protocol = nullptr;
    if (::getprotobyname_r("icmp", &entry, texts.data(), texts.size(), &protocol) != 0 || protocol == nullptr)
        return EPFNOSUPPORT;
    *socket = platform::FileDescriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, protocol->p_proto));
    if (!*socket) return errno == EACCES || errno == EPERM ? errno : kUnnumberedError;

    ::setsockopt(socket->get(), SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
    if (::setsockopt(socket->get(), SOL_SOCKET, SO_RCVTIMEO, &kReceiveTimeout, sizeof kReceiveTimeout) != 0) {
        const int error = lastError();
        socket->reset();
        return error;
    }
    return 0;
}

int CreateAndSendICMPPacket(sockaddr_in address, unsigned sequence, int socket) {
    const Message message = echoRequest(sequence);
    errno = 0;
    const ssize_t sent = ::sendto(socket, message.data(), message.size(), 0,
        reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return sent == static_cast<ssize_t>(message.size()) ? 0 : lastError();
}

int WaitAndPrintICMPs(int socket, int timeout, bool returnsAfterFirstDatagram, bool* replySeen) {
    if (replySeen == nullptr || timeout < 1) return EINVAL;
    *replySeen = false;
    errno = 0;
    const std::optional<std::uint16_t> identifier = identifierOf(socket);
    if (!identifier) return lastError();

    const auto limit = std::min(std::chrono::milliseconds(timeout), kLongestWait);
    std::optional<Clock::time_point> start;
    bool isOver = false;
    while (!isOver) {
        std::array<std::uint8_t, kDatagramSize> datagram{};
        const ssize_t length = ::recv(socket, datagram.data(), datagram.size(), 0);
        const bool failed = length < 0 && errno != EAGAIN;
        const auto now = Clock::now();
        if (!start) start = now;
        if (length > 0 &&
            isEchoReply(std::span(datagram).first(static_cast<std::size_t>(length)), *identifier))
            *replySeen = true;
        isOver = failed || returnsAfterFirstDatagram || now - *start >= limit;
    }
    return *replySeen ? 0 : -1;
}

bool isEchoReply(std::span<const std::uint8_t> message, std::uint16_t identifier) {
    if (message.size() < kMessageSize || message.front() != ICMP_ECHOREPLY) return false;
    std::uint16_t own = 0;
    std::memcpy(&own, message.subspan(kIdentifierOffset).data(), sizeof own);
    return own == identifier;
}

std::uint16_t in_cksum(std::span<const std::uint8_t> bytes) {
    std::uint32_t sum = 0;
    for (; bytes.size() > 1; bytes = bytes.subspan(2)) {
        std::uint16_t word = 0;
        std::memcpy(&word, bytes.data(), sizeof word);
        sum += word;
    }
    if (!bytes.empty()) sum += bytes.front();
    sum = (sum >> 16U) + (sum & 0xFFFFU);
    sum += sum >> 16U;
    return static_cast<std::uint16_t>(~sum);
}

} // namespace orvan
