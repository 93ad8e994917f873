// What a stream (Platform/HTTPStream.h) answers for libcurl's failures.
#pragma once

#include "Platform/HTTPStream.h"

#include <curl/curl.h>

#include <string>

namespace platform {

// The end of a transfer that did not succeed.
struct HTTPTransferFailure {
    CURLcode result = CURLE_OK;
    int systemError = 0;        // errno of the connection, 0 when there is none
    long certificateResult = 0; // OpenSSL's X509_V_*
    std::string server;         // "host:port"
    std::string details;        // libcurl's own words
};

HTTPStreamError httpStreamError(const HTTPTransferFailure& failure);

} // namespace platform
