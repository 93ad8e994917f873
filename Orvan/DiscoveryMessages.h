// What discovery says of damaged replies, for standard error.
#pragma once

#include "Common/DNSMessage.h"
#include "Formats/OneLine.h"
#include "Orvan/Command.h"

namespace orvan {

// Takes this thread's messages while it exists.
class DiscoveryMessages {
private:
    DNSMessages messages_{[](const std::string& message) {
        const std::size_t start = message.find_first_not_of('\n');
        if (start != std::string::npos) say(platform::onOneLine(message.substr(start)));
    }};
};

} // namespace orvan
