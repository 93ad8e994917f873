#include "PrintDialog/Host/StatusJobs.h"

#include "Common/CommandJob.h"

#include <algorithm>

namespace orvan {

bool isInTrouble(const QueueJob& job) {
    return job.state == IPP_JSTATE_HELD || job.state == IPP_JSTATE_STOPPED;
}

std::optional<QueueJob> statusJobIn(const std::vector<QueueJob>& jobs) {
    std::vector<QueueJob> ours;
    std::ranges::copy_if(
        jobs, std::back_inserter(ours), [](const QueueJob& job) { return job.title == kStatusJobTitle; });
    if (ours.empty()) return std::nullopt;
    const auto troubled = std::ranges::find_if(ours, isInTrouble);
    return troubled != ours.end() ? *troubled : ours.front();
}

std::optional<QueueJob> findStatusJob(const std::string& queue, SchedulerWorker::Duration time) {
    return statusJobIn(listActiveJobs(queue, time).value_or(std::vector<QueueJob>()));
}

std::string lastWordOn(const QueueJob& job) {
    return job.message.empty() ? "" : ", the scheduler's last message: " + job.message;
}

std::string describe(const QueueJob& job) {
    const std::string name = job.queue + "-" + std::to_string(job.id);
    const std::string said = lastWordOn(job);
    const std::string cancel = " (\"cancel " + name + "\" removes it)";
    switch (job.state) {
    case IPP_JSTATE_HELD:
        return "its command job " + name + " is held" + cancel;
    case IPP_JSTATE_STOPPED:
        return "its command job " + name + " was stopped by a filter that failed" + said +
               "; every later question waits for it" + cancel;
    default:
        return "its command job " + name + " is still " +
               ippEnumString("job-state", static_cast<int>(job.state)) + said + cancel;
    }
}

} // namespace orvan
