#include "Platform/SNMPRequest.h"

#include "Formats/TextEncoding.h"

// clang-format off: the second needs the first
#include <net-snmp/library/large_fd_set.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
// clang-format on

#include <netdb.h>
#include <sys/random.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <deque>
#include <memory>
#include <span>
#include <system_error>
#include <utility>

namespace platform {
namespace {

using Identifier = std::vector<oid>;

struct FreeMessage {
    void operator()(netsnmp_pdu* message) const { snmp_free_pdu(message); }
};
using Message = std::unique_ptr<netsnmp_pdu, FreeMessage>;

struct CloseSession {
    void operator()(void* session) const { snmp_sess_close(session); }
};
using Session = std::unique_ptr<void, CloseSession>;

// The library without its configuration files, its log, and what else init_snmp() looks for in the system:
// modules of names, certificates, an identity as an agent.
void prepareLibrary() {
    static const bool isPrepared = [] {
        for (const int flag : {NETSNMP_DS_LIB_DONT_READ_CONFIGS, NETSNMP_DS_LIB_DONT_PERSIST_STATE,
                 NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, NETSNMP_DS_LIB_DISABLE_PERSISTENT_SAVE})
            netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, flag, 1);
        snmp_disable_log();
        return true;
    }();
    static_cast<void>(isPrepared);
}

std::optional<Identifier> identifierFrom(std::string_view text) {
    Identifier identifier;
    const char* const end = text.data() + text.size();
    for (const char* place = text.data();; ++place) {
        oid& number = identifier.emplace_back();
        const auto [next, error] = std::from_chars(place, end, number);
        if (error != std::errc() || identifier.size() > MAX_OID_LEN) return std::nullopt;
        if (next == end) return identifier;
        if (*next != '.') return std::nullopt;
        place = next;
    }
}

std::string textFrom(std::span<const oid> identifier) {
    std::string text;
    for (const oid number : identifier)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return text;
}

// Nothing for types that no value is made from.
std::optional<PropertyList> valueOf(const netsnmp_variable_list& variable) {
    switch (variable.type) {
    case ASN_INTEGER:
        return PropertyList(*variable.val.integer);
    case ASN_GAUGE:
    case ASN_COUNTER:
    case ASN_TIMETICKS:
        return PropertyList(static_cast<std::int64_t>(static_cast<std::uint32_t>(*variable.val.integer)));
    case ASN_OCTET_STR:
    case ASN_IPADDRESS:
    case ASN_OPAQUE: {
        const std::span<const u_char> bytes(variable.val.string, variable.val_len);
        if (auto text = decodeUTF8({reinterpret_cast<const char*>(bytes.data()), bytes.size()}))
            return PropertyList(*std::move(text));
        return PropertyList(PropertyList::Data(bytes.begin(), bytes.end()));
    }
    case ASN_OBJECT_ID:
        return PropertyList(textFrom({variable.val.objid, variable.val_len / sizeof(oid)}));
    default:
        return std::nullopt;
    }
}

// Those of the objects that are in the message.
PropertyList::Dictionary valuesIn(const netsnmp_pdu& message, const std::vector<std::string>& objects) {
    PropertyList::Dictionary values;
    for (const std::string& object : objects) {
        const auto identifier = identifierFrom(object);
        for (const netsnmp_variable_list* v = message.variables; v != nullptr; v = v->next_variable)
            if (identifier && std::ranges::equal(std::span(v->name, v->name_length), *identifier))
                if (auto value = valueOf(*v)) values.insert_or_assign(object, *std::move(value));
    }
    return values;
}

struct FreeAddresses {
    void operator()(addrinfo* list) const { freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

// Null when there is none.
Addresses addressesOf(const SNMPRequest& request) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(request.host.c_str(), std::to_string(request.port).c_str(), &wanted, &found) != 0)
        return nullptr;
    return Addresses(found);
}

// The one to ask: agents that are known by a name have an IPv4 address as a rule.
const addrinfo& chosenOf(const addrinfo& list) {
    for (const addrinfo* address = &list; address != nullptr; address = address->ai_next)
        if (address->ai_family == AF_INET) return *address;
    return list;
}

// As the library takes it.
std::string peerName(const addrinfo& address, int port) {
    std::array<char, NI_MAXHOST> host{};
    if (getnameinfo(
            address.ai_addr, address.ai_addrlen, host.data(), host.size(), nullptr, 0, NI_NUMERICHOST) != 0)
        return {};
    const std::string end = ":" + std::to_string(port);
    return address.ai_family == AF_INET6 ? "udp6:[" + std::string(host.data()) + "]" + end
                                         : "udp:" + std::string(host.data()) + end;
}

// From the system, so that nobody who does not see the question can answer it.
long unpredictableIdentifier() {
    std::uint32_t bits = 0;
    if (getrandom(&bits, sizeof bits, 0) != sizeof bits) return 0;
    return static_cast<long>(bits >> 1U);
}

// Null when there is none. Its socket hears nobody but the agent.
Session openSession(const SNMPRequest& request, std::string community, const addrinfo& address) {
    netsnmp_session description;
    snmp_sess_init(&description);
    std::string name = peerName(address, request.port);
    description.peername = name.data();
    description.version = SNMP_VERSION_1;
    description.community = reinterpret_cast<u_char*>(community.data());
    description.community_len = community.size();
    description.timeout = std::chrono::microseconds(request.patience).count();
    description.retries = request.retries;
    Session session(snmp_sess_open(&description));
    const netsnmp_transport* const transport =
        session != nullptr ? snmp_sess_transport(session.get()) : nullptr;
    if (transport == nullptr || connect(transport->sock, address.ai_addr, address.ai_addrlen) != 0)
        return nullptr;
    return session;
}

// The question in one community.
class Question {
public:
    explicit Question(Session session) : session_(std::move(session)) {}
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    // False when it cannot be sent.
    bool send(const netsnmp_pdu& pdu) {
        Message copy(snmp_clone_pdu(const_cast<netsnmp_pdu*>(&pdu)));
        copy->reqid = unpredictableIdentifier();
        const auto note = [](int operation, netsnmp_session*, int, netsnmp_pdu* heard, void* self) {
            static_cast<Question*>(self)->heard(operation, heard);
            return 1;
        };
        isOver_ = snmp_sess_async_send(session_.get(), copy.get(), note, this) == 0;
        if (!isOver_) static_cast<void>(copy.release());
        return !isOver_;
    }

    // Waits for its part of the questions' next event.
    void addTo(netsnmp_large_fd_set& set, int& count, timeval& left, int& block) const {
        if (!isOver_) snmp_sess_select_info2(session_.get(), &count, &set, &left, &block);
    }
    void take(netsnmp_large_fd_set& set) {
        if (isOver_) return;
        // What fails here is what the host has said: nobody listens there.
        if (snmp_sess_read2(session_.get(), &set) != 0)
            isOver_ = true;
        else
            snmp_sess_timeout(session_.get());
    }

    bool isOver() const { return isOver_; }
    const netsnmp_pdu* answer() const { return answer_.get(); }

private:
    void heard(int operation, netsnmp_pdu* pdu) {
        if (operation == NETSNMP_CALLBACK_OP_RESEND) return;
        isOver_ = true;
        if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE && pdu != nullptr)
            answer_.reset(snmp_clone_pdu(pdu));
    }

    Session session_;
    Message answer_;
    bool isOver_ = false;
};

class LargeSet {
public:
    LargeSet() { netsnmp_large_fd_set_init(&set_, FD_SETSIZE); }
    ~LargeSet() { netsnmp_large_fd_set_cleanup(&set_); }
    LargeSet(const LargeSet&) = delete;
    LargeSet& operator=(const LargeSet&) = delete;
    netsnmp_large_fd_set& get() { return set_; }

private:
    netsnmp_large_fd_set set_{};
};

bool hasValues(const Question& question) {
    return question.answer() != nullptr && question.answer()->errstat == SNMP_ERR_NOERROR;
}

// Until one has an answer without an error, or all are over.
void waitFor(std::deque<Question>& questions) {
    while (std::ranges::none_of(questions, hasValues) && !std::ranges::all_of(questions, &Question::isOver)) {
        LargeSet set;
        timeval left{};
        int count = 0;
        int block = 1;
        for (const Question& question : questions)
            question.addTo(set.get(), count, left, block);
        if (netsnmp_large_fd_set_select(count, &set.get(), nullptr, nullptr, block != 0 ? nullptr : &left) <
                0 &&
            errno != EINTR)
            return;
        for (Question& question : questions)
            question.take(set.get());
    }
}

} // namespace

std::optional<PropertyList::Dictionary> getSNMPObjects(
    const SNMPRequest& request, Failure& problem, bool* isSilent) {
    if (isSilent != nullptr) *isSilent = false;
    const bool isIPv6 = request.host.find(':') != std::string::npos;
    const std::string address =
        (isIPv6 ? "[" + request.host + "]" : request.host) + ":" + std::to_string(request.port);
    const auto fail = [&](const std::string& why) {
        problem = "the SNMP agent at " + address + " " + why;
        return std::nullopt;
    };
    const Message pdu(snmp_pdu_create(SNMP_MSG_GET));
    for (const std::string& object : request.objects) {
        const auto identifier = identifierFrom(object);
        if (!identifier) return fail("cannot be asked for \"" + object + "\", which is no identifier");
        snmp_add_null_var(pdu.get(), identifier->data(), identifier->size());
    }
    prepareLibrary();
    const Addresses addresses = addressesOf(request);
    if (addresses == nullptr) return fail("has no address; check the name");
    std::deque<Question> questions; // which stay where they are
    for (const std::string& community : request.communities) {
        Session session = openSession(request, community, chosenOf(*addresses));
        if (session == nullptr) return fail(std::string("cannot be reached: ") + std::strerror(errno));
        questions.emplace_back(std::move(session)).send(*pdu);
    }
    waitFor(questions);

    const auto answered = std::ranges::find_if(questions, hasValues);
    if (answered != questions.end()) {
        PropertyList::Dictionary values = valuesIn(*answered->answer(), request.objects);
        if (values.size() < request.objects.size()) return fail("does not say what was asked");
        return values;
    }
    for (const Question& question : questions)
        if (question.answer() != nullptr)
            return fail(std::string("answers an error: ") +
                        snmp_errstring(static_cast<int>(question.answer()->errstat)));
    if (isSilent != nullptr) *isSilent = true;
    return fail("does not answer; check that SNMP is on, and the community name");
}

PropertyList::Dictionary readSNMPAnswer(std::string_view bytes, const std::vector<std::string>& objects) {
    prepareLibrary();
    const Message message(snmp_pdu_create(SNMP_MSG_RESPONSE));
    std::string copy(bytes); // which the library may write to
    std::size_t size = copy.size();
    const bool isRead =
        snmp_pdu_parse(message.get(), reinterpret_cast<u_char*>(copy.data()), &size) == SNMPERR_SUCCESS;
    return isRead ? valuesIn(*message, objects) : PropertyList::Dictionary();
}

} // namespace platform
