// The simulated printer's own certificate.
#pragma once

#include "TestBed/Session/Failure.h"

#include <openssl/ssl.h>

#include <memory>

namespace orvan {

struct FreeTLSContext {
    void operator()(SSL_CTX* context) const { SSL_CTX_free(context); }
};
using TLSContext = std::unique_ptr<SSL_CTX, FreeTLSContext>;

// What a TLS server needs, with a new key and a certificate for 127.0.0.1 and localhost that it signed
// itself, as printers do, good for a day. Both are in memory alone. Sessions are not resumed. Null, and
// *failure says why, when OpenSSL cannot make it.
TLSContext makeTLSContext(Failure* failure);

} // namespace orvan
