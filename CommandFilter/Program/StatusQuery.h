// The questions that the command filter asks a printer. They write nothing anywhere: whoever asks, tells.
#pragma once

#include "CommandFilter/Program/KnownCertificates.h"
#include "CommandFilter/Program/PrinterAddress.h"
#include "Common/TicketVocabulary.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct StatusAnswer {
    // Nothing when the printer did not answer, or not what it was asked for; `problem` then says so to
    // people.
    std::optional<Ticket> ticket;
    std::string problem;
    // The word for it (Common/CommandJob.h); "" with a ticket.
    std::string problemWord;
    // Not even a refusal came.
    bool isOffline = false;
    // It shows another certificate than the one that is remembered, so it was not asked.
    bool isOther = false;
    // What happened on the way, for a log: sentences without passwords.
    std::vector<std::string> trace;
};

struct Credentials {
    std::optional<std::string> user;
    std::optional<std::string> password;
};

// Fetches and reads the status document; the ticket has the printer's own words as well (PrinterWords.h). Its
// host is contacted first (Common/Utilities/HostContact.h); when that is not there, nothing is fetched.
//
// A certificate that nobody vouches for is taken when it is the one that is remembered, or the first.
//
// Blocks, for at most half a minute and five seconds for the host's name; for an absent
// printer that has an address, for four seconds.
StatusAnswer askForDocument(const PrinterAddress& address, const Credentials& credentials,
    const KnownCertificates& certificates = KnownCertificates());

// Asks the SNMP agent for the job-accounting object, in all communities of the scheduler's configuration at
// once. Blocks, for a second at most and five for the host's name. May run beside
// askForDocument, on another thread.
StatusAnswer askForAccounting(const PrinterAddress& address, const std::filesystem::path& serverRoot);

} // namespace orvan
