#include "Tools/Orvan/PrinterQuery.h"

#include "BiDi/OrvanBiDi.h"
#include "BiDi/ResponseEntries.h"
#include "Common/Utilities/ReleaseGates.h"
#include "Platform/RunLoop.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "PrintDialog/Host/Scheduler.h"
#include "Tools/Orvan/StatusJobs.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace orvan {
namespace {

constexpr std::chrono::seconds kSchedulerPatience{5};

// A queue's PPD and printer for the channel. Nobody picks anything here.
class QueueCallback final : public platform::PDEPluginCallback {
public:
    QueueCallback(std::unique_ptr<DialogPPD> ppd, const std::string& queue)
        : ppd_(std::move(ppd)), printer_(std::make_shared<platform::PMPrinter>(queue)) {}

    ppd_file_t* ppdFile() override { return ppd_->record(); }
    std::shared_ptr<platform::PMPrinter> PMPrinter() override { return printer_; }
    void willChangePPDOptionKeyValuePpdChoice(const std::string&, const std::string&) override {}

private:
    std::unique_ptr<DialogPPD> ppd_;
    std::shared_ptr<platform::PMPrinter> printer_;
};

class Collector final : public OrvanBiDiDelegate {
public:
    void receivedBiDiResponse(const platform::PropertyList& response) override {
        responses.push_back(response);
    }

    std::vector<platform::PropertyList> responses;
};

bool isBusy(const OrvanBiDi& channel) {
    return channel.state() == OrvanBiDi::State::waiting || channel.state() == OrvanBiDi::State::filterRunning;
}

// Whether the PPD has the beginning of an answer to one of the commands.
bool hasStoredChunks(DialogPPD& ppd, const CommandList& commands) {
    return std::ranges::any_of(commands, [&ppd](const std::string& command) {
        return ppdx_get_chunk_ppd(ppd.record(), (command + "0000").c_str()) != nullptr;
    });
}

// Why nothing came.
std::string explain(
    const OrvanBiDi& channel, const std::string& queue, std::chrono::duration<double> timeout) {
    if (RunningOn107OrLater()) {
        if (const auto job = findStatusJob(queue, kSchedulerPatience)) return describe(*job, queue);
        if (isBusy(channel))
            return "no answer came within " + std::to_string(static_cast<int>(timeout.count())) + " s";
        std::string problem;
        const std::unique_ptr<DialogPPD> ppd = fetchQueuePPD(queue, kSchedulerPatience, &problem);
        if (ppd == nullptr) return problem;
        if (hasStoredChunks(*ppd, *channel.supportedCommands()))
            return "what the printer's command filter answered cannot be decoded";
        const std::string complaint = complaintOfLastJob(queue, kSchedulerPatience);
        return !complaint.empty()
                   ? complaint
                   : "the printer's command filter answered nothing; the scheduler's error log says why";
    }
    switch (channel.state()) {
    case OrvanBiDi::State::filterRunning:
        return "the printer's command filter did not end within " +
               std::to_string(static_cast<int>(timeout.count())) + " s, and was ended";
    case OrvanBiDi::State::filterEnded:
        return "the printer's command filter answered nothing that can be decoded";
    default:
        return "the printer's PPD names no command filter (\"cupsFilter2\") that can be started";
    }
}

} // namespace

void setSystemRelease(const std::string& release) {
    if (!release.empty()) setenv("ORVAN_SYSTEM_RELEASE", release.c_str(), 1);
}

std::string currentRelease() {
    const char* const set = std::getenv("ORVAN_SYSTEM_RELEASE");
    return set != nullptr ? set : kDefaultRelease;
}

std::string checkRelease(const std::string& release) {
    const bool wellFormed = !release.empty() &&
                            release.find_first_not_of("0123456789.") == std::string::npos &&
                            release.front() != '.' && release.back() != '.' &&
                            release.find("..") == std::string::npos && std::ranges::count(release, '.') <= 2;
    return wellFormed ? "" : "\"" + release + "\" is not a release such as " + kDefaultRelease;
}

PrinterAnswers askPrinter(const std::string& queue, std::chrono::duration<double> timeout) {
    PrinterAnswers answers;
    const auto refuse = [&answers](const std::string& why) {
        answers.problem = why;
        return answers;
    };
    std::unique_ptr<DialogPPD> ppd = fetchQueuePPD(queue, kSchedulerPatience, &answers.problem);
    if (ppd == nullptr) return answers;
    const std::string prefix = "printer " + queue + " cannot be asked: ";
    if (RunningOn1010OrLater())
        return refuse(prefix + "on release 10.10 and later printers are not asked anything");
    const auto commands = supportedCommandsInPPD(ppd->record());
    if (!commands) return refuse(prefix + "its PPD lists no commands (\"cupsCommands\")");

    const auto collector = std::make_shared<Collector>();
    const auto channel =
        OrvanBiDi::initWithPDECallbackObject(std::make_shared<QueueCallback>(std::move(ppd), queue));
    channel->setDelegate(collector);
    channel->dispatchCommands(commands);
    platform::runMainLoopUntil([&channel] { return !isBusy(*channel); }, timeout);
    if (collector->responses.empty())
        answers.problem = "printer " + queue + " gave no answer: " + explain(*channel, queue, timeout);
    else if (RunningOn107OrLater())
        answers.complaint = complaintOfLastJob(queue, kSchedulerPatience);
    channel->invalidate();
    answers.responses = std::move(collector->responses);
    return answers;
}

} // namespace orvan
