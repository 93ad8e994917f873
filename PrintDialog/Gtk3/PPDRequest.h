// The PPD of a queue, fetched without holding up the main loop.
#pragma once

#include "PrintDialog/Host/DialogPPD.h"

#include <functional>
#include <memory>
#include <string>

namespace orvan {

// Fetches on a thread of its own, one queue at a time: a scheduler that does not answer holds up this thread
// and nothing else. Made, asked and ended on the main thread.
class PPDRequest {
public:
    // Called on the main loop with the queue's PPD, or with null when it cannot be had.
    using Handler = std::function<void(const std::string& queue, std::unique_ptr<DialogPPD> ppd)>;

    explicit PPDRequest(Handler handler);
    ~PPDRequest();
    PPDRequest(const PPDRequest&) = delete;
    PPDRequest& operator=(const PPDRequest&) = delete;

    // Asks for a queue's PPD. The handler is called once for the newest request and not for those before it.
    void start(const std::string& queue);
    // The handler is not called for what was asked so far.
    void cancel();

private:
    struct State;
    struct Fetch;
    static void startThread(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_;
};

} // namespace orvan
