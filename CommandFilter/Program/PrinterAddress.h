// Where a queue's printer answers.
#pragma once

#include "Formats/Failure.h"
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

// The status document is at the device's host (of a discovered device, at the host that offers the service:
// Common/Utilities/PrinterURL.h), at the path that the PPD's "OVNStatusDocument" names ("/status.xml" without
// it), or at the whole URL that stands there. The SNMP agent is the device's host, or
// the document's when the device has none, unless the PPD's "OVNSNMPAgent" names another ("host" or
// "host:port").
//
// The PPD may be null. Blocks while a discovered device is looked for. Nothing, and a sentence for people in
// `problem`, when that gives no address.
std::optional<PrinterAddress> findPrinterAddress(
    const std::string& deviceURI, ppd_file_t* ppd, platform::Failure& problem);

} // namespace orvan
