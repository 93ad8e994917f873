#include "PrintDialog/Host/Scheduler.h"

#include <cups/cups.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace orvan {
namespace {

struct CloseConnection {
    void operator()(http_t* http) const { httpClose(http); }
};
using Connection = std::unique_ptr<http_t, CloseConnection>;

struct DeleteMessage {
    void operator()(ipp_t* message) const { ippDelete(message); }
};
using Message = std::unique_ptr<ipp_t, DeleteMessage>;

int giveUp(http_t*, void* silent) {
    *static_cast<bool*>(silent) = true;
    return 0;
}

std::string why(bool silent) {
    return silent ? "it does not answer" : cupsLastErrorString();
}

void say(std::string* error, const std::string& message) {
    if (error != nullptr) *error = message;
}

// Null, and a message in *error, when the scheduler is not there. *silent, which outlives the connection,
// becomes true when the scheduler is there and says nothing.
Connection connect(std::chrono::milliseconds patience, bool* silent, std::string* error) {
    Connection http(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
        static_cast<int>(patience.count()), nullptr));
    if (http != nullptr)
        httpSetTimeout(http.get(), static_cast<double>(patience.count()) / 1000.0, giveUp, silent);
    else
        say(error, "cannot reach " + schedulerName() + ": " + cupsLastErrorString() +
                       ". Is it running? (CUPS_SERVER names another one.)");
    return http;
}

} // namespace

std::string schedulerName() {
    return std::string("the print scheduler at ") + cupsServer();
}

std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, std::chrono::milliseconds patience, std::string* error) {
    bool silent = false;
    const Connection http = connect(patience, &silent, error);
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
    std::unique_ptr<DialogPPD> ppd = DialogPPD::open(file.data(), error);
    std::error_code ignored;
    std::filesystem::remove(file.data(), ignored);
    return ppd;
}

std::optional<std::vector<std::string>> listQueues(std::chrono::milliseconds patience, std::string* error) {
    bool silent = false;
    const Connection http = connect(patience, &silent, error);
    if (http == nullptr) return std::nullopt;

    // RFC 8011 has no such operation; it is CUPS-Get-Printers of the CUPS implementation of IPP.
    ipp_t* const request = ippNewRequest(IPP_OP_CUPS_GET_PRINTERS);
    ippAddString(
        request, IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", nullptr, "printer-name");
    const Message answer(cupsDoRequest(http.get(), request, "/"));
    const ipp_status_t status = cupsLastError();
    if (answer == nullptr || (status > IPP_STATUS_OK_CONFLICTING && status != IPP_STATUS_ERROR_NOT_FOUND)) {
        say(error, "cannot list the queues of " + schedulerName() + ": " + why(silent));
        return std::nullopt;
    }
    std::vector<std::string> queues;
    for (ipp_attribute_t* name = ippFindAttribute(answer.get(), "printer-name", IPP_TAG_NAME);
         name != nullptr; name = ippFindNextAttribute(answer.get(), "printer-name", IPP_TAG_NAME))
        queues.emplace_back(ippGetString(name, 0, nullptr));
    return queues;
}

} // namespace orvan
