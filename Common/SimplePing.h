// Whether a host answers: ICMP echo requests (RFC 792) over IPv4, by datagram sockets, for which no privilege
// is needed. The system allows them to the groups of net.ipv4.ping_group_range alone, often to none
// (icmp(7)).
//
// All of it blocks its caller and may be called from several threads at once. Results are 0, -1 where an
// operation says so, or an error number of errno(3); 1 stands for an error without a number.
#pragma once

#include "Platform/FileDescriptor.h"

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvan {

// Sends `count` requests, each after the reply to the one before. 0 when every one got its reply, -1 as soon
// as one got none; EINVAL without a host, or when a number is below 1; otherwise the error of the step that
// failed. A system that does not permit the socket gives EACCES. WaitAndPrintICMPs describes the time-out, in
// milliseconds, and the flag.
int SimplePing(const char* host, int count, int timeout, bool returnsAfterFirstDatagram);

// EINVAL without a host or an address, EHOSTUNREACH for a name that does not resolve to an IPv4 address.
int LookupHostAddress(const char* host, sockaddr_in* address);

// A socket that waits one second for a datagram. EPFNOSUPPORT when the system's table of protocols has no
// "icmp", EACCES or EPERM when the system does not permit such a socket, 1 when it cannot be had for another
// reason.
int CreateSocketForCommunicationWithHost(platform::FileDescriptor* socket);

// Sends one request. The socket puts an identifier of its own in the place of the process's.
int CreateAndSendICMPPacket(sockaddr_in address, unsigned sequence, int socket);

// 0 when a reply to the socket came, whichever of its requests that belongs to, -1 when none did. Receives
// until the time-out (milliseconds, at least 1, above 1000 as 1000) has passed since the first datagram came
// or its second was over; with the flag only that first time.
int WaitAndPrintICMPs(int socket, int timeout, bool returnsAfterFirstDatagram, bool* replySeen);

// Whether the ICMP message, without IPv4 header, is a whole echo reply with this identifier, which is in
// network byte order.
bool isEchoReply(std::span<const std::uint8_t> message, std::uint16_t identifier);

// The Internet checksum of RFC 1071, in memory order; 0 for a message that holds its own.
std::uint16_t in_cksum(std::span<const std::uint8_t> bytes);

} // namespace orvan
