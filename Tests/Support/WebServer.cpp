#include "Tests/Support/WebServer.h"

#include "Platform/HTTPStream.h"
#include "Tests/Support/ScriptedServer.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace orvan {
namespace {

constexpr const char* kNginx = "/usr/sbin/nginx";
constexpr const char* kConfiguration = R"(
daemon off; master_process off; pid nginx.pid; error_log error.log;
events {}
http {
    log_format brief "$request $remote_user"; access_log requests.log brief;
    client_body_temp_path body; proxy_temp_path proxy; fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi;
    scgi_temp_path scgi;
    server {
        listen 127.0.0.1:$MODERN ssl;
        ssl_certificate modern.pem; ssl_certificate_key modern.key;
        location / { root documents; auth_basic "printer"; auth_basic_user_file users; }
    }
    server {
        listen 127.0.0.1:$OLD ssl; ssl_protocols TLSv1.2; ssl_ciphers ALL:@SECLEVEL=0;
        ssl_certificate old.pem; ssl_certificate_key old.key;
        location / { root documents; }
        location /moved { return 302 /status.xml; }
    }
})";

void replace(std::string& text, const std::string& from, int port) {
    text.replace(text.find(from), from.size(), std::to_string(port));
}

} // namespace

bool WebServer::isInstalled() {
    return access(kNginx, X_OK) == 0;
}

WebServer::WebServer(const std::string& document) {
    // Both are taken before either is given back, so they differ.
    auto first = listenOnLoopback(1, &modernPort_);
    listenOnLoopback(1, &oldPort_);
    first.reset();
    std::string configuration = kConfiguration;
    replace(configuration, "$MODERN", modernPort_);
    replace(configuration, "$OLD", oldPort_);
    folder_.write("nginx.conf", configuration);
    folder_.write("users", "user:{PLAIN}secret\n");
    folder_.write("documents/status.xml", document);
    serve();
}

void WebServer::becomeAnother() {
    process_.reset();
    std::filesystem::remove(folder_.path() / "requests.log");
    serve();
}

void WebServer::serve() {
    certify("modern", "rsa:2048");
    certify("old", "rsa:1024");
    const std::string prefix = folder_.path();
    const std::string file = prefix + "/nginx.conf";
    process_ = std::make_unique<BackgroundProcess>(
        std::vector<std::string>{kNginx, "-p", prefix, "-c", file, "-e", prefix + "/error.log"});
    waitUntilServing();
}

std::string WebServer::log() const {
    std::ifstream stream(folder_.path() / "requests.log");
    std::string log;
    // What waitUntilServing asks is not counted.
    for (std::string line; std::getline(stream, line);)
        if (!line.ends_with("HTTP/1.1 -")) log += line + '\n';
    return log;
}

std::string WebServer::modern() const {
    return "https://127.0.0.1:" + std::to_string(modernPort_) + "/status.xml";
}

std::string WebServer::old(const std::string& path) const {
    return "https://127.0.0.1:" + std::to_string(oldPort_) + path;
}

void WebServer::certify(const std::string& name, const std::string& key) const {
    const std::string file = folder_.path() / name;
    const ProgramEnd end = runProgram({"/usr/bin/openssl", "req", "-x509", "-newkey", key, "-nodes", "-subj",
        "/CN=printer.example", "-days", "2", "-keyout", file + ".key", "-out", file + ".pem"});
    if (end.exitCode != 0) throw std::runtime_error(end.errors);
}

void WebServer::waitUntilServing() const {
    const platform::TLSSettings unchecked{false, false};
    const auto serves = [&] {
        const auto stream = platform::HTTPStream::create({old("/status.xml"), {}, {}}, unchecked);
        std::string bytes;
        auto end = stream->open() ? platform::HTTPRead::nothingYet : platform::HTTPRead::failed;
        while (end == platform::HTTPRead::nothingYet)
            end = stream->read(bytes, 10);
        return end == platform::HTTPRead::bytes;
    };
    if (!eventually(serves)) throw std::runtime_error("nginx does not answer");
}

} // namespace orvan
