#include "PrintDialog/Host/DialogPPD.h"

#include "Common/PPDUtilities.h"
#include "Common/PublishedTitles.h"
#include "Formats/TextEncoding.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Input.h"
#include "Platform/UserDefaults.h"
#include "PrintDialog/Host/HostText.h"
#include "PrintDialog/Host/PPDTitles.h"

#include <cups/cups.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <span>
#include <system_error>

namespace orvan {
namespace {

// What libcups answers with: an array of options that the caller frees.
class CupsOptions {
public:
    CupsOptions() = default;
    CupsOptions(const CupsOptions&) = delete;
    CupsOptions& operator=(const CupsOptions&) = delete;
    ~CupsOptions() { cupsFreeOptions(count, options); }

    std::span<const cups_option_t> all() const {
        return {options, static_cast<std::size_t>(std::max(count, 0))};
    }

    int count = 0;
    cups_option_t* options = nullptr;
};

template <std::size_t size>
std::string titleOr(const char (&title)[size], std::string_view keyword) {
    return titleIn(title).value_or(std::string(keyword));
}

std::span<const ppd_choice_t> recordsOf(const ppd_option_t& option) {
    return {option.choices, static_cast<std::size_t>(std::max(option.num_choices, 0))};
}

std::span<const ppd_size_t> sizesOf(const ppd_file_t& record) {
    return {record.sizes, static_cast<std::size_t>(std::max(record.num_sizes, 0))};
}

std::string cannotRead(const std::string& name, const std::string& why) {
    return "cannot read " + name + ": " + why;
}

std::string nameOf(const std::filesystem::path& file) {
    return "the PPD file " + file.string();
}

// What is wrong with a PPD, in the order of ppd_status_t; libcups has words for it in the process's locale
// only.
constexpr std::array<const char*, PPD_MAX_STATUS> kProblems{
    "nothing is wrong",
    "it cannot be opened",
    "there is no file",
    "there is not enough memory",
    "its first line is not *PPD-Adobe: \"4.x\"",
    "a value is missing",
    "libcups gave up",
    "an *OpenGroup is damaged",
    "an *OpenGroup is within another",
    "an *OpenUI is damaged",
    "an *OpenUI is within another",
    "an *OrderDependency is damaged",
    "a *UIConstraints is damaged",
    "a line does not begin with *",
    "a line is longer than 255 characters",
    "there is a control character",
    "a main keyword is damaged",
    "an option keyword is damaged",
    "a title is damaged",
    "there is white space in the wrong place",
    "a custom parameter is damaged",
    "an option keyword is missing",
    "a value is damaged",
    "a *CloseGroup is missing",
    "a *CloseUI is damaged",
    "a *CloseUI is missing",
};

// What a descriptor has until its end, to be read more than once. None, and errno, when it cannot be read.
platform::FileDescriptor copyInMemory(int descriptor) {
    platform::FileDescriptor memory(::memfd_create("ppd", MFD_CLOEXEC));
    std::array<char, 16384> buffer{};
    while (memory) {
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count == 0) break;
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 || ::write(memory.get(), buffer.data(), static_cast<std::size_t>(count)) != count)
            return {};
    }
    if (memory) ::lseek(memory.get(), 0, SEEK_SET);
    return memory;
}

// libcups closes what it reads. Null when it is no PPD.
ppd_file_t* openRecord(int descriptor) {
    return ppdOpenFd(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
}

// The PPD without the names that an office published in it. None when it cannot be read once more.
platform::FileDescriptor asItWas(int descriptor) {
    platform::Failure ignored;
    const auto text = platform::readFile("/proc/self/fd/" + std::to_string(descriptor), ignored);
    if (!text) return {};
    const std::string before = withoutPublishedTitles(*text);
    platform::FileDescriptor memory(::memfd_create("ppd", MFD_CLOEXEC));
    if (!memory || ::write(memory.get(), before.data(), before.size()) != static_cast<ssize_t>(before.size()))
        return {};
    ::lseek(memory.get(), 0, SEEK_SET);
    return memory;
}

bool isPaperSize(std::string_view keyword) {
    return keyword == kPageSizeOption || keyword == "PageRegion";
}

} // namespace

DialogPPD::DialogPPD(ppd_file_t* record, int descriptor, std::map<std::string, std::string> publishedTitles)
    : record_(record),
      language_(languageOf(*record, platform::preferredLanguages(), hostLanguages())),
      publishedTitles_(std::move(publishedTitles)) {
    setTitles(*record, language_, descriptor);
    ppdMarkDefaults(record);
    for (const ppd_option_t* option = ppdFirstOption(record); option != nullptr;
         option = ppdNextOption(record))
        for (const ppd_choice_t& choice : recordsOf(*option)) {
            const std::string_view keyword = fieldText(choice.choice);
            titlesInFile_[std::string(fieldText(option->keyword))].emplace(
                keyword, titleOr(choice.text, keyword));
        }
}

// Of a file.
std::unique_ptr<DialogPPD> DialogPPD::create(
    int descriptor, const std::string& name, platform::Failure& error) {
    if (ppd_file_t* const record = openRecord(descriptor); record != nullptr) {
        std::unique_ptr<ppd_file_t, Close> owner(record);
        auto published = orvan::publishedTitles(*record);
        const platform::FileDescriptor before =
            published.empty() ? platform::FileDescriptor() : asItWas(descriptor);
        // An office's names are the printer's to tell: what the dialog shows starts without them.
        if (ppd_file_t* const original = before ? openRecord(before.get()) : nullptr)
            return std::unique_ptr<DialogPPD>(new DialogPPD(original, before.get(), std::move(published)));
        return std::unique_ptr<DialogPPD>(new DialogPPD(owner.release(), descriptor, std::move(published)));
    }
    int line = 0;
    const std::string why = kProblems.at(ppdLastError(&line));
    error = cannotRead(name, why + " (line " + std::to_string(line) + ")");
    return nullptr;
}

std::unique_ptr<DialogPPD> DialogPPD::open(const std::filesystem::path& file, platform::Failure& error) {
    std::error_code status;
    const auto type = std::filesystem::status(file, status).type();
    const auto refuse = [&](const std::string& why) {
        error = cannotRead(nameOf(file), why);
        return nullptr;
    };
    if (type == std::filesystem::file_type::not_found) return refuse("there is no such file");
    if (type == std::filesystem::file_type::directory) return refuse("it is a folder");
    // A pipe might never be written to.
    if (status == std::error_code() && type != std::filesystem::file_type::regular)
        return refuse("it is no regular file");
    const platform::FileDescriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (!descriptor) return refuse(std::strerror(errno));
    return create(descriptor.get(), nameOf(file), error);
}

std::unique_ptr<DialogPPD> DialogPPD::read(
    int descriptor, const std::string& name, platform::Failure& error) {
    const platform::FileDescriptor memory = copyInMemory(descriptor);
    if (memory) return create(memory.get(), name, error);
    error = cannotRead(name, std::strerror(errno));
    return nullptr;
}

bool DialogPPD::hasChoice(const std::string& option, const std::string& choice) {
    return HasOptionKey(ppdFindOption(record_.get(), option.c_str()), choice);
}

std::string DialogPPD::choiceOf(const std::string& option) const {
    const ppd_option_t* const found = ppdFindOption(record_.get(), option.c_str());
    if (found == nullptr) return {};
    if (const auto absent = absent_.find(option); absent != absent_.end()) return absent->second;
    if (const ppd_choice_t* marked = ppdFindMarkedChoice(record_.get(), found->keyword))
        return std::string(fieldText(marked->choice));
    return defaultChoiceOf(option);
}

bool DialogPPD::isInFile(const std::string& option, const std::string& choice) const {
    const auto titles = titlesInFile_.find(option);
    return titles != titlesInFile_.end() && titles->second.contains(choice);
}

bool DialogPPD::isRenamed(const std::string& option, const std::string& choice) const {
    return !isInFile(option, choice) || titlesInFile_.at(option).at(choice) != choiceTitle(option, choice);
}

std::string DialogPPD::defaultChoiceOf(const std::string& option) const {
    const ppd_option_t* const found = ppdFindOption(record_.get(), option.c_str());
    if (found == nullptr) return {};
    std::string choice(fieldText(found->defchoice));
    return HasOptionKey(found, choice) || isInFile(option, choice) ? choice : std::string();
}

std::string DialogPPD::pageSizeOf(double width, double height) const {
    constexpr double kMillimetre = 72 / 25.4;
    const auto near = [](double a, double b) { return std::abs(a - b) < kMillimetre; };
    for (const ppd_size_t& size : sizesOf(*record_))
        if (near(size.width, width) && near(size.length, height)) return std::string(fieldText(size.name));
    return {};
}

std::optional<std::pair<double, double>> DialogPPD::dimensionsOf(const std::string& pageSize) const {
    for (const ppd_size_t& size : sizesOf(*record_))
        if (fieldText(size.name) == pageSize) return std::pair<double, double>(size.width, size.length);
    return std::nullopt;
}

DialogPPD::Marks DialogPPD::marks() const {
    Marks marks;
    cups_array_t* const marked = record_->marked;
    for (void* item = cupsArrayFirst(marked); item != nullptr; item = cupsArrayNext(marked)) {
        const auto* const choice = static_cast<const ppd_choice_t*>(item);
        marks.emplace(fieldText(choice->option->keyword), fieldText(choice->choice));
    }
    for (const auto& [option, choice] : absent_)
        marks.insert_or_assign(option, choice);
    return marks;
}

void DialogPPD::setMarks(const Marks& marks) {
    for (const auto& [option, choice] : marks) {
        ppd_option_t* const found = ppdFindOption(record_.get(), option.c_str());
        const ppd_choice_t* const first = found != nullptr ? ppdFindChoice(found, choice.c_str()) : nullptr;
        const bool isMarked = first != nullptr && first == ppdFindMarkedChoice(record_.get(), option.c_str());
        if (!isMarked || absent_.contains(option)) markOne(option, choice);
    }
}

bool DialogPPD::markOne(const std::string& option, const std::string& choice) {
    if (hasChoice(option, choice)) {
        absent_.erase(option);
        ppdMarkOption(record_.get(), option.c_str(), choice.c_str());
        return true;
    }
    if (!isInFile(option, choice)) return false;
    // Another paper's mark would contradict what this one does not.
    if (ppd_choice_t* const marked = ppdFindMarkedChoice(record_.get(), option.c_str())) {
        cupsArrayRemove(record_->marked, marked);
        marked->marked = 0;
    }
    absent_.insert_or_assign(option, choice);
    return true;
}

MarkResult DialogPPD::mark(const std::string& option, const std::string& choice) {
    const Marks before = marks();
    if (!markOne(option, choice)) return {};
    return resolve(before, &option, &choice);
}

MarkResult DialogPPD::markAll(const std::map<std::string, std::string>& choices) {
    for (const auto& [option, choice] : choices)
        markOne(option, choice);
    return resolve(marks(), nullptr, nullptr);
}

DialogPPD::Marks DialogPPD::conflictsOf(const std::string& option, const std::string& choice) const {
    CupsOptions contradicting;
    contradicting.count =
        cupsGetConflicts(record_.get(), option.c_str(), choice.c_str(), &contradicting.options);
    Marks conflicts;
    for (const cups_option_t& other : contradicting.all())
        conflicts.emplace(other.name, other.value);
    return conflicts;
}

DialogPPD::Marks DialogPPD::allConflicts() const {
    ppdConflicts(record_.get()); // notes at each option whether it takes part in one
    Marks conflicts;
    for (const auto& [keyword, choice] : marks())
        if (ppdFindOption(record_.get(), keyword.c_str())->conflicted != 0)
            conflicts.emplace(keyword, choice);
    return conflicts;
}

MarkResult DialogPPD::resolve(const Marks& before, const std::string* option, const std::string* choice) {
    // Where no choice is newest, the paper's size is the one that stays.
    const std::string keeper = option != nullptr ? *option : kPageSizeOption;
    const std::string kept = option != nullptr ? *choice : choiceOf(keeper);
    const char* const keeperText = kept.empty() ? nullptr : keeper.c_str();
    const char* const keptText = kept.empty() ? nullptr : kept.c_str();

    MarkResult result;
    CupsOptions needed;
    if (cupsResolveConflicts(record_.get(), keeperText, keptText, &needed.count, &needed.options) != 0) {
        for (const cups_option_t& change : needed.all())
            if (isPaperSize(change.name) && keeper != change.name)
                result.conflicts.emplace(change.name, choiceOf(change.name));
            else
                markOne(change.name, change.value);
    } else {
        result.conflicts = option != nullptr ? conflictsOf(*option, *choice) : allConflicts();
    }

    const Marks after = marks();
    for (const auto& [keyword, now] : after) {
        const auto was = before.find(keyword);
        if (was != before.end() && was->second == now) continue;
        const bool asked = option != nullptr && keyword == *option;
        ChoiceChange change{keyword, was != before.end() ? was->second : "", now};
        result.changes.insert(asked ? result.changes.begin() : result.changes.end(), std::move(change));
    }
    return result;
}

std::string DialogPPD::optionTitle(const std::string& option) const {
    const ppd_option_t* const found = ppdFindOption(record_.get(), option.c_str());
    return found != nullptr ? titleOr(found->text, option) : option;
}

std::string DialogPPD::choiceTitle(const std::string& option, const std::string& choice) const {
    ppd_option_t* const found = ppdFindOption(record_.get(), option.c_str());
    const ppd_choice_t* const record = found != nullptr ? ppdFindChoice(found, choice.c_str()) : nullptr;
    if (record != nullptr) return titleOr(record->text, choice);
    return isInFile(option, choice) ? titlesInFile_.at(option).at(choice) : choice;
}

} // namespace orvan
