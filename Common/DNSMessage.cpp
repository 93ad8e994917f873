#include "Common/DNSMessage.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <vector>

namespace orvan {
namespace {

constexpr unsigned kPointerBits = 0xC0;
constexpr unsigned kMaximumLabel = 63;
constexpr std::size_t kMaximumName = 255; // bytes, with length bytes and the root's
constexpr std::size_t kSRVDataBeforeTarget = 6;

constexpr const char* kRanOff = "decode error, ran off the buffer";
constexpr const char* kNoData = "decode error, packet too short for reported rr length";

void say(const char* message) {
    if (!DNSMessages::take(message)) std::puts(message);
}

int fail(int code, const char* message) {
    say(message);
    return code;
}

enum class RecordFault { none, outside, name, tooShort, data };

struct Record {
    std::uint16_t type = 0;
    std::size_t dataPosition = 0;
    DNSBytes data;
};

// Leaves the position at the data when the record has so much as a length of them.
RecordFault readRecord(std::size_t* position, DNSBytes message, Record* record) {
    if (*position >= message.size()) {
        say(kRanOff);
        return RecordFault::outside;
    }
    if (decode_name(position, message, nullptr) != 0) return RecordFault::name;

    constexpr std::size_t kLeast = 13;
    constexpr std::size_t kClassAndTime = 6;
    DNSCursor cursor(message, *position);
    if (cursor.left() < kLeast) {
        say("decode error, packet too short for type, class, ttl, and length");
        return RecordFault::tooShort;
    }
    record->type = cursor.number().value_or(0);
    cursor.bytes(kClassAndTime);
    const std::size_t length = cursor.number().value_or(0);
    *position = record->dataPosition = cursor.position();
    const std::optional<DNSBytes> data = cursor.bytes(length);
    if (!data) {
        say(kNoData);
        return RecordFault::data;
    }
    record->data = *data;
    return RecordFault::none;
}

// By RecordFault.
constexpr std::array<int, 5> kSRVCodes{0, kSRVOutside, kSRVNameInvalid, kSRVTooShort, kSRVDataInvalid};
constexpr std::array<int, 5> kTXTCodes{0, kTXTOutside, kTXTNameInvalid, kTXTTooShort, kTXTDataInvalid};

} // namespace

int decode_name(std::size_t* position, DNSBytes message, std::string* destination) {
    if (destination != nullptr) destination->clear();
    constexpr const char* kPastEnd = "\ndecode error, name extends past end of packet";
    DNSCursor cursor(message, *position);
    const std::size_t start = *position;
    std::vector<bool> targets; // by position; empty before the first pointer
    std::size_t size = 1;      // the root's byte
    bool hasJumped = false;
    for (;;) {
        const std::optional<std::uint8_t> length = cursor.byte();
        if (!length) return fail(kNamePastEnd, kPastEnd);
        if (*length == 0) break;
        if ((*length & kPointerBits) == kPointerBits) {
            const std::optional<std::uint8_t> low = cursor.byte();
            if (!low) return fail(kNamePastEnd, kPastEnd);
            if (!hasJumped) *position = cursor.position();
            hasJumped = true;
            const std::size_t target = (*length & ~kPointerBits) << 8U | *low;
            if (target >= *position)
                return fail(kNameOffsetInvalid, "\ndecode error, compression offset invalid!");
            if (targets.empty()) targets.resize(message.size());
            if (target == start || targets[target])
                return fail(kNameLoop, "\ndecode error, compression offset yields loop!");
            targets[target] = true;
            cursor.moveTo(target);
            continue;
        }
        const std::optional<DNSBytes> label = cursor.bytes(*length);
        if (!label || cursor.left() == 0) return fail(kNamePastEnd, kPastEnd);
        if (*length > kMaximumLabel)
            return fail(kNameLabelInvalid, "\ndecode error, label longer than 63 bytes");
        size += 1 + label->size();
        if (size > kMaximumName) return fail(kNameTooLong, "\ndecode error, name longer than 255 bytes");
        if (destination != nullptr) destination->append(label->begin(), label->end()).append(1, '.');
    }
    if (!hasJumped) *position = cursor.position();
    return 0;
}

int decode_srv(std::size_t* position, DNSBytes message, std::string* target, std::uint16_t* port) {
    Record record;
    const RecordFault fault = readRecord(position, message, &record);
    if (fault != RecordFault::none) return kSRVCodes[static_cast<std::size_t>(fault)];
    if (record.type == kDNSTypeSRV) {
        if (record.data.size() < kSRVDataBeforeTarget) return fail(kSRVDataInvalid, kNoData);
        constexpr std::size_t kPortPosition = 4;
        if (port != nullptr) std::memcpy(port, record.data.subspan(kPortPosition).data(), sizeof *port);
        std::size_t targetPosition = record.dataPosition + kSRVDataBeforeTarget;
        if (decode_name(&targetPosition, message, target) != 0) return kSRVNameInvalid;
    }
    *position += record.data.size();
    return 0;
}

int decode_txt(std::size_t* position, DNSBytes message, std::uint8_t* destination, std::uint32_t* capacity) {
    if (destination == nullptr) return kTXTNoDestination;
    if (capacity == nullptr) return kTXTNoCapacity;
    Record record;
    const RecordFault fault = readRecord(position, message, &record);
    if (fault != RecordFault::none) return kTXTCodes[static_cast<std::size_t>(fault)];
    if (record.type == kDNSTypeTXT) {
        if (*capacity < record.data.size()) return kTXTCapacityTooSmall;
        std::ranges::copy(record.data, destination);
        *capacity = static_cast<std::uint32_t>(record.data.size());
    }
    *position += record.data.size();
    return 0;
}

int skip_question(std::size_t* position, DNSBytes message) {
    if (*position >= message.size()) return fail(kQuestionOutside, kRanOff);
    if (decode_name(position, message, nullptr) != 0) return kQuestionNameInvalid;
    constexpr std::size_t kTypeAndClass = 4;
    DNSCursor cursor(message, *position);
    if (!cursor.bytes(kTypeAndClass)) {
        constexpr const char* kMessage = "decode error, packet too short for type and class";
        if (!DNSMessages::take(kMessage)) std::fputs(kMessage, stdout);
        return kQuestionTooShort;
    }
    *position = cursor.position();
    return 0;
}

} // namespace orvan
