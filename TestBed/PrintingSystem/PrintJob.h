// A job as the scheduler tells of it.
#pragma once

#include <cups/ipp.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

struct PrintJob {
    int id = 0;
    ipp_jstate_t state = IPP_JSTATE_PENDING;
    std::string queue;
    std::string name;
    std::string user;
    // Every attribute of the job by name, the submitted options among them ("MediaType" -> "CustomType2"). A
    // value that is none of IPP's strings has the form that lp's -o takes; several values are joined by
    // commas.
    std::map<std::string, std::string, std::less<>> attributes;

    // One attribute's value; absent when the job does not have it.
    std::optional<std::string> attribute(std::string_view name) const;

    // True when the scheduler will not touch the job again by itself: completed, canceled, aborted, or
    // stopped, as a job is whose filter failed.
    bool isSettled() const { return state >= IPP_JSTATE_STOPPED; }
};

// The jobs of an answer to Get-Jobs or Get-Job-Attributes, RFC 8011 sections 4.2.6 and 4.3.4. Null has no
// jobs. The answer stays the caller's.
std::vector<PrintJob> printJobsFromResponse(ipp_t* response);

} // namespace orvan
