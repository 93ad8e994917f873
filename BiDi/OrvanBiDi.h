// The query channel between a print dialog and the printer's command filter.
#pragma once

#include "BiDi/Common/SupportedCommands.h"
#include "Formats/PropertyList.h"
#include "Platform/PrintDialog.h"
#include "Platform/RunLoop.h"
#include "Platform/Task.h"

#include <cups/ppd.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvan {

// Who is told the printer's answers.
class OrvanBiDiDelegate {
public:
    virtual ~OrvanBiDiDelegate() = default;
    // One command's answer, decoded. Called on the main thread, also from within dispatchCommands().
    virtual void receivedBiDiResponse(const platform::PropertyList& response) = 0;
};

// Sends a command job to the printer's command filter and hands the answers to a delegate. On releases from
// 10.7 on (Common/Utilities/ReleaseGates.h) the printing system's queue carries the job, and the answers are
// read from the queue's PPD once the job has left it; before, the channel runs the filter itself and reads
// the answers from its standard error.
//
// Failures are silent: the delegate is told answers and nothing else. Main thread only. Create, set the
// delegate, dispatch, invalidate, release.
//
// Nothing here waits for the printing system: the printer object (Platform/PMPrinter.h) tells what is known
// of the job, and has the PPD when the job has gone.
class OrvanBiDi final : public std::enable_shared_from_this<OrvanBiDi> {
public:
    // The seconds between two looks at the queue.
    static constexpr double kWaitInterval = 0.5;

    // What a channel is doing. This is no field: it follows from what the channel owns, so that the two
    // cannot contradict each other.
    enum class State {
        ready,         // nothing was dispatched yet, or nothing came of it
        waiting,       // the wait timer is scheduled; it keeps the channel alive
        filterRunning, // the filter was started, and its answers are not collected yet
        filterEnded,   // the filter's answers were collected
        spent,         // invalidated, or a wait has ended: no answer is delivered any more
    };

    // The channel for the callback object's PPD, whose "cupsCommands" become its supported commands.
    static std::shared_ptr<OrvanBiDi> initWithPDECallbackObject(
        std::shared_ptr<platform::PDEPluginCallback> callbackObj);
    OrvanBiDi(const OrvanBiDi&) = delete;
    OrvanBiDi& operator=(const OrvanBiDi&) = delete;
    // A filter that still runs is asked to end.
    ~OrvanBiDi();

    // The delegate is held until the wait ends or invalidate().
    const std::shared_ptr<OrvanBiDiDelegate>& delegate() const { return delegate_; }
    void setDelegate(std::shared_ptr<OrvanBiDiDelegate> delegate) { delegate_ = std::move(delegate); }
    const std::shared_ptr<platform::PDEPluginCallback>& callbackObj() const { return callbackObj_; }
    void setCallbackObj(std::shared_ptr<platform::PDEPluginCallback> object) {
        callbackObj_ = std::move(object);
    }
    // The commands whose answers are looked for; nothing when the PPD declares none.
    const std::optional<CommandList>& supportedCommands() const { return _supportedCommands; }
    void setSupportedCommands(std::optional<CommandList> commands) {
        _supportedCommands = std::move(commands);
    }

    State state() const;

    // As the free function.
    std::optional<CommandList> supportedCommandsInPPD(ppd_file_t* ppd) const;
    // The text of a CUPS command file that asks for the commands in the person's name, and with the person's
    // stored password when there is one. Lines are joined by a line feed; nothing is quoted.
    std::string commandJobWithCommands(const std::optional<CommandList>& commands) const;

    // Asks the printer for the commands. Never waits for the printer.
    //
    // Through the queue: submits the job, unless one of this person's is already there, and starts the wait,
    // whose first look happens in here and can deliver. During a wait no second one starts. A spent channel
    // submits and does not wait.
    // By the filter: starts it, unless the channel's last one is still running, the PPD names none, or there
    // is no printer.
    void dispatchCommands(const std::optional<CommandList>& commands);

    // As the free function.
    std::optional<std::string> pathForCommandFilterInPPD(ppd_file_t* ppd) const;

    // Whether a job of this person with the channel's title is pending, held, processing or stopped on the
    // printer, as far as is known.
    bool isCommandJobRunning();

    // The wait timer's tick: goes on waiting as long as the job is there, otherwise collects and ends the
    // wait.
    void awaitCommandJob(platform::RepeatingTimer& timer);
    // The filter has ended with this output.
    void commandFilterTerminated(const platform::TaskOutput& output);

    // Ends the channel's use: nothing is delivered any more. A filter that runs is left to run.
    void invalidate();
    // Sets the mark alone; a wait ends, without answers, with its next tick.
    void setIsInvalidated(bool isInvalidated) { _isInvalidated = isInvalidated; }

    // Delivers the answers in the queue's PPD of after the job: one for each supported
    // command that has one, in the order of the supported commands.
    void processCommandResponsesWithPPD();
    // The same from what a filter wrote to its standard error.
    void processCommandResponsesWithTaskOutput(std::string_view output);

private:
    using ChunkGetter = const char* (*)(void* source, const char* keyword);

    OrvanBiDi() = default;
    std::shared_ptr<platform::PMPrinter> printer() const;
    bool isJobActive(std::string_view title) const;
    void dispatchThroughQueue(const std::string& job);
    void dispatchToFilter(const std::string& job);
    platform::TaskDescription::Environment commandFilterEnvironment() const;
    void endWait();
    void deliverResponses(void* source, ChunkGetter getter);

    ppd_file_t* ppd_ = nullptr; // the callback object's
    std::unique_ptr<platform::Task> _commandFilterTask;
    std::optional<CommandList> _supportedCommands;
    std::shared_ptr<OrvanBiDiDelegate> delegate_;
    std::shared_ptr<platform::RepeatingTimer> _awaitCommandJobTimer;
    bool _isInvalidated = false;
    std::shared_ptr<platform::PDEPluginCallback> callbackObj_;
};

} // namespace orvan
