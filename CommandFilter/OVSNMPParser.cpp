#include "CommandFilter/OVSNMPParser.h"

#include "Formats/LeadingInteger.h"

#include <algorithm>
#include <limits>

namespace orvan {
namespace {

std::int32_t integerOf(const platform::PropertyList& value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (const std::string* text = value.asString()) return platform::leadingInteger(*text);
    if (const auto number = value.asInteger()) return platform::nearestInteger(*number);
    if (const auto boolean = value.asBoolean()) return *boolean ? 1 : 0;
    if (value.asUnsignedInteger()) return Limits::max();
    if (const auto real = value.asReal(); real && *real == *real)
        return static_cast<std::int32_t>(std::clamp<double>(*real, Limits::min(), Limits::max()));
    return 0;
}

} // namespace

void OVSNMPParser::writeToTicket(Ticket& ticket) const {
    if (_response == nullptr) return;
    const auto found = _response->find(OVSNMPJobAccountingOID);
    if (found != _response->end())
        ticket.insert_or_assign(std::string(OVSNMPJobAccountingOID), integerOf(found->second));
}

} // namespace orvan
