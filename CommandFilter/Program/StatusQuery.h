// The questions that the command filter asks a printer.
#pragma once

#include "CommandFilter/Program/PrinterAddress.h"
#include "CommandFilter/TicketVocabulary.h"

#include <filesystem>
#include <optional>
#include <string>

namespace orvan {

struct StatusAnswer {
    // Nothing when the printer did not answer, or not what it was asked for; `problem` then says so to
    // people.
    std::optional<Ticket> ticket;
    std::string problem;
    // Not even a refusal came.
    bool isOffline = false;
};

struct Credentials {
    std::optional<std::string> user;
    std::optional<std::string> password;
};

// Fetches and reads the status document. Blocks, for at most half a minute.
StatusAnswer askForDocument(const PrinterAddress& address, const Credentials& credentials);

// Asks the SNMP agent for the job-accounting object, in one community of the scheduler's configuration after
// the other. Blocks, for three seconds a community.
StatusAnswer askForAccounting(const PrinterAddress& address, const std::filesystem::path& serverRoot);

} // namespace orvan
