// Objects of an SNMP agent (RFC 1157), asked with net-snmp.
#pragma once

#include "Formats/Failure.h"
#include "Formats/PropertyList.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct SNMPRequest {
    std::string host; // name or address
    int port = 161;
    std::vector<std::string> communities{"public"}; // all asked at once; what answers first counts
    std::vector<std::string> objects;               // identifiers in dotted decimal
    // How long one try waits for the answer, and how many tries follow the first.
    std::chrono::milliseconds patience = std::chrono::seconds(1);
    int retries = 2;
};

// Asks for the objects with one GetRequest of SNMP version 1 a community, and blocks until the answer or the
// last try's end, and while a name is looked up. Only what comes from the agent's address and port, with the
// question's request identifier, which is random, is an answer. Answers the values under the identifiers as
// they were asked for: whole numbers as integers, octet strings as text when they are UTF-8 and as data
// otherwise, object identifiers in dotted decimal. Nothing, and a sentence for people in `problem`, when
// there is no answer or the agent does not know one of them; `isSilent` (may be null) is told which.
//
// Reads no configuration of net-snmp's and writes no file. One thread at a time in a process.
std::optional<PropertyList::Dictionary> getSNMPObjects(
    const SNMPRequest& request, Failure& problem, bool* isSilent = nullptr);

// The values of the objects that an answer's PDU (RFC 1157, section 4.1.3, in BER) has, as above; those that
// it does not have, or that cannot be read, are not there.
PropertyList::Dictionary readSNMPAnswer(std::string_view bytes, const std::vector<std::string>& objects);

} // namespace platform
