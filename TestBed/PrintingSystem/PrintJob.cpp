#include "TestBed/PrintingSystem/PrintJob.h"

namespace orvan {
namespace {

std::string valueText(ipp_attribute_t* attribute) {
    std::string text(ippAttributeString(attribute, nullptr, 0), '\0');
    ippAttributeString(attribute, text.data(), text.size() + 1);
    return text;
}

void takeAttribute(PrintJob& job, ipp_attribute_t* attribute) {
    const std::string name = ippGetName(attribute);
    const std::string value = valueText(attribute);
    job.attributes[name] = value;
    if (name == "job-id") job.id = ippGetInteger(attribute, 0);
    if (name == "job-state") job.state = static_cast<ipp_jstate_t>(ippGetInteger(attribute, 0));
    if (name == "job-name") job.name = value;
    if (name == "job-originating-user-name") job.user = value;
    if (name == "job-printer-uri") job.queue = value.substr(value.rfind('/') + 1);
}

} // namespace

std::optional<std::string> PrintJob::attribute(std::string_view wanted) const {
    const auto found = attributes.find(wanted);
    if (found == attributes.end()) return std::nullopt;
    return found->second;
}

std::vector<PrintJob> printJobsFromResponse(ipp_t* response) {
    std::vector<PrintJob> jobs;
    bool inside = false;
    for (ipp_attribute_t* at = ippFirstAttribute(response); at; at = ippNextAttribute(response)) {
        if (ippGetGroupTag(at) != IPP_TAG_JOB || !ippGetName(at)) {
            inside = false;
            continue;
        }
        if (!inside) jobs.emplace_back();
        inside = true;
        takeAttribute(jobs.back(), at);
    }
    return jobs;
}

} // namespace orvan
