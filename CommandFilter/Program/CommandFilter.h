// The command filter of a queue: one command job.
#pragma once

#include <string>

namespace orvan {

// What the scheduler starts a filter with, filter(7).
struct FilterCall {
    std::string job;        // the command file's bytes
    std::string deviceURI;  // of the queue
    std::string ppdFile;    // of the queue; empty when there is none
    std::string serverRoot; // the scheduler's folder of configuration
    std::string jobNumber;  // empty when nobody has given it one
};

// Asks the printer once for all that the job's commands want to know, and writes to standard error: for each
// command its part of the answer as an XML property list in chunks (BiDi/ppdx.h) under the command's name,
// and for CUPS's "ReportLevels" the printer's supplies and what is low or empty. A command that is not known
// is warned of. With each answer go the time and the job (Common/CommandJob.h), and what an older, longer one
// has left in the queue's PPD is emptied. A printer that does not answer, or not what it was asked, gets one
// message for people and no chunks, so that earlier answers stay, and a word for each command says why.
void runCommandFilter(const FilterCall& call);

} // namespace orvan
