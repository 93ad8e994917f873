// What arrived in a printing system, for people.
#pragma once

#include "TestBed/PrintingSystem/PrintingSystem.h"

#include <filesystem>
#include <ostream>
#include <string>

namespace orvan {

// Waits a little until the queue's jobs are settled, and writes each, but for command files, with its name,
// its state and those of its options that the PPD knows, in the PPD's order.
Failure reportJobs(const PrintingSystem& system, const std::string& queue,
    const std::filesystem::path& ppdFile, std::ostream& out);

} // namespace orvan
