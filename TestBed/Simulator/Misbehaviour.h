// What a printer does wrong.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace orvan {

enum class Misbehaviour : std::uint8_t {
    none,
    slow,
    silent,
    cut,
    stall,
    redirect,
    redirectAway,
    wrong,
    malformed,
};

struct MisbehaviourSpec {
    Misbehaviour kind;
    std::string_view name;
    std::string_view description; // for people
};

constexpr std::array<MisbehaviourSpec, 8> kMisbehaviours = {{
    {Misbehaviour::slow, "slow", "the document comes a byte at a time, see --interval"},
    {Misbehaviour::silent, "silent", "takes connections and requests, and never answers"},
    {Misbehaviour::cut, "cut", "promises the whole document, sends half of it and closes the connection"},
    {Misbehaviour::stall, "stall", "promises the whole document, sends half of it and then nothing"},
    {Misbehaviour::redirect, "redirect", "says that the document is at another path of this printer"},
    {Misbehaviour::redirectAway, "redirect-away", "the same, by another host name: localhost"},
    {Misbehaviour::wrong, "wrong", "answers with a web page instead of the document"},
    {Misbehaviour::malformed, "malformed", "answers with half a document, as if it were all"},
}};

} // namespace orvan
