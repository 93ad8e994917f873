#include "TestBed/PrintingSystem/PrintingSystem.h"

#include "TestBed/PrintingSystem/AdminConnection.h"

#include <cups/ppd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace orvan {
namespace {

constexpr std::chrono::milliseconds kPollInterval(5);
constexpr std::size_t kLogLines = 8;

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

// libcups and the scheduler agree on what a PPD file is, but only libcups says which line is wrong.
Failure checkPPD(const QueueDescription& queue) {
    const std::string attempt =
        "The queue " + quoted(queue.name) + " was not added: " + queue.ppdFile.string();
    std::FILE* file = std::fopen(queue.ppdFile.c_str(), "rb");
    if (!file) return attempt + " cannot be read: " + std::strerror(errno) + '.';
    std::fclose(file);
    ppd_file_t* ppd = ppdOpenFile(queue.ppdFile.c_str());
    if (ppd) {
        ppdClose(ppd);
        return std::nullopt;
    }
    int line = 0;
    const ppd_status_t status = ppdLastError(&line);
    return attempt + " is not a usable PPD file: line " + std::to_string(line) + ": " +
           ppdErrorString(status) + ". cupstestppd tells more.";
}

IPPMessage jobRequest(ipp_op_t operation, int job) {
    const std::string uri = "ipp://localhost/jobs/" + std::to_string(job);
    IPPMessage request(ippNewRequest(operation));
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "job-uri", nullptr, uri.c_str());
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, cupsUser());
    return request;
}

} // namespace

std::unique_ptr<PrintingSystem> PrintingSystem::start(
    const PrintingSystemOptions& options, Failure* failure) {
    std::unique_ptr<PrintingSystem> system(new PrintingSystem(options));
    if (system->options_.scheduler.empty()) system->options_.scheduler = SchedulerProcess::findProgram();
    if (system->options_.scheduler.empty()) {
        *failure =
            "CUPS's scheduler, cupsd, is not installed. Install the packages cups-daemon and cups-filters.";
        return nullptr;
    }
    system->folder_ = SchedulerFolder::create(system->options_.folder, failure);
    if (!system->folder_) return nullptr;
    if (!options.folder.keep) system->guard_ = FolderGuard::watch(system->folder_->path());
    *failure = system->launch();
    if (*failure) return nullptr;
    return system;
}

Failure PrintingSystem::launch() {
    const Failure failure = scheduler_.start(options_.scheduler, folder_->daemonConfiguration(),
        folder_->filesConfiguration(), folder_->errorLog());
    return failure ? failure : waitUntilAnswering();
}

Failure PrintingSystem::waitUntilAnswering() {
    const auto deadline = std::chrono::steady_clock::now() + options_.patience;
    const char* what = "ended at once";
    while (scheduler_.isRunning()) {
        if (access(folder_->socket().c_str(), F_OK) == 0) {
            AdminConnection connection(folder_->socket());
            // A scheduler without queues answers that there is none, which is an answer.
            if (connection.isOpen() &&
                !connection.send(IPPMessage(ippNewRequest(IPP_OP_CUPS_GET_PRINTERS)), "/", nullptr))
                return std::nullopt;
            if (connection.isOpen() && cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND) return std::nullopt;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            what = "does not answer";
            break;
        }
        std::this_thread::sleep_for(kPollInterval);
    }
    std::string text = "The private scheduler " + options_.scheduler.string() + ' ' + what + ".";
    const std::string log = folder_->errorLogTail(kLogLines);
    if (log.empty()) return text + " It left no message.";
    return text + " Its last messages:\n" + log;
}

ClientEnvironment PrintingSystem::environment() const {
    ClientEnvironment variables = {{"CUPS_SERVER", folder_->socket().string()},
        {"CUPS_SERVERROOT", folder_->configurationFolder().string()},
        {"CUPS_STATEDIR", folder_->stateFolder().string()}, {"HOME", folder_->home().string()},
        {"CUPS_USER", std::nullopt}, {"CUPS_ENCRYPTION", std::nullopt}, {"LPDEST", std::nullopt},
        {"PRINTER", std::nullopt}};
    // Programs look for the key to the display in the home that they no longer have.
    const char* home = std::getenv("HOME");
    std::error_code error;
    const std::filesystem::path key = std::filesystem::path(home ? home : "/") / ".Xauthority";
    if (!std::getenv("XAUTHORITY") && std::filesystem::exists(key, error))
        variables.emplace_back("XAUTHORITY", key.string());
    return variables;
}

void PrintingSystem::adoptEnvironment() const {
    orvan::adoptEnvironment(environment());
    cupsSetServer(nullptr);
}

Failure PrintingSystem::addQueue(const QueueDescription& queue) const {
    if (Failure unusable = checkPPD(queue)) return unusable;
    IPPMessage request = AdminConnection::queueRequest(IPP_OP_CUPS_ADD_MODIFY_PRINTER, queue.name);
    ipp_t* message = request.get();
    ippAddString(message, IPP_TAG_PRINTER, IPP_TAG_URI, "device-uri", nullptr, queue.deviceURI.c_str());
    ippAddInteger(message, IPP_TAG_PRINTER, IPP_TAG_ENUM, "printer-state", IPP_PSTATE_IDLE);
    ippAddBoolean(message, IPP_TAG_PRINTER, "printer-is-accepting-jobs", 1);
    AdminConnection connection(folder_->socket());
    const Failure reason = connection.send(std::move(request), "/admin/", nullptr, queue.ppdFile);
    if (!reason) return std::nullopt;
    return "The queue " + quoted(queue.name) + " was not added: " + *reason;
}

Failure PrintingSystem::queueOperation(
    ipp_op_t operation, const std::string& queue, const std::string& attempt) const {
    AdminConnection connection(folder_->socket());
    const Failure reason =
        connection.send(AdminConnection::queueRequest(operation, queue), "/admin/", nullptr);
    if (!reason) return std::nullopt;
    return "The queue " + quoted(queue) + " could not be " + attempt + ": " + *reason;
}

Failure PrintingSystem::deleteQueue(const std::string& queue) const {
    return queueOperation(IPP_OP_CUPS_DELETE_PRINTER, queue, "deleted");
}

Failure PrintingSystem::setDefaultQueue(const std::string& queue) const {
    return queueOperation(IPP_OP_CUPS_SET_DEFAULT, queue, "made the default");
}

Failure PrintingSystem::pauseQueue(const std::string& queue) const {
    return queueOperation(IPP_OP_PAUSE_PRINTER, queue, "paused");
}

Failure PrintingSystem::resumeQueue(const std::string& queue) const {
    return queueOperation(IPP_OP_RESUME_PRINTER, queue, "resumed");
}

Failure PrintingSystem::holdNewJobs(const std::string& queue) const {
    return queueOperation(IPP_OP_HOLD_NEW_JOBS, queue, "made to hold its jobs");
}

Failure PrintingSystem::stopHoldingNewJobs(const std::string& queue) const {
    return queueOperation(IPP_OP_RELEASE_HELD_NEW_JOBS, queue, "made to hold jobs no more");
}

Failure PrintingSystem::rejectJobs(const std::string& queue) const {
    return queueOperation(IPP_OP_CUPS_REJECT_JOBS, queue, "made to reject jobs");
}

Failure PrintingSystem::acceptJobs(const std::string& queue) const {
    return queueOperation(IPP_OP_CUPS_ACCEPT_JOBS, queue, "made to accept jobs");
}

Failure PrintingSystem::print(const std::string& queue, const std::filesystem::path& file,
    const std::map<std::string, std::string>& options, int* job) const {
    IPPMessage request = AdminConnection::queueRequest(IPP_OP_PRINT_JOB, queue);
    ippAddString(
        request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, file.filename().c_str());
    cups_option_t* list = nullptr;
    int count = 0;
    for (const auto& [name, value] : options)
        count = cupsAddOption(name.c_str(), value.c_str(), count, &list);
    cupsEncodeOptions2(request.get(), count, list, IPP_TAG_OPERATION);
    cupsEncodeOptions2(request.get(), count, list, IPP_TAG_JOB);
    cupsFreeOptions(count, list);
    AdminConnection connection(folder_->socket());
    IPPMessage response;
    const Failure reason = connection.send(std::move(request), "/printers/" + queue, &response, file);
    if (reason) return file.string() + " was not printed on " + quoted(queue) + ": " + *reason;
    const std::vector<PrintJob> created = printJobsFromResponse(response.get());
    if (job) *job = created.empty() ? 0 : created.front().id;
    return std::nullopt;
}

Failure PrintingSystem::jobs(const std::string& queue, std::vector<PrintJob>* jobs) const {
    jobs->clear();
    IPPMessage request = AdminConnection::queueRequest(IPP_OP_GET_JOBS, queue);
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "which-jobs", nullptr, "all");
    ippAddString(
        request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", nullptr, "job-id");
    AdminConnection connection(folder_->socket());
    IPPMessage response;
    const Failure reason = connection.send(std::move(request), "/", &response);
    if (reason) return "The jobs of " + quoted(queue) + " could not be listed: " + *reason;
    // One by one: in a list, the scheduler leaves out most attributes of jobs that it has put away.
    for (const PrintJob& listed : printJobsFromResponse(response.get()))
        if (std::optional<PrintJob> job = findJob(listed.id)) jobs->push_back(std::move(*job));
    return std::nullopt;
}

Failure PrintingSystem::jobOperation(ipp_op_t operation, int job, const std::string& attempt) const {
    AdminConnection connection(folder_->socket());
    const Failure reason = connection.send(jobRequest(operation, job), "/jobs/", nullptr);
    if (!reason) return std::nullopt;
    return "Job " + std::to_string(job) + " could not be " + attempt + ": " + *reason;
}

Failure PrintingSystem::releaseJob(int job) const {
    return jobOperation(IPP_OP_RELEASE_JOB, job, "released");
}

Failure PrintingSystem::cancelJob(int job) const {
    return jobOperation(IPP_OP_CANCEL_JOB, job, "canceled");
}

std::optional<PrintJob> PrintingSystem::findJob(int job) const {
    AdminConnection connection(folder_->socket());
    IPPMessage response;
    if (connection.send(jobRequest(IPP_OP_GET_JOB_ATTRIBUTES, job), "/", &response)) return std::nullopt;
    const std::vector<PrintJob> found = printJobsFromResponse(response.get());
    if (found.empty()) return std::nullopt;
    return found.front();
}

std::optional<PrintJob> PrintingSystem::waitForJob(int job, std::chrono::milliseconds patience) const {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (true) {
        std::optional<PrintJob> found = findJob(job);
        if (!found || found->isSettled() || std::chrono::steady_clock::now() >= deadline) return found;
        std::this_thread::sleep_for(kPollInterval);
    }
}

std::filesystem::path PrintingSystem::spooledDocument(int job, int document) const {
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "d%05d-%03d", job, document);
    return folder_->spool() / name.data();
}

Failure PrintingSystem::restartScheduler() {
    scheduler_.terminate();
    return launch();
}

} // namespace orvan
