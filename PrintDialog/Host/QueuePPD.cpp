#include "PrintDialog/Host/QueuePPD.h"

#include <cups/cups.h>

#include <array>
#include <ctime>
#include <filesystem>
#include <memory>
#include <system_error>

namespace orvan {
namespace {

struct CloseConnection {
    void operator()(http_t* http) const { httpClose(http); }
};
using Connection = std::unique_ptr<http_t, CloseConnection>;

int giveUp(http_t*, void*) { return 0; }

std::string describeServer() {
    const std::string server = cupsServer();
    return server.empty() ? "the print scheduler" : "the print scheduler at " + server;
}

} // namespace

std::unique_ptr<DialogPPD> fetchQueuePPD(
    const std::string& queue, std::chrono::milliseconds patience, std::string* error) {
    const auto refuse = [&](const std::string& why) {
        if (error != nullptr) *error = why;
        return nullptr;
    };
    const Connection http(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
        static_cast<int>(patience.count()), nullptr));
    if (http == nullptr)
        return refuse("cannot reach " + describeServer() + ": " + cupsLastErrorString() +
                      ". Is it running? (CUPS_SERVER names another one.)");
    httpSetTimeout(http.get(), static_cast<double>(patience.count()) / 1000.0, giveUp, nullptr);

    std::time_t modified = 0;
    std::array<char, 1024> file{};
    const http_status_t status = cupsGetPPD3(http.get(), queue.c_str(), &modified, file.data(), file.size());
    if (status != HTTP_STATUS_OK) {
        const std::string cause = cupsLastErrorString();
        if (cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND)
            return refuse("there is no queue " + queue + " at " + describeServer() + ", or it has no PPD (\"lpstat -v\" lists the queues)");
        return refuse("cannot get the PPD of queue " + queue + " from " + describeServer() + ": " + cause);
    }
    std::unique_ptr<DialogPPD> ppd = DialogPPD::open(file.data(), error);
    std::error_code ignored;
    std::filesystem::remove(file.data(), ignored);
    return ppd;
}

} // namespace orvan
