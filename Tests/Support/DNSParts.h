// The parts of which tests make DNS messages.
#pragma once

#include "Common/DNSCursor.h"

#include <string>
#include <string_view>

namespace orvan::dns {

inline std::string number(unsigned value) {
    return {static_cast<char>(value >> 8U), static_cast<char>(value)};
}
inline std::string header(unsigned questions, unsigned answers) {
    return number(7) + number(0x8400) + number(questions) + number(answers) + number(0) + number(0);
}
inline std::string label(std::string_view text) {
    return static_cast<char>(text.size()) + std::string(text);
}
// Labels from a text with dots, and the root.
inline std::string name(std::string_view text) {
    std::string wire;
    for (std::size_t dot = text.find('.'); dot != std::string_view::npos; dot = text.find('.')) {
        wire += label(text.substr(0, dot));
        text.remove_prefix(dot + 1);
    }
    return wire + '\0';
}
inline std::string pointer(unsigned offset) {
    return number(0xC000U | offset);
}
inline std::string question(const std::string& owner, unsigned type = 33) {
    return owner + number(type) + number(1);
}
inline std::string record(const std::string& owner, unsigned type, const std::string& data, unsigned length) {
    return question(owner, type) + number(0) + number(120) + number(length) + data;
}
inline std::string record(const std::string& owner, unsigned type, const std::string& data) {
    return record(owner, type, data, static_cast<unsigned>(data.size()));
}
inline std::string srv(const std::string& target) {
    return number(0) + number(0) + number(631) + target;
}

inline DNSBytes bytes(std::string_view message) {
    return {reinterpret_cast<const std::uint8_t*>(message.data()), message.size()};
}

} // namespace orvan::dns
