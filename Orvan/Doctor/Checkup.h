// A walk through stations, each of which works or does not.
#pragma once

#include "Orvan/Terminal.h"

#include <functional>
#include <string>
#include <vector>

namespace orvan {

enum class Verdict {
    ok,
    problem,
    notChecked, // it cannot be looked at from here, or only after another station works
};

struct Finding {
    Verdict verdict = Verdict::ok;
    std::string found; // for people: what is so, without a full stop
    std::string mend;  // for people: what to do about it, whole sentences; may be empty
};

// What mends a damaged installation.
inline constexpr const char* kReinstall = "Install the package orvan-paper-options again.";

inline Finding ok(std::string found) {
    return {Verdict::ok, std::move(found), {}};
}
inline Finding problem(std::string found, std::string mend) {
    return {Verdict::problem, std::move(found), std::move(mend)};
}
inline Finding notChecked(std::string why, std::string mend = {}) {
    return {Verdict::notChecked, std::move(why), std::move(mend)};
}

// Says of each station what was found there: a line on standard output as soon as it is known, or all of it
// as JSON in the end.
class Checkup {
public:
    explicit Checkup(bool json) : json_(json) {}
    Checkup(const Checkup&) = delete;
    Checkup& operator=(const Checkup&) = delete;

    // The queue that the stations from now on are about; "" for none.
    void setQueue(const std::string& queue) { queue_ = queue; }
    // Looks at a station, and answers whether it works. A terminal shows which one meanwhile.
    bool look(const char* station, const std::function<Finding()>& examine);
    // Writes the JSON, if that is wanted.
    void end() const;

    // Whether no station so far has a problem.
    bool allIsWell() const;

private:
    struct Station {
        std::string name;
        std::string queue;
        Finding finding;
    };

    bool json_;
    std::string queue_;
    std::vector<Station> stations_;
};

} // namespace orvan
