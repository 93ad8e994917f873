// An agent's answer gives values of the objects that were asked for, and a ticket with one number.
#include "CommandFilter/OVSNMPParser.h"
#include "Platform/SNMPRequest.h"

#include <cstdint>
#include <cstdlib>

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> objects{std::string(orvan::OVSNMPJobAccountingOID), "1.3.6.1.2.1.1.5.0"};
    const auto values = platform::readSNMPAnswer({reinterpret_cast<const char*>(data), size}, objects);
    promise(values.size() <= objects.size());
    orvan::Ticket ticket;
    orvan::OVSNMPParser::initWithSNMPResponse(&values).writeToTicket(ticket);
    promise(ticket.size() == values.count(objects.front()));
    for (const auto& [key, value] : ticket)
        promise(value.asInteger().has_value());
    const platform::PropertyList list(values);
    promise(platform::PropertyList::read(list.writeBinary()) == list);
    return 0;
}
