// A multicast DNS responder that answers as a test wants.
#pragma once

#include "Common/RendezvousUtilities.h"
#include "Platform/FileDescriptor.h"

#include <arpa/inet.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace orvan {

// Somebody in the group who answers each query with these datagrams, once or over and over.
class Responder {
public:
    using Answers = std::function<std::vector<std::string>(const std::string& query)>;

    enum class Manner : std::uint8_t { once, overAndOver, fromAnotherPort };

    explicit Responder(Answers answers, Manner manner = Manner::once)
        : answers_(std::move(answers)),
          manner_(manner),
          socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        const ip_mreq group{mDNS_addr.sin_addr, {htonl(INADDR_LOOPBACK)}};
        sockaddr_in any = mDNS_addr;
        any.sin_addr.s_addr = INADDR_ANY;
        if (::bind(socket_.get(), reinterpret_cast<sockaddr*>(&any), sizeof any) != 0 ||
            ::setsockopt(socket_.get(), IPPROTO_IP, IP_ADD_MEMBERSHIP, &group, sizeof group) != 0)
            std::perror("responder");
        thread_ = std::thread([this] { run(); });
    }
    ~Responder() {
        stop_ = true;
        thread_.join();
    }
    Responder(const Responder&) = delete;
    Responder& operator=(const Responder&) = delete;

    int queries() const { return queries_; }

private:
    void run() {
        std::array<char, 2048> query{};
        std::vector<std::string> answers;
        sockaddr_in from{};
        socklen_t size = sizeof from;
        auto* const address = reinterpret_cast<sockaddr*>(&from);
        while (!stop_) {
            pollfd waiting{socket_.get(), POLLIN, 0};
            if (::poll(&waiting, 1, 20) > 0) {
                const ssize_t length =
                    ::recvfrom(socket_.get(), query.data(), query.size(), 0, address, &size);
                ++queries_;
                answers = answers_({query.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))});
            }
            for (const std::string& answer : answers)
                ::sendto(manner_ == Manner::fromAnotherPort ? stranger_.get() : socket_.get(), answer.data(),
                    answer.size(), 0, address, size);
            if (manner_ != Manner::overAndOver) answers.clear();
        }
    }

    Answers answers_;
    Manner manner_;
    platform::FileDescriptor socket_;
    platform::FileDescriptor stranger_{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    std::atomic<bool> stop_ = false;
    std::atomic<int> queries_ = 0;
    std::thread thread_;
};

} // namespace orvan
