// The address of a printer's web server.
#pragma once

#include "Common/DNSCursor.h"
#include "Platform/PMPrinter.h"

#include <optional>
#include <string>

namespace orvan {

// "http://" and the host of the queue's device URI, without port and path; nothing when the scheduler does
// not tell the device URI, when that has no host, or when the host makes no URL (a blank in it does not).
//
// A host that is the name of a discovered service ("Office Printer._ipp._tcp.local.") is no host for a
// browser: the local network is asked for the host that offers the service, which takes up to
// kMaximumMulticastTime (Common/RendezvousUtilities.h). When nobody answers, the device URI's host stays. The
// name is asked for in Latin-1, and only with its final dot, or from a "dnssd" device.
//
// Of the given vocabulary; nothing here calls it: commands know the device without a printer object.
std::optional<std::string> GetPrinterURL(const platform::PMPrinter& printer);

// The same for a device URI, whose percent escapes stand for the characters that they are.
std::optional<std::string> printerURLForDeviceURI(const std::string& deviceURI);

// The same for who is about to ask the printer. Nothing as well for a discovered printer that nobody speaks
// for now, or whose host is not under "local", where alone multicast DNS has a say (RFC 6762, section 3). A
// service is looked for whatever the device's scheme, with the final dot or without, in UTF-8 and, when
// nobody answers to a name that is not ASCII, in Latin-1; one interface that fails, or a damaged answer, does
// not end that.
std::optional<std::string> reachableURLForDeviceURI(const std::string& deviceURI);

// The target of a DNS message's first answer, as it stands there, with its final dot ("printer.local.").
// Nothing when that is no SRV record or no ASCII, or when the message cannot be read as far.
std::optional<std::string> serviceHostInAnswer(DNSBytes message);

} // namespace orvan
