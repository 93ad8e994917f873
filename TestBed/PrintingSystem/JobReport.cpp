#include "TestBed/PrintingSystem/JobReport.h"

#include "Platform/PMPrinter.h"

#include <cups/cups.h>
#include <cups/ppd.h>

#include <memory>
#include <vector>

namespace orvan {
namespace {

constexpr std::chrono::seconds kPatience{10};

void reportOptions(const PrintJob& job, ppd_file_t* ppd, std::ostream& out) {
    for (ppd_option_t* option = ppdFirstOption(ppd); option != nullptr; option = ppdNextOption(ppd))
        if (const auto value = job.attribute(option->keyword))
            out << "  " << option->keyword << '=' << *value << '\n';
}

} // namespace

Failure reportJobs(const PrintingSystem& system, const std::string& queue,
    const std::filesystem::path& ppdFile, std::ostream& out) {
    const std::unique_ptr<ppd_file_t, decltype(&ppdClose)> ppd(ppdOpenFile(ppdFile.c_str()), ppdClose);
    std::vector<PrintJob> jobs;
    if (Failure failure = system.jobs(queue, &jobs)) return failure;
    // Questions to the printer, which nobody printed.
    std::erase_if(jobs,
        [](const PrintJob& job) { return job.attribute("document-format") == platform::kCommandFileType; });
    if (jobs.empty()) out << "No job arrived on " << queue << ".\n";
    for (const PrintJob& listed : jobs) {
        const std::optional<PrintJob> job = system.waitForJob(listed.id, kPatience);
        if (!job) continue;
        out << "Job " << job->id << " on " << queue << ", \"" << job->name << "\", "
            << ippEnumString("job-state", job->state) << ":\n";
        reportOptions(*job, ppd.get(), out);
    }
    return std::nullopt;
}

} // namespace orvan
