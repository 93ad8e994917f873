// A real web server of a test's own, with passwords and certificates that it has made for itself.
#pragma once

#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"

#include <memory>
#include <string>

namespace orvan {

// nginx on 127.0.0.1, which serves one document at "/status.xml". Its certificates are signed by nobody else,
// and for another host.
class WebServer {
public:
    static bool isInstalled();

    // Answers when it serves; throws when it does not.
    explicit WebServer(const std::string& document);

    // Wants the user name "user" and the password "secret".
    std::string modern() const;
    // Has a key that is too short for libraries of today, and speaks TLS 1.2 alone; "/moved" leads to the
    // document.
    std::string old(const std::string& path) const;

    // The same documents, places and users behind certificates of another key, as somebody else would have it
    // who takes the server's address.
    void becomeAnother();
    // The requests of the present server.
    std::string log() const;

private:
    void serve();
    void certify(const std::string& name, const std::string& key) const;
    void waitUntilServing() const;

    TempFolder folder_;
    int modernPort_ = 0;
    int oldPort_ = 0;
    std::unique_ptr<BackgroundProcess> process_;
};

} // namespace orvan
