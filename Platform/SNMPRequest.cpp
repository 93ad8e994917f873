#include "Platform/SNMPRequest.h"

#include "Formats/TextEncoding.h"

// clang-format off: the second needs the first
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
// clang-format on

#include <charconv>
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

Session openSession(const SNMPRequest& request, const std::string& peer) {
    netsnmp_session description;
    snmp_sess_init(&description);
    std::string name = peer;
    std::string community = request.community;
    description.peername = name.data();
    description.version = SNMP_VERSION_1;
    description.community = reinterpret_cast<u_char*>(community.data());
    description.community_len = community.size();
    description.timeout = std::chrono::microseconds(request.patience).count();
    description.retries = request.retries;
    return Session(snmp_sess_open(&description));
}

} // namespace

std::optional<PropertyList::Dictionary> getSNMPObjects(const SNMPRequest& request, Failure& problem) {
    const bool isIPv6 = request.host.find(':') != std::string::npos;
    const std::string address =
        (isIPv6 ? "[" + request.host + "]" : request.host) + ":" + std::to_string(request.port);
    const auto fail = [&](const std::string& why) {
        problem = "the SNMP agent at " + address + " " + why;
        return std::nullopt;
    };
    Message question(snmp_pdu_create(SNMP_MSG_GET));
    std::vector<Identifier> identifiers;
    for (const std::string& object : request.objects) {
        const auto identifier = identifierFrom(object);
        if (!identifier) return fail("cannot be asked for \"" + object + "\", which is no identifier");
        snmp_add_null_var(question.get(), identifier->data(), identifier->size());
        identifiers.push_back(*identifier);
    }
    prepareLibrary();
    const Session session = openSession(request, (isIPv6 ? "udp6:" : "udp:") + address);
    if (session == nullptr) return fail("has no address; check the name");

    netsnmp_pdu* received = nullptr;
    const int status = snmp_sess_synch_response(session.get(), question.release(), &received);
    const Message answer(received);
    if (status == STAT_TIMEOUT) return fail("does not answer; check that SNMP is on, and the community name");
    if (status != STAT_SUCCESS || answer == nullptr) return fail("could not be asked");
    if (answer->errstat != SNMP_ERR_NOERROR)
        return fail(std::string("answers an error: ") + snmp_errstring(static_cast<int>(answer->errstat)));

    PropertyList::Dictionary values;
    for (const netsnmp_variable_list* v = answer->variables; v != nullptr; v = v->next_variable)
        for (std::size_t i = 0; i < identifiers.size(); ++i)
            if (std::ranges::equal(std::span(v->name, v->name_length), identifiers[i]))
                if (auto value = valueOf(*v)) values.insert_or_assign(request.objects[i], *std::move(value));
    if (values.size() < request.objects.size()) return fail("does not say what was asked");
    return values;
}

} // namespace platform
