#include "Platform/PMPrinter.h"

#include "Platform/PrintServerConnection.h"

#include <unistd.h>

#include <array>

namespace platform {
namespace {

// Null for a name that makes no URI.
IPPMessage requestTo(const PMPrinter& printer, ipp_op_t operation) {
    std::array<char, HTTP_MAX_URI> uri{};
    if (printer.queueName().empty() ||
        httpAssembleURIf(HTTP_URI_CODING_ALL, uri.data(), static_cast<int>(uri.size()), "ipp", nullptr,
            "localhost", 0, "/printers/%s", printer.queueName().c_str()) != HTTP_URI_STATUS_OK)
        return nullptr;
    IPPMessage request(ippNewRequest(operation));
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, uri.data());
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, cupsUser());
    return request;
}

bool isSuccess(const IPPMessage& answer) {
    return answer != nullptr && ippGetStatusCode(answer.get()) < IPP_STATUS_REDIRECTION_OTHER_SITE;
}

void addOptions(ipp_t* request, const std::map<std::string, std::string>* options) {
    if (options == nullptr) return;
    cups_option_t* list = nullptr;
    int count = 0;
    for (const auto& [name, value] : *options)
        count = cupsAddOption(name.c_str(), value.c_str(), count, &list);
    cupsEncodeOptions2(request, count, list, IPP_TAG_JOB);
    cupsFreeOptions(count, list);
}

} // namespace

PMPrinter::~PMPrinter() {
    for (const std::string& file : files_)
        ::unlink(file.c_str());
}

std::int32_t PMPrinterCopyDeviceURI(PMPrinter& printer, std::string* uri) {
    IPPMessage request = requestTo(printer, IPP_OP_GET_PRINTER_ATTRIBUTES);
    const PrintServerConnection connection(printer.patience());
    if (request == nullptr || connection.http() == nullptr) return kPMServerNotAvailable;
    ippAddString(
        request.get(), IPP_TAG_OPERATION, IPP_TAG_KEYWORD, "requested-attributes", nullptr, "device-uri");
    const IPPMessage answer(cupsDoRequest(connection.http(), request.release(), "/"));
    if (!isSuccess(answer)) return kPMServerNotAvailable;

    ipp_attribute_t* const attribute = ippFindAttribute(answer.get(), "device-uri", IPP_TAG_URI);
    if (attribute == nullptr) return kPMServerNotAvailable;
    *uri = ippGetString(attribute, 0, nullptr);
    return kPMNoError;
}

std::int32_t PMPrinterCopyDescriptionURL(PMPrinter& printer, std::string_view type, std::string* path) {
    if (type != kPMPPDDescriptionType) return kPMServerNotAvailable;
    const PrintServerConnection connection(printer.patience());
    const auto file = connection.fetchPPD(printer.queueName());
    if (file.path.empty()) return kPMServerNotAvailable;
    if (file.isTemporary) printer.ownFile(file.path);
    *path = file.path;
    return kPMNoError;
}

std::int32_t PMPrinterSendCommand(PMPrinter& printer, std::string_view commandText, const std::string& title,
    const std::map<std::string, std::string>* options) {
    const IPPMessage request = requestTo(printer, IPP_OP_PRINT_JOB);
    if (request == nullptr) return kPMServerNotAvailable;
    const PrintServerConnection connection(printer.patience());
    http_t* const http = connection.http();
    if (http == nullptr) return kPMServerNotAvailable;
    ippAddString(request.get(), IPP_TAG_OPERATION, IPP_TAG_NAME, "job-name", nullptr, title.c_str());
    ippAddString(
        request.get(), IPP_TAG_OPERATION, IPP_TAG_MIMETYPE, "document-format", nullptr, kCommandFileType);
    addOptions(request.get(), options);

    // One request, Print-Job of RFC 8011 section 4.2.1: no job without its document, whatever happens.
    const std::string resource = "/printers/" + printer.queueName();
    const std::size_t length = ippLength(request.get()) + commandText.size();
    if (cupsSendRequest(http, request.get(), resource.c_str(), length) != HTTP_STATUS_CONTINUE)
        return kPMServerNotAvailable;
    cupsWriteRequestData(http, commandText.data(), commandText.size());
    const IPPMessage answer(cupsGetResponse(http, resource.c_str()));
    if (!isSuccess(answer)) return kPMServerNotAvailable;
    if (ipp_attribute_t* const number = ippFindAttribute(answer.get(), "job-id", IPP_TAG_INTEGER))
        printer.setSubmittedJob(ippGetInteger(number, 0));
    return kPMNoError;
}

} // namespace platform
