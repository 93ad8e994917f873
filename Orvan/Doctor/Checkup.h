// A walk through stations, each of which works or does not.
#pragma once

#include "Orvan/Terminal.h"

#include <cstddef>
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
    struct Style {
        bool json = false;
        bool problemsAlone = false;
        std::size_t queueColumns = 0; // of the longest name of a queue, for the lines
    };
    explicit Checkup(Style style) : style_(style) {}
    Checkup(const Checkup&) = delete;
    Checkup& operator=(const Checkup&) = delete;

    // The longest name of a queue from now on.
    void setQueueColumns(std::size_t columns) { style_.queueColumns = columns; }
    // Looks at a station, and answers whether it works. A terminal shows which one meanwhile.
    bool look(const char* station, const std::function<Finding()>& examine);
    // What was found at a station of the queue; "" for none.
    void add(const std::string& station, const std::string& queue, Finding finding);
    // Writes how many of each there are, or the JSON. `problem`, for people, is why not everything was looked
    // at; mostly empty.
    void end(const std::string& problem = {}) const;

    // Whether no station so far has a problem.
    bool allIsWell() const { return count(Verdict::problem) == 0; }

private:
    struct Station {
        std::string name;
        std::string queue;
        Finding finding;
    };

    std::size_t count(Verdict verdict) const;
    bool isShown(const Finding& finding) const;
    void writeLine(const Station& station) const;

    Style style_;
    std::vector<Station> stations_;
};

} // namespace orvan
