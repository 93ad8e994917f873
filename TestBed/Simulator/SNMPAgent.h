// The simulated printer's SNMP agent.
#pragma once

#include "TestBed/Session/Failure.h"
#include "TestBed/Simulator/StopSignal.h"

#include <memory>
#include <string>
#include <thread>

namespace orvan {

struct SNMPAgentOptions {
    int port = 0; // 0: a free one
    std::string community = "public";
    // Of the object 1.3.6.1.4.1.97531.8.83.1.1.2.1.7.1.
    int jobAccounting = 1;
};

// Answers SNMPv1 and SNMPv2c on UDP at 127.0.0.1, for reading, from a thread of its own. It knows one
// object, whose name is complete as it is, without an instance ".0" behind it. The machine's configuration of
// SNMP and the library's persistent files are neither read nor written.
//
// The library keeps its state in the process: one at a time.
class SNMPAgent {
public:
    // Answers once it serves. Null, and *failure says why, when it cannot.
    static std::unique_ptr<SNMPAgent> start(const SNMPAgentOptions& options, Failure* failure);
    SNMPAgent(const SNMPAgent&) = delete;
    SNMPAgent& operator=(const SNMPAgent&) = delete;
    ~SNMPAgent();

    // As SNMP's programs take it, "127.0.0.1:1161".
    std::string address() const;

private:
    explicit SNMPAgent(int jobAccounting) : jobAccounting_(jobAccounting) {}
    Failure open(const SNMPAgentOptions& options);
    void serve() const;

    int jobAccounting_; // the library looks at it with every request
    int port_ = 0;
    int registration_ = 0;
    StopSignal stop_;
    std::thread thread_;
};

} // namespace orvan
