#include "TestBed/PrintingSystem/AdminConnection.h"

#include <array>

namespace orvan {
namespace {

constexpr int kConnectMilliseconds = 2000;
constexpr double kAnswerSeconds = 10;

} // namespace

AdminConnection::AdminConnection(const std::filesystem::path& socket)
    : http_(httpConnect2(socket.c_str(), 0, nullptr, AF_UNSPEC, HTTP_ENCRYPTION_IF_REQUESTED, 1,
          kConnectMilliseconds, nullptr)) {
    if (http_) httpSetTimeout(http_, kAnswerSeconds, nullptr, nullptr);
}

AdminConnection::~AdminConnection() {
    httpClose(http_);
}

IPPMessage AdminConnection::queueRequest(ipp_op_t operation, const std::string& queue) {
    std::array<char, HTTP_MAX_URI> uri{};
    httpAssembleURIf(HTTP_URI_CODING_ALL, uri.data(), static_cast<int>(uri.size()), "ipp", nullptr,
        "localhost", 0, "/printers/%s", queue.c_str());
    IPPMessage request(ippNewRequest(operation));
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri.data());
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, cupsUser());
    return request;
}

Failure AdminConnection::send(IPPMessage request, const std::string& resource, IPPMessage* response,
    const std::filesystem::path& file) {
    if (!http_) return "the scheduler takes no connection";
    // libcups takes over the request.
    IPPMessage answer(file.empty()
                          ? cupsDoRequest(http_, request.release(), resource.c_str())
                          : cupsDoFileRequest(http_, request.release(), resource.c_str(), file.c_str()));
    const ipp_status_t status = answer ? ippGetStatusCode(answer.get()) : cupsLastError();
    if (!answer || status >= IPP_STATUS_REDIRECTION_OTHER_SITE) {
        const char* reason = cupsLastErrorString();
        return reason && *reason ? reason : ippErrorString(status);
    }
    if (response) *response = std::move(answer);
    return std::nullopt;
}

} // namespace orvan
