#include "PrintDialog/Gtk3/PPDRequest.h"

#include "Platform/SystemLog.h"
#include "PrintDialog/Gtk3/Guarded.h"
#include "PrintDialog/Host/QueuePPD.h"

#include <glib.h>

#include <chrono>
#include <optional>
#include <utility>

namespace orvan {
namespace {

constexpr std::chrono::seconds kSchedulerPatience{10};

} // namespace

// Lives as long as the request or a thread that works for it. Everything in it belongs to the main thread.
struct PPDRequest::State {
    Handler handler;                   // empty once the request has ended
    std::optional<std::string> wanted; // the queue of the newest request that has no answer yet
    bool threadRuns = false;
};

// What goes to the thread and comes back. The thread only carries the state, and touches nothing in it.
struct PPDRequest::Fetch {
    std::shared_ptr<State> state;
    std::string queue;
    std::unique_ptr<DialogPPD> ppd;

    static gpointer run(gpointer data) {
        auto* const fetch = static_cast<Fetch*>(data);
        guarded([fetch] {
            fetch->ppd = fetchQueuePPD(fetch->queue, kSchedulerPatience, platform::ignoredFailure());
        });
        g_idle_add_full(G_PRIORITY_DEFAULT, finish, fetch, nullptr);
        return nullptr;
    }

    static gboolean finish(gpointer data) {
        const std::unique_ptr<Fetch> fetch(static_cast<Fetch*>(data));
        guarded([&fetch] {
            State& state = *fetch->state;
            state.threadRuns = false;
            if (!state.wanted) return;
            if (*state.wanted != fetch->queue) return startThread(fetch->state);
            state.wanted.reset();
            const Handler handler = state.handler;
            if (handler) handler(fetch->queue, std::move(fetch->ppd));
        });
        return G_SOURCE_REMOVE;
    }
};

PPDRequest::PPDRequest(Handler handler) : state_(std::make_shared<State>()) {
    state_->handler = std::move(handler);
}

PPDRequest::~PPDRequest() {
    cancel();
    state_->handler = {};
}

void PPDRequest::start(const std::string& queue) {
    state_->wanted = queue;
    if (!state_->threadRuns) startThread(state_);
}

void PPDRequest::cancel() {
    state_->wanted.reset();
}

void PPDRequest::startThread(const std::shared_ptr<State>& state) {
    auto fetch = std::make_unique<Fetch>(Fetch{state, *state->wanted, nullptr});
    GThread* const thread = g_thread_try_new("orvan-ppd", Fetch::run, fetch.get(), nullptr);
    if (thread == nullptr) return platform::systemLog("paper options: no thread to fetch a PPD on");
    static_cast<void>(fetch.release()); // the thread has it
    state->threadRuns = true;
    g_thread_unref(thread);
}

} // namespace orvan
