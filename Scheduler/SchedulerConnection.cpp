#include "Scheduler/SchedulerConnection.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace orvan {
namespace {

// How often libcups asks whether to go on waiting; it knows nothing shorter.
constexpr double kLookSeconds = 1;

// Of a message that is used up when it is sent.
IPPMessage copyOf(const IPPMessage& message) {
    IPPMessage copy(ippNew());
    ippSetOperation(copy.get(), ippGetOperation(message.get()));
    ippSetRequestId(copy.get(), ippGetRequestId(message.get()));
    ippCopyAttributes(copy.get(), message.get(), 0, nullptr, nullptr);
    return copy;
}

// A list of nothing is "not found" in CUPS.
bool isAnswer(const IPPMessage& answer) {
    if (answer == nullptr) return false;
    const ipp_status_t status = ippGetStatusCode(answer.get());
    return status < IPP_STATUS_REDIRECTION_OTHER_SITE || status == IPP_STATUS_ERROR_NOT_FOUND;
}

// Whether this user may not connect: that takes the right to write to the socket, unix(7). libcups keeps the
// reason of a failed connection to itself.
bool isSocketClosedToUser() {
    const char* const server = cupsServer();
    return *server == '/' && ::faccessat(AT_FDCWD, server, W_OK, AT_EACCESS) != 0 && errno == EACCES;
}

} // namespace

std::string schedulerName() {
    constexpr int kUsualPort = 631; // RFC 8010, section 5
    const std::string server = cupsServer();
    const bool hasUsualPort = server.starts_with('/') || ippPort() == kUsualPort;
    return "the print scheduler at " + server + (hasUsualPort ? "" : ":" + std::to_string(ippPort()));
}

SchedulerProblem schedulerSilence() {
    return {SchedulerProblem::Kind::silent, schedulerName() + " does not answer"};
}

SchedulerAddress SchedulerAddress::ofThisThread() {
    return {.server = cupsServer(), .port = ippPort(), .encryption = cupsEncryption(), .user = cupsUser()};
}

void SchedulerAddress::setForThisThread() const {
    const bool isSocket = server.starts_with('/');
    const bool isIPv6 = !isSocket && server.find(':') != std::string::npos;
    cupsSetServer(
        (isSocket ? server : (isIPv6 ? '[' + server + ']' : server) + ':' + std::to_string(port)).c_str());
    cupsSetEncryption(encryption);
    cupsSetUser(user.c_str());
}

SchedulerConnection::SchedulerConnection() {
    const auto giveNothing = [](const char*, http_t*, const char*, const char*, void* self) -> const char* {
        static_cast<SchedulerConnection*>(self)->wantsPassword_ = true;
        return nullptr;
    };
    cupsSetPasswordCB2(giveNothing, this);
}

SchedulerConnection::~SchedulerConnection() {
    cupsSetPasswordCB2(nullptr, nullptr);
}

void SchedulerConnection::begin(Clock::time_point deadline, const SchedulerAddress& address) {
    if (address != address_) {
        disconnect();
        address.setForThisThread();
        address_ = address;
    }
    const std::lock_guard lock(mutex_);
    deadline_ = deadline;
    isAborted_ = false;
    wantsPassword_ = false;
}

void SchedulerConnection::abort() {
    const std::lock_guard lock(mutex_);
    isAborted_ = true;
    if (socket_) ::shutdown(socket_.get(), SHUT_RDWR);
}

bool SchedulerConnection::isOver() const {
    const std::lock_guard lock(mutex_);
    return isAborted_ || Clock::now() >= deadline_;
}

bool SchedulerConnection::connect(SchedulerProblem& problem) {
    if (http_ != nullptr) return true;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline_ - Clock::now());
    if (left.count() > 0 && !isOver()) {
        http_.reset(httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1,
            static_cast<int>(left.count()), nullptr));
    }
    if (http_ == nullptr) {
        if (isOver())
            problem = schedulerSilence();
        else if (isSocketClosedToUser())
            problem = {SchedulerProblem::Kind::forbidden,
                "user " + std::string(cupsUser()) + " may not open the socket of " + schedulerName()};
        else
            problem = {SchedulerProblem::Kind::notThere,
                "cannot reach " + schedulerName() + ": " + cupsLastErrorString() +
                    ". Is it running? (CUPS_SERVER names another one.)"};
        return false;
    }
    const auto goOn = [](http_t*, void* self) {
        return static_cast<SchedulerConnection*>(self)->isOver() ? 0 : 1;
    };
    httpSetTimeout(http_.get(), kLookSeconds, goOn, this);
    const std::lock_guard lock(mutex_);
    socket_ = platform::FileDescriptor(::fcntl(httpGetFd(http_.get()), F_DUPFD_CLOEXEC, 0));
    if (isAborted_ && socket_) ::shutdown(socket_.get(), SHUT_RDWR);
    return true;
}

void SchedulerConnection::disconnect() {
    {
        const std::lock_guard lock(mutex_);
        socket_.reset();
    }
    http_.reset();
}

// Whether the scheduler has closed a connection on which nothing is under way.
bool SchedulerConnection::isDead() const {
    return http_ != nullptr && httpWait(http_.get(), 0) != 0;
}

SchedulerProblem SchedulerConnection::problemWith(const std::string& what, ipp_status_t status) const {
    using Kind = SchedulerProblem::Kind;
    if (wantsPassword_)
        return {Kind::wantsPassword,
            schedulerName() + " wants a password for " + what + " from user " + cupsUser()};
    if (isOver()) return schedulerSilence();
    if (status == IPP_STATUS_ERROR_NOT_FOUND)
        return {Kind::unknown, schedulerName() + " does not know it: " + cupsLastErrorString()};
    const std::string refusal = schedulerName() + " refuses: " + cupsLastErrorString();
    // What the scheduler says of a document that it cannot write; libcups makes other words of it.
    if (http_ != nullptr && httpGetStatus(http_.get()) == HTTP_STATUS_REQUEST_TOO_LARGE)
        return {Kind::noRoom, refusal};
    switch (status) {
    case IPP_STATUS_ERROR_NOT_ACCEPTING_JOBS:
        return {Kind::rejectsJobs, refusal};
    case IPP_STATUS_ERROR_FORBIDDEN:
    case IPP_STATUS_ERROR_NOT_AUTHENTICATED:
    case IPP_STATUS_ERROR_NOT_AUTHORIZED:
        return {Kind::notPermitted, refusal};
    default:
        return {Kind::refuses, refusal};
    }
}

// Takes the step, and once more on a new connection when one that was kept has turned out dead. `step` sets
// the problem and answers whether the connection is still good.
template <class Step>
bool SchedulerConnection::repeatedOnce(SchedulerProblem& problem, const Step& step) {
    for (bool mayRepeat = http_ != nullptr;; mayRepeat = false) {
        if (!connect(problem)) return false;
        problem = {};
        if (step()) return true;
        disconnect();
        if (!mayRepeat || wantsPassword_ || isOver()) return false;
    }
}

IPPMessage SchedulerConnection::ask(const IPPMessage& request, SchedulerProblem& problem) {
    IPPMessage answer;
    repeatedOnce(problem, [&] {
        answer.reset(cupsDoRequest(http_.get(), copyOf(request).release(), "/"));
        if (isAnswer(answer)) return true;
        problem = problemWith(ippOpString(ippGetOperation(request.get())), cupsLastError());
        // An answer that says no is one as well; the connection is good.
        return std::exchange(answer, nullptr) != nullptr;
    });
    return answer;
}

IPPMessage SchedulerConnection::send(
    IPPMessage request, const std::string& resource, std::string_view document, SchedulerProblem& problem) {
    if (isDead()) disconnect();
    if (!connect(problem)) return nullptr;
    // libcups asks for the document again when it has to authenticate.
    const platform::FileDescriptor file(::memfd_create("orvan-document", MFD_CLOEXEC));
    if (!file ||
        ::write(file.get(), document.data(), document.size()) != static_cast<ssize_t>(document.size()) ||
        ::lseek(file.get(), 0, SEEK_SET) != 0) {
        problem = {SchedulerProblem::Kind::refuses, "no memory for a document"};
        return nullptr;
    }
    const std::string what = ippOpString(ippGetOperation(request.get()));
    IPPMessage answer(cupsDoIORequest(http_.get(), request.release(), resource.c_str(), file.get(), -1));
    if (answer != nullptr && ippGetStatusCode(answer.get()) < IPP_STATUS_REDIRECTION_OTHER_SITE)
        return answer;
    problem = problemWith(what, cupsLastError());
    if (answer == nullptr) disconnect();
    return nullptr;
}

bool SchedulerConnection::fetchPPD(const std::string& queue, int descriptor, SchedulerProblem& problem) {
    const std::string resource = "/printers/" + queue + ".ppd";
    bool isFetched = false;
    repeatedOnce(problem, [&] {
        if (::ftruncate(descriptor, 0) != 0 || ::lseek(descriptor, 0, SEEK_SET) != 0) return true;
        const http_status_t status = cupsGetFd(http_.get(), resource.c_str(), descriptor);
        isFetched = status == HTTP_STATUS_OK && !isOver();
        if (isFetched) return true;
        if (status == HTTP_STATUS_NOT_FOUND) {
            problem = {
                SchedulerProblem::Kind::unknown, "there is no queue " + queue + " at " + schedulerName() +
                                                     ", or it has no PPD (\"lpstat -v\" lists the queues)"};
            return true;
        }
        problem = problemWith("the PPD of queue " + queue, cupsLastError());
        if (problem.kind == SchedulerProblem::Kind::refuses)
            problem.text = "cannot get the PPD of queue " + queue + " from " + schedulerName() + ": " +
                           cupsLastErrorString();
        return false;
    });
    return isFetched;
}

} // namespace orvan
