// One choice record of a PPD option, presented twice: as the text that a person sees and as the keyword that
// the PPD and the dialog use.
#pragma once

#include <cups/ppd.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// A wrapper of a CUPS choice record. The record belongs to the PPD file record, which outlives every wrapper.
// Two wrappers are distinct objects even when they wrap the same record.
//
// The titles are cached from their first use: a wrapper that has produced a title keeps it even if the record
// is rewritten afterwards. Used on the panel's thread only.
class PDEChoice {
public:
    static std::shared_ptr<PDEChoice> choiceWithChoice(ppd_choice_t* choice) {
        return std::make_shared<PDEChoice>(choice);
    }
    explicit PDEChoice(ppd_choice_t* choice) : choice_(choice) {}
    PDEChoice(const PDEChoice&) = delete;
    PDEChoice& operator=(const PDEChoice&) = delete;

    // The record's text (UTF-8); null when it does not decode, and then the next call tries again.
    const std::string* userTitle();
    // The record's keyword (ASCII); null when it does not decode, and then the next call tries again.
    const std::string* ppdTitle();

    ppd_choice_t* choice() const { return choice_; }

    // Whether the record's keyword is its option's default, compared over the 41 bytes of the field.
    bool isDefaultChoice() const;

    // For logs: class, address, both titles, the mark, and the record's one-based position.
    std::string description();

private:
    std::optional<std::string> userTitle_;
    std::optional<std::string> ppdTitle_;
    ppd_choice_t* choice_;
};

using PDEChoiceList = std::vector<std::shared_ptr<PDEChoice>>;

} // namespace orvan
