// Where a queue's printer answers.
#pragma once

#include "Platform/SNMPRequest.h"

#include <cups/ppd.h>

#include <optional>
#include <string>

namespace orvan {

struct PrinterAddress {
    std::string documentURL; // of the status document, http or https
    std::string shownURL;    // the same for messages, without a user's name and password
    std::string snmpHost;    // name or address
    int snmpPort = 161;
};

// Whether the queue's device, or the document that its PPD names, is on the network at all. Looks for
// nothing; the PPD may be null.
bool isOnNetwork(const std::string& deviceURI, ppd_file_t* ppd);

// What came of looking for it.
struct AddressSearch {
    std::optional<PrinterAddress> address;
    std::string problem; // for people: why there is none, and what to do
    // The queue's device is not on the network, so there is nothing to complain of.
    bool isNotOnNetwork = false;
};

// Asked are devices on the network: "socket", "lpd", "ipp", "ipps", "http", "https" and "dnssd"; an ipp or
// http device that is a queue of another print server ("/printers/...") is not. The status document is at the
// device's host (of a discovered device, at the host under "local" that offers the service:
// Common/Utilities/PrinterURL.h), at the path that the PPD's "OVNStatusDocument" names ("/status.xml" without
// it), or at the whole URL that stands there. It is fetched over HTTPS from an "https" device, at the
// device's port, and from an "ipps" device. The SNMP agent is the device's host, or the document's when the
// device has none, unless the PPD's "OVNSNMPAgent" names another ("host" or "host:port"); with anything else
// there, no address is found.
//
// The PPD may be null. Blocks while a discovered device is looked for.
AddressSearch findPrinterAddress(const std::string& deviceURI, ppd_file_t* ppd);

} // namespace orvan
