// Reads a DNS message (RFC 1035, section 4.1) from a position on, and never outside of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace orvan {

using DNSBytes = std::span<const std::uint8_t>;

// Every read moves the position behind what it answers; one that would pass the end answers nothing and moves
// nothing. Numbers are big endian. The position itself may lie anywhere. The message is borrowed.
class DNSCursor {
public:
    DNSCursor(DNSBytes message, std::size_t position) : message_(message), position_(position) {}

    std::size_t position() const { return position_; }
    void moveTo(std::size_t position) { position_ = position; }

    // Bytes from the position to the end.
    std::size_t left() const { return position_ < message_.size() ? message_.size() - position_ : 0; }

    std::optional<DNSBytes> bytes(std::size_t count) {
        if (count > left()) return std::nullopt;
        const DNSBytes found = count > 0 ? message_.subspan(position_, count) : DNSBytes();
        position_ += count;
        return found;
    }
    std::optional<std::uint8_t> byte() {
        const std::optional<DNSBytes> found = bytes(1);
        return found ? std::optional(found->front()) : std::nullopt;
    }
    std::optional<std::uint16_t> number() {
        const std::optional<DNSBytes> found = bytes(2);
        if (!found) return std::nullopt;
        return static_cast<std::uint16_t>(found->front() << 8U | found->back());
    }

private:
    DNSBytes message_;
    std::size_t position_;
};

} // namespace orvan
