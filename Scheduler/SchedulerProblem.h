// Why the scheduler did not do what it was asked for.
#pragma once

#include <string>

namespace orvan {

struct SchedulerProblem {
    enum class Kind {
        none,
        notThere,        // nobody takes the connection
        forbidden,       // this person may not open the scheduler's socket
        silent,          // it does not answer in time
        wantsPassword,   // nobody here is asked for one
        unknown,         // it has no such thing
        severalPrinters, // the queue is not one printer
        rejectsJobs,     // the queue does, all of them
        notPermitted,    // this person may not
        noRoom,          // for a job's file, as on a full disk
        refuses,         // it says why not
    };

    Kind kind = Kind::none;
    std::string text; // for people; "" for none
};

} // namespace orvan
