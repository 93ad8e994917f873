// The printing system's printer: a queue of the CUPS scheduler that the process talks to (CUPS_SERVER,
// client.conf).
#pragma once

#include <string>
#include <utility>

namespace platform {

class PMPrinter {
public:
    explicit PMPrinter(std::string queueName) : queueName_(std::move(queueName)) {}

    const std::string& queueName() const { return queueName_; }

private:
    std::string queueName_;
};

// The printer's identifier: its queue name.
inline const std::string& PMPrinterGetID(const PMPrinter& printer) {
    return printer.queueName();
}

} // namespace platform
