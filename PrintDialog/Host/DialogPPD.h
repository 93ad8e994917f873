// The PPD of the printer that a dialog configures, with the dialog's choices marked in it.
#pragma once

#include "Formats/Failure.h"

#include <cups/ppd.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvan {

// The option of the document's paper.
inline constexpr const char* kPageSizeOption = "PageSize";

// One option whose choice became another one; keywords, "" for no choice.
struct ChoiceChange {
    std::string option;
    std::string from;
    std::string to;
    bool operator==(const ChoiceChange&) const = default;
};

// What marking a choice led to.
struct MarkResult {
    // The options whose choice changed, the one that was asked for first when it did.
    std::vector<ChoiceChange> changes;
    // The options, with their choices, that contradict the choice (of several choices: each other) and could
    // not be made to give way. The size of the paper never does: it is the document's.
    std::map<std::string, std::string> conflicts;
};

// Owns the record. One thread at a time; the record may be opened on one thread and used on another.
//
// A choice is its keyword, in the record as it is now: a panel may give a record's choices other titles and
// keywords (setMarks then restores what was marked before). A choice of the file that no record has any
// more can be marked all the same; it takes part in no conflicts.
class DialogPPD {
public:
    // Opens the file, gives it the titles of language() and marks its defaults. Null, and a message for
    // people in `error`, when the file cannot be read as a PPD.
    static std::unique_ptr<DialogPPD> open(const std::filesystem::path& file, platform::Failure& error);
    // The same for what a descriptor has, which may be a pipe and is waited for; it stays open. `name` is
    // what messages call it: "the PPD on standard input".
    static std::unique_ptr<DialogPPD> read(int descriptor, const std::string& name, platform::Failure& error);

    ppd_file_t* record() { return record_.get(); }
    // The language of the titles, and so of all that stands beside them: the first of the person's that both
    // the PPD and the host's texts have, otherwise the PPD's own.
    const std::string& language() const { return language_; }

    bool hasChoice(const std::string& option, const std::string& choice);
    // The keyword of the option's marked choice, or of its default when none is marked; "" for neither and
    // for an option that the PPD does not have.
    std::string choiceOf(const std::string& option) const;

    // Whether the queue's own PPD has the choice, whatever a panel has made of the record: what it does not
    // have cannot be said to the printer.
    bool isInFile(const std::string& option, const std::string& choice) const;
    // Whether the choice has another title than the file gives it: an office has named it.
    bool isRenamed(const std::string& option, const std::string& choice) const;
    // The names that an office published as titles in the queue's PPD, by choice of MediaType. The record has
    // the titles that were there before.
    const std::map<std::string, std::string>& publishedTitles() const { return publishedTitles_; }
    // The keyword of the option's default choice; "" when there is no such option, or neither the record nor
    // the file has the choice.
    std::string defaultChoiceOf(const std::string& option) const;
    // The PPD's page size of these dimensions in points (to within a millimetre); "" for none.
    std::string pageSizeOf(double width, double height) const;
    // Its width and height in points; nothing when the PPD does not have that size.
    std::optional<std::pair<double, double>> dimensionsOf(const std::string& pageSize) const;

    // Marks a choice. Conflicts that it causes (*UIConstraints, *cupsUIConstraints) are resolved: this choice
    // stays, what contradicts it changes. An option or choice that the PPD does not have changes nothing.
    MarkResult mark(const std::string& option, const std::string& choice);
    // Marks several choices, none newer than another, and resolves the conflicts among all marks; only the
    // size of the paper is certain to stay. The changes are those that this took, from what was asked for.
    MarkResult markAll(const std::map<std::string, std::string>& choices);

    // The marked choices, option to choice.
    using Marks = std::map<std::string, std::string>;
    Marks marks() const;
    // Marks these again, as they were; conflicts are not looked at.
    void setMarks(const Marks& marks);

    // For people: the title in the PPD, or the keyword where there is none that is UTF-8.
    std::string optionTitle(const std::string& option) const;
    std::string choiceTitle(const std::string& option, const std::string& choice) const;

private:
    struct Close {
        void operator()(ppd_file_t* ppd) const { ppdClose(ppd); }
    };
    DialogPPD(ppd_file_t* record, int descriptor, std::map<std::string, std::string> publishedTitles);
    static std::unique_ptr<DialogPPD> create(
        int descriptor, const std::string& name, platform::Failure& error);
    bool markOne(const std::string& option, const std::string& choice);
    Marks conflictsOf(const std::string& option, const std::string& choice) const;
    Marks allConflicts() const;
    MarkResult resolve(const Marks& before, const std::string* option, const std::string* choice);

    std::unique_ptr<ppd_file_t, Close> record_;
    std::string language_;
    std::map<std::string, std::string> publishedTitles_;
    std::map<std::string, Marks> titlesInFile_; // of each option: choice to title
    Marks absent_;                              // marked choices that no record has any more
};

} // namespace orvan
