// The parts of a DNS message: names and questions (RFC 1035), SRV records (RFC 2782), TXT records.
//
// Every reader gets the whole message and the position, a byte's number in it, at which its part begins, and
// leaves the position behind the part. It answers 0 or what is wrong; then it has said so in a line (to
// DNSMessages, or on standard output), and the position is where the reading had come to. No reader looks
// outside the message, whatever the position, and each takes a time that the message's size bounds. Callable
// from any thread.
#pragma once

#include "Common/DNSCursor.h"
#include "Formats/MessageSink.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvan {

// Takes this thread's messages while it exists, instead of standard output.
using DNSMessages = platform::MessageSink<struct DNSReader>;

inline constexpr std::size_t kDNSHeaderSize = 12;
inline constexpr std::uint16_t kDNSClassIN = 1;
inline constexpr std::uint16_t kDNSTypeTXT = 16;
inline constexpr std::uint16_t kDNSTypeSRV = 33;

inline constexpr int kNameOffsetInvalid = -2; // a pointer that does not lead before the name's end
inline constexpr int kNamePastEnd = -3;
inline constexpr int kNameLoop = -4; // a pointer to the name's beginning, or to where one has led already
inline constexpr int kNameLabelInvalid = -5; // a label's length above 63
inline constexpr int kNameTooLong = -6;      // above 255 bytes, RFC 1035 section 2.3.4

// Each label followed by a dot, the last one too; the root is empty text. Labels are copied as they are. The
// name's end is behind its first pointer; every pointer is followed to where it leads before that, once. The
// destination may be null.
int decode_name(std::size_t* position, DNSBytes message, std::string* destination);

inline constexpr int kSRVOutside = -1;
inline constexpr int kSRVNameInvalid = -2; // the owner's or the target's
inline constexpr int kSRVTooShort = -3;    // fewer than 13 bytes from the type to the message's end
inline constexpr int kSRVDataInvalid = -4; // ends behind the message, or an SRV's before its target

// The target and the port, in network byte order; both are as they were when the record is of another type.
// The port may be null.
int decode_srv(std::size_t* position, DNSBytes message, std::string* target, std::uint16_t* port);

inline constexpr int kTXTNoDestination = -1;
inline constexpr int kTXTNoCapacity = -2;
inline constexpr int kTXTOutside = -3;
inline constexpr int kTXTNameInvalid = -4;
inline constexpr int kTXTTooShort = -5;
inline constexpr int kTXTCapacityTooSmall = -6; // the position is at the data; nothing is said
inline constexpr int kTXTDataInvalid = -7;

// Of the given vocabulary; nothing here calls it.
// The data as they are, with the length bytes of their strings. *capacity is the destination's size in bytes
// and becomes the number of bytes stored; both are as they were when the record is of another type. A null
// destination or capacity is an error of which nothing is said.
int decode_txt(std::size_t* position, DNSBytes message, std::uint8_t* destination, std::uint32_t* capacity);

inline constexpr int kQuestionOutside = -1;
inline constexpr int kQuestionNameInvalid = -2;
inline constexpr int kQuestionTooShort = -4; // its message has no line end

int skip_question(std::size_t* position, DNSBytes message);

} // namespace orvan
