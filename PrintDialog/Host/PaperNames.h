// Which paper names a panel is shown with, and what people are told of them.
//
// A panel takes the names that it has when it is first shown, for good. So the dialog decides when that is:
// when the printer has answered, or after a second, and then with the names of an earlier answer.
#pragma once

#include "Platform/PrintDialog.h"
#include "Platform/RunLoop.h"
#include "PrintDialog/Host/DialogPrinter.h"
#include "PrintDialog/Host/PrinterAnswers.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// Main thread. Ends before the panel.
class PaperNames {
public:
    // How long the panel's own question is waited for.
    static constexpr std::chrono::milliseconds kPatience{1000};

    struct Start {
        std::string language;             // of line()
        std::vector<StoredAnswer> stored; // of the PPD that the panel is for
        bool hasCommands = true;          // whether the PPD lists what can be asked
        bool asksPrinter = true;
        bool isAnswered = false; // the stored answers are those of a question of this dialog
    };
    // `changed` is told when isReady() or line() may answer differently; `outdated` again and again while the
    // panel shows other names than the printer has told since.
    PaperNames(platform::PDEPanel& panel, std::shared_ptr<DialogPrinter> printer, Start start,
        std::function<void()> changed, std::function<void()> outdated);
    ~PaperNames();
    PaperNames(const PaperNames&) = delete;
    PaperNames& operator=(const PaperNames&) = delete;

    // Whether the panel may be shown.
    bool isReady() const { return isReady_; }
    // Gives the panel the names of an earlier answer if those of its own question are not there. To be called
    // once, before it is first shown.
    void willShow();
    // For people: how old the names are and why, or that there are none; "" when they are as new as can be.
    std::string line() const;
    // All that the printer has answered, as far as it is known here.
    const std::vector<StoredAnswer>& answers() const {
        return answers_.after ? *answers_.after : answers_.before;
    }

private:
    void look();
    bool isOver() const { return !panel_.awaitsPrinter(); }
    bool isOutdated() const;
    const StoredAnswer* newest() const;
    CommandAnswer papersAnswer() const;

    platform::PDEPanel& panel_;
    std::shared_ptr<DialogPrinter> printer_;
    Start start_;
    std::function<void()> changed_;
    std::function<void()> outdated_;
    AnswersToQuestion answers_;
    std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::now() + kPatience;
    bool isReady_ = false;
    bool isShown_ = false;
    std::optional<platform::PropertyList> shownPapers_;
    std::string toldLine_;
    std::shared_ptr<platform::RepeatingTimer> timer_;
};

} // namespace orvan
