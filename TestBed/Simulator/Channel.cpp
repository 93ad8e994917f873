#include "TestBed/Simulator/Channel.h"

#include <fcntl.h>
#include <openssl/err.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <span>

namespace orvan {
namespace {

constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::milliseconds kForEver{-1};

} // namespace

Channel::Channel(int socket, SSL_CTX* context, const StopSignal& stop) : socket_(socket), stop_(stop) {
    fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK);
    if (!context) return;
    tls_.reset(SSL_new(context));
    SSL_set_fd(tls_.get(), socket);
}

short Channel::await(short events) const {
    return stop_.waitForEvents(socket(), events, kPatience);
}

// Whether it is worth trying again what answered `result`.
bool Channel::awaitTLS(int result) const {
    switch (SSL_get_error(tls_.get(), result)) {
    case SSL_ERROR_WANT_READ:
        return await(POLLIN) != 0;
    case SSL_ERROR_WANT_WRITE:
        return await(POLLOUT) != 0;
    default:
        return false;
    }
}

bool Channel::open() {
    if (!tls_) return true;
    ERR_clear_error();
    int result = SSL_accept(tls_.get());
    while (result != 1 && awaitTLS(result))
        result = SSL_accept(tls_.get());
    return result == 1;
}

ssize_t Channel::read(char* bytes, std::size_t size) {
    if (!tls_) return await(POLLIN) != 0 ? recv(socket(), bytes, size, 0) : -1;
    ERR_clear_error();
    std::size_t count = 0;
    int result = SSL_read_ex(tls_.get(), bytes, size, &count);
    while (result != 1 && awaitTLS(result))
        result = SSL_read_ex(tls_.get(), bytes, size, &count);
    if (result == 1) return static_cast<ssize_t>(count);
    return SSL_get_error(tls_.get(), result) == SSL_ERROR_ZERO_RETURN ? 0 : -1;
}

ssize_t Channel::writeSome(const char* bytes, std::size_t size) {
    if (!tls_) return await(POLLOUT) != 0 ? send(socket(), bytes, size, MSG_NOSIGNAL) : -1;
    ERR_clear_error();
    std::size_t count = 0;
    int result = SSL_write_ex(tls_.get(), bytes, size, &count);
    while (result != 1 && awaitTLS(result))
        result = SSL_write_ex(tls_.get(), bytes, size, &count);
    return result == 1 ? static_cast<ssize_t>(count) : -1;
}

ssize_t Channel::write(const char* bytes, std::size_t size) {
    std::span<const char> left(bytes, size);
    while (!left.empty()) {
        const ssize_t count = writeSome(left.data(), left.size());
        if (count < 0) return -1;
        left = left.subspan(static_cast<std::size_t>(count));
    }
    return static_cast<ssize_t>(size);
}

void Channel::finish() {
    if (tls_) SSL_shutdown(tls_.get());
    shutdown(socket(), SHUT_WR);
}

bool Channel::isOpen() const {
    pollfd state{socket(), POLLRDHUP, 0};
    return poll(&state, 1, 0) == 0;
}

void Channel::waitUntilClosed() const {
    stop_.waitForEvents(socket(), POLLRDHUP, kForEver);
}

} // namespace orvan
