#include "Orvan/StatusJobs.h"

#include "Common/CommandJob.h"
#include "Platform/PMPrinter.h"
#include "Scheduler/PrintScheduler.h"

#include <cups/cups.h>

#include <algorithm>
#include <array>
#include <vector>

namespace orvan {
namespace {

// About the queue. RFC 8011, section 4.1.5: a job's number follows the queue, a person's name follows both.
ipp_t* newRequest(ipp_op_t operation, const std::string& queue) {
    ipp_t* const request = ippNewRequest(operation);
    std::array<char, HTTP_MAX_URI> uri{};
    httpAssembleURIf(HTTP_URI_CODING_ALL, uri.data(), static_cast<int>(uri.size()), "ipp", nullptr,
        "localhost", ippPort(), "/printers/%s", queue.c_str());
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri.data());
    return request;
}

void addUser(ipp_t* request) {
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, cupsUser());
}

// Get-Jobs, RFC 8011, section 4.2.6.
ipp_t* requestFor(const std::string& queue, const char* whichJobs) {
    static constexpr std::array<const char*, 4> kWanted{
        "job-id", "job-name", "job-state", "job-printer-state-message"};
    ipp_t* const request = newRequest(IPP_OP_GET_JOBS, queue);
    addUser(request);
    ippAddBoolean(request, IPP_TAG_OPERATION, "my-jobs", 1);
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "which-jobs", nullptr, whichJobs);
    ippAddStrings(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
        static_cast<int>(kWanted.size()), nullptr, kWanted.data());
    return request;
}

std::string textOf(ipp_attribute_t* attribute) {
    const char* const text = ippGetString(attribute, 0, nullptr);
    return text != nullptr ? text : "";
}

// The channel's jobs in the answer, in its order.
std::vector<StatusJob> jobsIn(ipp_t* answer) {
    std::vector<StatusJob> jobs;
    StatusJob job;
    std::string title;
    const auto finish = [&] {
        if (title == kStatusJobTitle) jobs.push_back(job);
        job = {};
        title.clear();
    };
    for (ipp_attribute_t* attribute = ippFirstAttribute(answer); attribute != nullptr;
         attribute = ippNextAttribute(answer)) {
        const char* const name = ippGetName(attribute);
        if (name == nullptr) { // between two jobs
            finish();
            continue;
        }
        const std::string_view which = name;
        if (which == "job-id") job.id = ippGetInteger(attribute, 0);
        if (which == "job-name") title = textOf(attribute);
        if (which == "job-state") job.state = static_cast<ipp_jstate_t>(ippGetInteger(attribute, 0));
        if (which == "job-printer-state-message") job.message = textOf(attribute);
    }
    finish();
    return jobs;
}

} // namespace

bool isInTrouble(const StatusJob& job) {
    return job.state == IPP_JSTATE_HELD || job.state == IPP_JSTATE_STOPPED;
}

std::optional<StatusJob> findStatusJob(const std::string& queue, std::chrono::milliseconds patience) {
    const auto answer =
        askScheduler(requestFor(queue, "not-completed"), patience, platform::ignoredFailure());
    if (answer == nullptr) return std::nullopt;
    const std::vector<StatusJob> jobs = jobsIn(answer.get());
    if (jobs.empty()) return std::nullopt;
    const auto troubled = std::ranges::find_if(jobs, isInTrouble);
    return troubled != jobs.end() ? *troubled : jobs.front();
}

std::string complaintOfLastJob(const std::string& queue, std::chrono::milliseconds patience) {
    const auto answer = askScheduler(requestFor(queue, "completed"), patience, platform::ignoredFailure());
    if (answer == nullptr) return {};
    const std::vector<StatusJob> jobs = jobsIn(answer.get());
    const auto newest = std::ranges::max_element(jobs, {}, &StatusJob::id);
    return newest == jobs.end() || newest->message == kStatusReadMessage ? "" : newest->message;
}

bool wouldTakeStatusJob(
    const std::string& queue, std::chrono::milliseconds patience, platform::Failure& error) {
    ipp_t* const request = newRequest(IPP_OP_VALIDATE_JOB, queue);
    addUser(request);
    ippAddString(
        request, IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr, platform::kCommandFileType);
    return askScheduler(request, patience, error) != nullptr;
}

bool withdrawJob(const std::string& queue, int job, std::chrono::milliseconds patience) {
    ipp_t* const request = newRequest(IPP_OP_CANCEL_JOB, queue);
    ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", job);
    addUser(request);
    return askScheduler(request, patience, platform::ignoredFailure()) != nullptr;
}

std::string lastWordOn(const StatusJob& job) {
    return job.message.empty() ? "" : ", the scheduler's last message: " + job.message;
}

std::string describe(const StatusJob& job, const std::string& queue) {
    const std::string name = queue + "-" + std::to_string(job.id);
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
