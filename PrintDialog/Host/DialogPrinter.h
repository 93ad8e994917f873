// A queue as the printer of a panel or a channel.
#pragma once

#include "BiDi/StoredAnswers.h"
#include "Scheduler/SchedulerPrinter.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvan {

// Sees the answers on their way to the channel. Main thread.
class DialogPrinter final : public platform::PMPrinter {
public:
    using AnswerHandler = std::function<void(std::vector<StoredAnswer> answers)>;

    explicit DialogPrinter(std::unique_ptr<SchedulerPrinter> printer) : printer_(std::move(printer)) {}

    SchedulerPrinter& printer() { return *printer_; }
    // Told when the panel's channel takes the queue's PPD of after its question.
    void setAnswerHandler(AnswerHandler handler) { handler_ = std::move(handler); }

    const std::string& queueName() const override { return printer_->queueName(); }
    std::string deviceURI() const override { return printer_->deviceURI(); }
    std::string descriptionPath() const override { return printer_->descriptionPath(); }
    bool sendCommand(std::string_view text, const std::string& title, const Options& options) override {
        return printer_->sendCommand(text, title, options);
    }
    std::vector<std::string> activeJobTitles() override { return printer_->activeJobTitles(); }
    platform::PPDRecord takeFreshPPD() override;
    std::size_t answerBudget() const override { return printer_->answerBudget(); }

private:
    std::unique_ptr<SchedulerPrinter> printer_;
    AnswerHandler handler_;
};

} // namespace orvan
