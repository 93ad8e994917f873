// A printer that the local network knows by a service's name.
#pragma once

#include "Tests/Support/TempFolder.h"

#include <sys/types.h>

namespace orvan {

// avahi-daemon, which publishes the service of kDevice at the host "office-printer.local.", as long as this
// object lives. For a process in a network of its own (OwnNetwork.h): it changes what that sees in /etc and
// /run.
class PublishedPrinter {
public:
    static constexpr const char* kDaemon = "/usr/sbin/avahi-daemon";
    // As a device, as CUPS's discovery writes it.
    static constexpr const char* kDevice = "dnssd://Orvan%204500%20in%20the%20Office._ipp._tcp.local/?uuid=1";

    PublishedPrinter();
    ~PublishedPrinter();
    PublishedPrinter(const PublishedPrinter&) = delete;
    PublishedPrinter& operator=(const PublishedPrinter&) = delete;

private:
    TempFolder folder_;
    pid_t process_;
};

} // namespace orvan
