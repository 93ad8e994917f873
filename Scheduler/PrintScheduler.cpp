#include "Scheduler/PrintScheduler.h"

#include <cups/ppd.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>
#include <string_view>
#include <system_error>

namespace orvan {
namespace {

constexpr std::string_view kQueuePath = "/printers/";

// About the queue; about all for "". RFC 8011, section 4.1.5: what an operation is about comes first, a job's
// number next, and a person's name behind both.
IPPMessage newRequest(ipp_op_t operation, const std::string& queue) {
    IPPMessage request(ippNewRequest(operation));
    std::array<char, HTTP_MAX_URI> uri{};
    httpAssembleURI(HTTP_URI_CODING_ALL, uri.data(), static_cast<int>(uri.size()), "ipp", nullptr,
        "localhost", 0, (std::string(queue.empty() ? "/" : kQueuePath) + queue).c_str());
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri.data());
    return request;
}

void addUser(const IPPMessage& request) {
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, cupsUser());
}

template <std::size_t count>
void addWanted(const IPPMessage& request, const std::array<const char*, count>& names) {
    ippAddStrings(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
        static_cast<int>(count), nullptr, names.data());
}

// A name that makes no path of its own.
bool isQueueName(const std::string& name, SchedulerProblem& problem) {
    const bool isName = !name.empty() && name.find_first_of("/?#") == std::string::npos;
    if (!isName)
        problem = {SchedulerProblem::Kind::unknown,
            "there is no queue \"" + name + "\" at " + schedulerName() + " (\"lpstat -v\" lists the queues)"};
    return isName;
}

std::string textOf(ipp_attribute_t* attribute, int index = 0) {
    const char* const text = ippGetString(attribute, index, nullptr);
    return text != nullptr ? text : "";
}

// The things that an answer lists, each of which `read` fills, an attribute at a time.
template <class Thing>
std::vector<Thing> thingsIn(
    const IPPMessage& answer, ipp_tag_t group, void (*read)(std::string_view, ipp_attribute_t*, Thing&)) {
    std::vector<Thing> things;
    bool isOpen = false;
    for (ipp_attribute_t* attribute = ippFirstAttribute(answer.get()); attribute != nullptr;
         attribute = ippNextAttribute(answer.get())) {
        const char* const name = ippGetName(attribute);
        if (name == nullptr || ippGetGroupTag(attribute) != group) { // between two things
            isOpen = false;
            continue;
        }
        if (!std::exchange(isOpen, true)) things.emplace_back();
        read(name, attribute, things.back());
    }
    return things;
}

constexpr std::array<const char*, 7> kQueueAttributes{"printer-name", "printer-type",
    "printer-make-and-model", "device-uri", "printer-is-accepting-jobs", "printer-state",
    "printer-state-reasons"};

void readQueueAttribute(std::string_view name, ipp_attribute_t* attribute, SchedulerQueue& queue) {
    if (name == "printer-name") queue.name = textOf(attribute);
    if (name == "printer-type") queue.isClass = (ippGetInteger(attribute, 0) & CUPS_PRINTER_CLASS) != 0;
    if (name == "printer-make-and-model") queue.makeAndModel = textOf(attribute);
    if (name == "device-uri") queue.deviceURI = textOf(attribute);
    if (name == "printer-is-accepting-jobs") queue.takesJobs = ippGetBoolean(attribute, 0) != 0;
    if (name == "printer-state") {
        queue.isPaused = ippGetInteger(attribute, 0) == IPP_PSTATE_STOPPED;
        queue.isPrinting = ippGetInteger(attribute, 0) == IPP_PSTATE_PROCESSING;
    }
    if (name != "printer-state-reasons") return;
    for (int i = 0; i < ippGetCount(attribute); ++i)
        if (std::string reason = textOf(attribute, i); reason != "none")
            queue.reasons.push_back(std::move(reason));
}

// The name in a queue's URI.
std::string queueOf(const std::string& uri) {
    std::array<char, HTTP_MAX_URI> scheme{};
    std::array<char, HTTP_MAX_URI> user{};
    std::array<char, HTTP_MAX_URI> host{};
    std::array<char, HTTP_MAX_URI> resource{};
    constexpr int kSize = HTTP_MAX_URI;
    int port = 0;
    httpSeparateURI(HTTP_URI_CODING_ALL, uri.c_str(), scheme.data(), kSize, user.data(), kSize, host.data(),
        kSize, &port, resource.data(), kSize);
    const std::string path = resource.data();
    return path.substr(path.rfind('/') + 1);
}

constexpr std::array<const char*, 5> kJobAttributes{
    "job-id", "job-name", "job-state", "job-printer-uri", "job-printer-state-message"};

void readJobAttribute(std::string_view name, ipp_attribute_t* attribute, QueueJob& job) {
    if (name == "job-id") job.id = ippGetInteger(attribute, 0);
    if (name == "job-name") job.title = textOf(attribute);
    if (name == "job-state") job.state = static_cast<ipp_jstate_t>(ippGetInteger(attribute, 0));
    if (name == "job-printer-state-message") job.message = textOf(attribute);
    if (name != "job-printer-uri") return;
    job.queue = queueOf(textOf(attribute));
}

void addOptions(const IPPMessage& request, const platform::PMPrinter::Options& options) {
    cups_option_t* list = nullptr;
    int count = 0;
    for (const auto& [name, value] : options)
        count = cupsAddOption(name.c_str(), value.c_str(), count, &list);
    cupsEncodeOptions2(request.get(), count, list, IPP_TAG_JOB);
    cupsFreeOptions(count, list);
}

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

// What lpoptions(1) keeps: the queue of the line "Default QUEUE[/INSTANCE] ..."; "" when there is none.
std::string defaultIn(const std::filesystem::path& options) {
    std::ifstream stream(options);
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words(line);
        std::string kind;
        std::string name;
        words >> kind >> name;
        if (::strcasecmp(kind.c_str(), "default") == 0) return name.substr(0, name.find('/'));
    }
    return {};
}

// The queue that the process's surroundings name, in the order of libcups; "" for none.
std::string defaultOfSurroundings() {
    const std::string home = variable("HOME");
    const std::string root = variable("CUPS_SERVERROOT");
    const std::string printer = variable("PRINTER");
    const std::string queues[]{variable("LPDEST"),
        printer == "lp" ? "" : printer, // what other systems set for everybody
        home.empty() ? "" : defaultIn(std::filesystem::path(home) / ".cups/lpoptions"),
        defaultIn(std::filesystem::path(root.empty() ? "/etc/cups" : root) / "lpoptions")};
    const auto* const named =
        std::ranges::find_if(queues, [](const std::string& queue) { return !queue.empty(); });
    return named != std::end(queues) ? *named : "";
}

// Waits for what a question on a connection answers.
template <class Answer>
Answer waitFor(SchedulerWorker::Duration time, SchedulerProblem& problem,
    std::function<Answer(SchedulerConnection&, SchedulerProblem&)> question) {
    using Told = std::pair<Answer, SchedulerProblem>;
    auto told = SchedulerWorker::shared().wait<Told>("", time, [question](SchedulerConnection& connection) {
        Told result;
        result.first = question(connection, result.second);
        return result;
    });
    if (!told) {
        problem = schedulerSilence();
        return Answer();
    }
    problem = std::move(told->second);
    return std::move(told->first);
}

// For who wants to know no more than the text.
template <class Answer>
Answer waitFor(SchedulerWorker::Duration time, platform::Failure& error,
    std::function<Answer(SchedulerConnection&, SchedulerProblem&)> question) {
    SchedulerProblem problem;
    Answer answer = waitFor<Answer>(time, problem, std::move(question));
    if (problem.kind != SchedulerProblem::Kind::none) error = problem.text;
    return answer;
}

} // namespace

FetchedPPD::~FetchedPPD() {
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

namespace scheduler {

std::optional<std::vector<SchedulerQueue>> queues(
    SchedulerConnection& connection, SchedulerProblem& problem) {
    // CUPS-Get-Printers: an operation of CUPS, beyond RFC 8011.
    const IPPMessage request(ippNewRequest(IPP_OP_CUPS_GET_PRINTERS));
    addWanted(request, kQueueAttributes);
    const IPPMessage answer = connection.ask(request, problem);
    if (answer == nullptr) return std::nullopt;
    return thingsIn(answer, IPP_TAG_PRINTER, readQueueAttribute);
}

// Get-Jobs, RFC 8011, section 4.2.6.
std::optional<std::vector<QueueJob>> jobs(
    SchedulerConnection& connection, const std::string& queue, SchedulerProblem& problem) {
    const IPPMessage request = newRequest(IPP_OP_GET_JOBS, queue);
    addUser(request);
    ippAddBoolean(request.get(), IPP_TAG_OPERATION, "my-jobs", 1);
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "which-jobs", nullptr, "not-completed");
    addWanted(request, kJobAttributes);
    const IPPMessage answer = connection.ask(request, problem);
    if (answer == nullptr) return std::nullopt;
    return thingsIn(answer, IPP_TAG_JOB, readJobAttribute);
}

// Get-Job-Attributes, RFC 8011, section 4.3.4.
std::optional<QueueJob> job(SchedulerConnection& connection, int number, SchedulerProblem& problem) {
    const IPPMessage request = newRequest(IPP_OP_GET_JOB_ATTRIBUTES, "");
    ippAddInteger(request.get(), IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", number);
    addUser(request);
    addWanted(request, kJobAttributes);
    const IPPMessage answer = connection.ask(request, problem);
    if (answer == nullptr) return std::nullopt;
    std::vector<QueueJob> found = thingsIn(answer, IPP_TAG_JOB, readJobAttribute);
    if (found.empty()) return std::nullopt;
    return std::move(found.front());
}

std::unique_ptr<FetchedPPD> ppdFile(
    SchedulerConnection& connection, const std::string& queue, SchedulerProblem& problem) {
    if (!isQueueName(queue, problem)) return nullptr;
    std::error_code error;
    std::string file = (std::filesystem::temp_directory_path(error) / "orvan-XXXXXX.ppd").string();
    constexpr int kEnding = 4; // ".ppd"
    const platform::FileDescriptor descriptor(::mkostemps(file.data(), kEnding, O_CLOEXEC));
    if (!descriptor) {
        problem = {SchedulerProblem::Kind::refuses, "no file can be made for a PPD: " + file};
        return nullptr;
    }
    auto ppd = std::make_unique<FetchedPPD>(file);
    if (!connection.fetchPPD(queue, descriptor.get(), problem)) return nullptr;
    return ppd;
}

platform::PPDRecord ppdRecord(
    SchedulerConnection& connection, const std::string& queue, SchedulerProblem& problem) {
    if (!isQueueName(queue, problem)) return nullptr;
    const platform::FileDescriptor descriptor(::memfd_create("orvan-ppd", MFD_CLOEXEC));
    if (!descriptor || !connection.fetchPPD(queue, descriptor.get(), problem) ||
        ::lseek(descriptor.get(), 0, SEEK_SET) != 0)
        return nullptr;
    return platform::PPDRecord(ppdOpenFd(descriptor.get()));
}

std::optional<FetchedQueue> queue(
    SchedulerConnection& connection, const std::string& name, SchedulerProblem& problem) {
    if (!isQueueName(name, problem)) return std::nullopt;
    // Get-Printer-Attributes, RFC 8011, section 4.2.5.
    const IPPMessage request = newRequest(IPP_OP_GET_PRINTER_ATTRIBUTES, name);
    addUser(request);
    addWanted(request, kQueueAttributes);
    const IPPMessage answer = connection.ask(request, problem);
    if (answer == nullptr) return std::nullopt;
    std::vector<SchedulerQueue> found = thingsIn(answer, IPP_TAG_PRINTER, readQueueAttribute);
    if (found.empty()) {
        problem = {SchedulerProblem::Kind::unknown,
            "there is no queue " + name + " at " + schedulerName() + " (\"lpstat -v\" lists the queues)"};
        return std::nullopt;
    }
    FetchedQueue fetched{.queue = std::move(found.front()), .activeJobs = {}, .ppd = nullptr};
    if (!fetched.queue.isOnePrinter()) {
        problem = {
            SchedulerProblem::Kind::severalPrinters, name + " is a class of printers, not one printer"};
        return std::nullopt;
    }
    // Without the list nothing is known to be active.
    SchedulerProblem noJobs;
    fetched.activeJobs = jobs(connection, name, noJobs).value_or(std::vector<QueueJob>());
    fetched.ppd = ppdFile(connection, name, problem);
    if (fetched.ppd == nullptr) return std::nullopt;
    return fetched;
}

bool setPPD(SchedulerConnection& connection, const std::string& queue, const std::string& text,
    SchedulerProblem& problem) {
    if (!isQueueName(queue, problem)) return false;
    // CUPS-Add-Modify-Printer: an operation of CUPS, beyond RFC 8011.
    IPPMessage request = newRequest(IPP_OP_CUPS_ADD_MODIFY_PRINTER, queue);
    addUser(request);
    return connection.send(std::move(request), "/admin/", text, problem) != nullptr;
}

std::optional<std::string> defaultQueue(SchedulerConnection& connection, SchedulerProblem& problem) {
    // CUPS-Get-Default: an operation of CUPS, beyond RFC 8011.
    const IPPMessage request(ippNewRequest(IPP_OP_CUPS_GET_DEFAULT));
    addWanted(request, std::array{"printer-name"});
    const IPPMessage answer = connection.ask(request, problem);
    if (answer == nullptr) return std::nullopt;
    return textOf(ippFindAttribute(answer.get(), "printer-name", IPP_TAG_NAME));
}

std::optional<int> sendCommand(SchedulerConnection& connection, const std::string& queue,
    const std::string& text, const std::string& title, const platform::PMPrinter::Options& options,
    SchedulerProblem& problem) {
    if (!isQueueName(queue, problem)) return std::nullopt;
    IPPMessage request = newRequest(IPP_OP_PRINT_JOB, queue);
    addUser(request);
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, title.c_str());
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr,
        platform::kCommandFileType);
    // A question prints nothing and waits for nobody.
    platform::PMPrinter::Options all{{"job-sheets", "none,none"}, {"job-hold-until", "no-hold"}};
    for (const auto& [name, value] : options)
        all[name] = value;
    addOptions(request, all);
    const IPPMessage answer = connection.send(std::move(request), "/printers/" + queue, text, problem);
    if (answer == nullptr) return std::nullopt;
    if (ipp_attribute_t* const number = ippFindAttribute(answer.get(), "job-id", IPP_TAG_INTEGER))
        return ippGetInteger(number, 0);
    problem = {SchedulerProblem::Kind::refuses, schedulerName() + " names no job"};
    return std::nullopt;
}

} // namespace scheduler

std::optional<std::vector<SchedulerQueue>> listQueues(
    SchedulerWorker::Duration time, SchedulerProblem& problem) {
    return waitFor<std::optional<std::vector<SchedulerQueue>>>(time, problem, scheduler::queues);
}

std::optional<std::vector<SchedulerQueue>> listQueues(
    SchedulerWorker::Duration time, platform::Failure& error) {
    return waitFor<std::optional<std::vector<SchedulerQueue>>>(time, error, scheduler::queues);
}

std::optional<std::vector<QueueJob>> listActiveJobs(
    const std::string& queue, SchedulerWorker::Duration time) {
    return waitFor<std::optional<std::vector<QueueJob>>>(time, platform::ignoredFailure(),
        [queue](SchedulerConnection& connection, SchedulerProblem& problem) {
            return scheduler::jobs(connection, queue, problem);
        });
}

bool setQueuePPD(const std::string& queue, const std::string& text, SchedulerWorker::Duration time,
    platform::Failure& error) {
    return waitFor<bool>(
        time, error, [queue, text](SchedulerConnection& connection, SchedulerProblem& problem) {
            return scheduler::setPPD(connection, queue, text, problem);
        });
}

std::unique_ptr<FetchedPPD> fetchQueuePPDFile(
    const std::string& queue, SchedulerWorker::Duration time, platform::Failure& error) {
    return waitFor<std::unique_ptr<FetchedPPD>>(
        time, error, [queue](SchedulerConnection& connection, SchedulerProblem& problem) {
            return scheduler::ppdFile(connection, queue, problem);
        });
}

std::optional<std::string> findDefaultQueue(SchedulerWorker::Duration time, SchedulerProblem& problem) {
    if (std::string named = defaultOfSurroundings(); !named.empty()) return named;
    return waitFor<std::optional<std::string>>(time, problem, scheduler::defaultQueue);
}

// Cancel-Job, RFC 8011, section 4.3.3.
bool cancelJob(const std::string& queue, int job, SchedulerWorker::Duration time) {
    return waitFor<bool>(time, platform::ignoredFailure(),
        [queue, job](SchedulerConnection& connection, SchedulerProblem& problem) {
            const IPPMessage request = newRequest(IPP_OP_CANCEL_JOB, queue);
            ippAddInteger(request.get(), IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", job);
            addUser(request);
            return connection.ask(request, problem) != nullptr;
        });
}

bool isSchedulerHere() {
    const std::string_view server = cupsServer();
    return server.starts_with('/') || server == "localhost" || server.starts_with("127.") || server == "::1";
}

} // namespace orvan
