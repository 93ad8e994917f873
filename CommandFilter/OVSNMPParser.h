// The printer's answer to an SNMP query.
#pragma once

#include "Common/TicketVocabulary.h"

namespace orvan {

// Copies the job-accounting number of an answer into a ticket. The answer is a dictionary from object
// identifiers, as dotted decimal strings, to values, as strings or numbers.
class OVSNMPParser {
public:
    // The response is borrowed, and has to live and not to change as long as the parser is used. A parser of
    // a null response writes nothing.
    explicit OVSNMPParser(const platform::PropertyList::Dictionary* response) : _response(response) {}
    static OVSNMPParser initWithSNMPResponse(const platform::PropertyList::Dictionary* response) {
        return OVSNMPParser(response);
    }

    // Writes the value under exactly OVSNMPJobAccountingOID as a 32-bit integer, in the place of an earlier
    // one: a number's whole part (the nearest that fits), a text's leading integer, and 0 for anything else.
    // Without such a value the ticket stays as it is.
    void writeToTicket(Ticket& ticket) const;

private:
    const platform::PropertyList::Dictionary* _response;
};

} // namespace orvan
