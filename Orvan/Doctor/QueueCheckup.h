// The stations of one queue: from the scheduler's description of it to the printer's own document.
#pragma once

#include "CommandFilter/Program/PrinterAddress.h"
#include "Orvan/Doctor/Checkup.h"
#include "Orvan/SchedulerPatience.h"
#include "Orvan/StatusJobs.h"
#include "PrintDialog/Host/DialogPPD.h"
#include "Scheduler/PrintScheduler.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace orvan {

// Main thread.
class QueueCheckup {
public:
    // `queue` is what the scheduler says of it; nothing when it has none of that name. `timeout` is for the
    // answer to a command job.
    QueueCheckup(const std::string& name, std::optional<SchedulerQueue> queue,
        std::chrono::duration<double> timeout, Checkup& checkup);
    ~QueueCheckup();
    QueueCheckup(const QueueCheckup&) = delete;
    QueueCheckup& operator=(const QueueCheckup&) = delete;

    // Looks at all of them. A command job is submitted; it is taken back when the person interrupts.
    void run();

private:
    Finding examineQueue() const;
    Finding examinePPD();
    Finding examineFilter();
    Finding examineEarlierJob() const;
    Finding examineCommandJob();
    Finding whyNoJob(const std::string& refusal);
    Finding whyNoEnd(const QueueJob& job) const;
    Finding examineAnswers() const;
    Finding examineAddress();
    Finding examineContact();
    Finding examineDocument() const;

    std::string name_;
    std::optional<SchedulerQueue> queue_;
    std::chrono::duration<double> timeout_;
    SchedulerPatience patience_;
    Checkup& checkup_;

    std::unique_ptr<DialogPPD> ppd_; // null until it is found to be whole
    bool isFilterRight_ = false;
    bool hasJobEnded_ = false; // the command job of this checkup
    std::string complaint_;    // of the filter in that job
    std::optional<PrinterAddress> address_;
    bool isThere_ = false; // the address's host
};

} // namespace orvan
