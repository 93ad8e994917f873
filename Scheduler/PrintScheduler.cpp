#include "Scheduler/PrintScheduler.h"

#include <cups/cups.h>
#include <cups/ppd.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace orvan {
namespace {

int giveUp(http_t*, void* silent) {
    *static_cast<bool*>(silent) = true;
    return 0;
}

std::string why(bool silent) {
    return silent ? "it does not answer" : cupsLastErrorString();
}

void say(platform::Failure& error, const std::string& message) {
    error = message;
}

// Null, and a message in *error, when the scheduler is not there. *silent, which outlives the connection,
// becomes true when the scheduler is there and says nothing.
platform::HTTPConnection connect(std::chrono::milliseconds patience, bool* silent, platform::Failure& error) {
    platform::HTTPConnection http(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(),
        1, static_cast<int>(patience.count()), nullptr));
    if (http != nullptr)
        httpSetTimeout(http.get(), static_cast<double>(patience.count()) / 1000.0, giveUp, silent);
    else
        say(error, "cannot reach " + schedulerName() + ": " + cupsLastErrorString() +
                       ". Is it running? (CUPS_SERVER names another one.)");
    return http;
}

constexpr std::array<const char*, 7> kQueueAttributes{"printer-name", "printer-type",
    "printer-make-and-model", "device-uri", "printer-is-accepting-jobs", "printer-state",
    "printer-state-reasons"};

void readQueueAttribute(std::string_view name, ipp_attribute_t* attribute, SchedulerQueue& queue) {
    const auto text = [attribute](int index) -> std::string {
        const char* const value = ippGetString(attribute, index, nullptr);
        return value != nullptr ? value : "";
    };
    if (name == "printer-name") queue.name = text(0);
    if (name == "printer-type") queue.isClass = (ippGetInteger(attribute, 0) & CUPS_PRINTER_CLASS) != 0;
    if (name == "printer-make-and-model") queue.makeAndModel = text(0);
    if (name == "device-uri") queue.deviceURI = text(0);
    if (name == "printer-is-accepting-jobs") queue.takesJobs = ippGetBoolean(attribute, 0) != 0;
    if (name == "printer-state") queue.isPaused = ippGetInteger(attribute, 0) == IPP_PSTATE_STOPPED;
    if (name != "printer-state-reasons") return;
    for (int i = 0; i < ippGetCount(attribute); ++i)
        if (std::string reason = text(i); reason != "none") queue.reasons.push_back(std::move(reason));
}

} // namespace

std::string schedulerName() {
    constexpr int kUsualPort = 631; // RFC 8010, section 5
    const std::string server = cupsServer();
    const bool hasUsualPort = server.starts_with('/') || ippPort() == kUsualPort;
    return "the print scheduler at " + server + (hasUsualPort ? "" : ":" + std::to_string(ippPort()));
}

FetchedPPD::~FetchedPPD() {
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

std::unique_ptr<FetchedPPD> fetchQueuePPDFile(
    const std::string& queue, std::chrono::milliseconds patience, platform::Failure& error) {
    bool silent = false;
    const platform::HTTPConnection http = connect(patience, &silent, error);
    if (http == nullptr) return nullptr;

    std::time_t modified = 0;
    std::array<char, 1024> file{};
    const http_status_t status = cupsGetPPD3(http.get(), queue.c_str(), &modified, file.data(), file.size());
    if (status != HTTP_STATUS_OK) {
        if (cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND)
            say(error, "there is no queue " + queue + " at " + schedulerName() +
                           ", or it has no PPD (\"lpstat -v\" lists the queues)");
        else
            say(error,
                "cannot get the PPD of queue " + queue + " from " + schedulerName() + ": " + why(silent));
        return nullptr;
    }
    return std::make_unique<FetchedPPD>(file.data());
}

platform::IPPMessage askScheduler(
    ipp_t* request, std::chrono::milliseconds patience, platform::Failure& error) {
    platform::IPPMessage owned(request);
    bool silent = false;
    const platform::HTTPConnection http = connect(patience, &silent, error);
    if (http == nullptr) return nullptr;
    platform::IPPMessage answer(cupsDoRequest(http.get(), owned.release(), "/"));
    const ipp_status_t status = cupsLastError();
    // A list of nothing is "not found" in CUPS.
    if (answer != nullptr && (status <= IPP_STATUS_OK_CONFLICTING || status == IPP_STATUS_ERROR_NOT_FOUND))
        return answer;
    say(error, schedulerName() + " refuses: " + why(silent));
    return nullptr;
}

std::optional<std::vector<SchedulerQueue>> listQueues(
    std::chrono::milliseconds patience, platform::Failure& error) {
    // CUPS-Get-Printers: an operation of CUPS, beyond RFC 8011.
    ipp_t* const request = ippNewRequest(IPP_OP_CUPS_GET_PRINTERS);
    ippAddStrings(request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes",
        static_cast<int>(kQueueAttributes.size()), nullptr, kQueueAttributes.data());
    const platform::IPPMessage answer = askScheduler(request, patience, error);
    if (answer == nullptr) return std::nullopt;
    std::vector<SchedulerQueue> queues;
    SchedulerQueue queue;
    const auto finish = [&] {
        if (!queue.name.empty()) queues.push_back(std::move(queue));
        queue = {};
    };
    for (ipp_attribute_t* attribute = ippFirstAttribute(answer.get()); attribute != nullptr;
         attribute = ippNextAttribute(answer.get())) {
        if (const char* const name = ippGetName(attribute))
            readQueueAttribute(name, attribute, queue);
        else // between two queues
            finish();
    }
    finish();
    return queues;
}

bool isSchedulerHere() {
    const std::string_view server = cupsServer();
    return server.starts_with('/') || server == "localhost" || server.starts_with("127.") || server == "::1";
}

} // namespace orvan
