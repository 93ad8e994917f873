// The stations of one queue: from the scheduler's description of it to the printer's own document.
#pragma once

#include "CommandFilter/Program/PrinterAddress.h"
#include "Orvan/Doctor/Checkup.h"
#include "Orvan/PrinterQuery.h"
#include "Orvan/SchedulerPatience.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "Scheduler/PrintScheduler.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// In this order: begin(), answered() when wantsAnswers(), lookAtPrinter(), findings(). On the main thread but
// for lookAtPrinter(), which may run beside those of other queues.
class QueueCheckup {
public:
    struct Station {
        const char* name;
        Finding finding;
    };
    // The stations in their order, none of them looked at.
    static std::vector<Station> notLookedAt(const std::string& why);

    // `queue` is what the scheduler says of it; nothing when it has none of that name. `all` are the
    // scheduler's. The patience is for all queues.
    QueueCheckup(std::string name, std::optional<SchedulerQueue> queue,
        const std::vector<SchedulerQueue>& all, SchedulerPatience& patience);
    ~QueueCheckup();
    QueueCheckup(const QueueCheckup&) = delete;
    QueueCheckup& operator=(const QueueCheckup&) = delete;

    const std::string& name() const { return name_; }
    // Looks at the queue, its PPD, its filter and its jobs.
    void begin();
    // Whether a command job may be submitted.
    bool wantsAnswers() const { return wantsAnswers_; }
    // What came of that job.
    void answered(const PrinterAnswers& answers);
    // Looks for the printer, and asks it. Blocks, for half a minute at most.
    void lookAtPrinter();
    // Of all stations, in their order. One fault is one problem: where a later station finds it, an earlier
    // one that only suffers from it is not checked.
    std::vector<Station> findings() const { return stations_; }

private:
    const Finding& at(std::string_view station) const;
    Finding& at(std::string_view station);
    Finding examineQueue() const;
    Finding examinePPD();
    void compareOtherQueues();
    Finding examineFilter();
    Finding examineEarlierJob();
    std::string whyNoJob() const;
    Finding examineCommandJob(const AnswerReason& reason) const;
    Finding examineAnswers(const PrinterAnswers& answers) const;
    Finding examineAddress();
    Finding examineContact();
    Finding examineDocument() const;
    std::optional<Finding> examineWaitForAgent() const;

    std::string name_;
    std::optional<SchedulerQueue> queue_;
    std::vector<SchedulerQueue> others_; // of the same printer
    SchedulerPatience& patience_;
    std::vector<Station> stations_;

    std::unique_ptr<DialogPPD> ppd_; // null until it is found to be whole
    bool hasOtherDriver_ = false;
    bool isEarlierJobInTheWay_ = false;
    bool wantsAnswers_ = false;
    bool isAnswersFaultAtPrinter_ = false;
    bool isAgentSilent_ = false;
    std::optional<PrinterAddress> address_;
    bool isThere_ = false; // the address's host
};

} // namespace orvan
