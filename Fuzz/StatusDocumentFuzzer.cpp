// A status document gives the same ticket however often it is read, of the kinds of values that a ticket has.
#include "CommandFilter/OVOVGParser.h"
#include "CommandFilter/Program/PrinterLevels.h"

#include <cstdint>
#include <cstdlib>

using orvan::OVOVGParser;
using platform::PropertyList;

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

} // namespace

// Without the system log.
extern "C" void syslog(int, const char*, ...) {}
extern "C" void __syslog_chk(int, int, const char*, ...) {} // NOLINT(bugprone-reserved-identifier)

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto parser = OVOVGParser::initWithData({reinterpret_cast<const char*>(data), size});
    if (parser == nullptr) return 0;
    orvan::Ticket ticket;
    parser->writeToTicket(ticket);
    for (const auto& [key, value] : ticket) {
        promise(value.asList() != nullptr);
        for (const PropertyList& record : *value.asList())
            promise(record.asDictionary() != nullptr);
    }
    const PropertyList list(ticket);
    promise(PropertyList::read(list.writeBinary()) == list);
    parser->writeToTicket(ticket);
    promise(PropertyList(ticket) == list);
    const orvan::PrinterLevels levels = orvan::levelsIn(ticket);
    promise(levels.reasonsThatHold.find(",,") == std::string::npos);
    return 0;
}
