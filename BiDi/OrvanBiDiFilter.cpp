// The channel's job, and the filter that it runs itself.
#include "BiDi/OrvanBiDi.h"

#include "BiDi/WhiteSpace.h"
#include "Platform/PMPrinter.h"
#include "Platform/Unicode.h"
#include "Platform/UserDefaults.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <utility>
#include <vector>

namespace orvan {
namespace {

constexpr std::string_view kCommandFileType = "application/vnd.cups-command";
// isspace of the C locale.
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

bool isForCommandFiles(std::string_view filter) {
    return filter.starts_with(kCommandFileType) && filter.size() > kCommandFileType.size() &&
           kWhiteSpace.find(filter[kCommandFileType.size()]) != std::string_view::npos;
}

std::string storedPassword() {
    const auto domain = platform::persistentDomainForName(OrvanBiDi::kPasswordDomain);
    if (!domain) return {};
    const auto found = domain->find(OrvanBiDi::kPasswordKey);
    const std::string* const password = found != domain->end() ? found->second.asString() : nullptr;
    return password != nullptr ? *password : std::string();
}

std::string withSingleSlashes(std::string_view path) {
    std::string result;
    for (auto slashes = path.find("//"); slashes != std::string_view::npos; slashes = path.find("//")) {
        result += path.substr(0, slashes + 1);
        path.remove_prefix(slashes + 2);
    }
    return result.append(path);
}

// The text in a symbolic link; the path itself when it is none.
std::string linkTargetOrSelf(const std::string& path) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    return length > 0 ? std::string(target.data(), static_cast<std::size_t>(length)) : path;
}

// Of a language tag, which is ASCII (RFC 5646, section 2.1).
std::string upperCase(std::string tag) {
    std::transform(tag.begin(), tag.end(), tag.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return tag;
}

} // namespace

std::optional<CommandList> OrvanBiDi::supportedCommandsInPPD(ppd_file_t* ppd) const {
    return orvan::supportedCommandsInPPD(ppd);
}

std::string OrvanBiDi::commandJobWithCommands(const std::optional<CommandList>& commands) const {
    std::string job = "#CUPS-COMMAND";
    if (!commands) return job;
    for (const std::string& command : *commands) {
        job += '\n' + command + " username=" + platform::fullUserName();
        const std::string password = storedPassword();
        if (!password.empty()) job += " password=" + password;
    }
    return job;
}

std::optional<std::string> OrvanBiDi::pathForCommandFilterInPPD(ppd_file_t* ppd) const {
    for (const ppd_attr_t* filter = ppdFindAttr(ppd, "cupsFilter2", nullptr); filter != nullptr;
         filter = ppdFindNextAttr(ppd, "cupsFilter2", nullptr)) {
        const std::string_view value = filter->value != nullptr ? filter->value : "";
        if (!isForCommandFiles(value) || platform::findInvalidUTF8(value) != std::string_view::npos) continue;
        PieceReader pieces(value);
        std::string_view last;
        while (pieces.next(&last, PieceReader::At::everySeparator)) {
        }
        return std::string(last);
    }
    return std::nullopt;
}

platform::TaskDescription::Environment OrvanBiDi::commandFilterEnvironment() const {
    auto environment = platform::defaultTaskEnvironment();
    // What this application inherited of these is about something else.
    for (const char* name : {"DEVICE_URI", "PPD", "LANG", "PRINTER"})
        environment.erase(name);

    const auto queue = printer();
    std::string text;
    if (queue != nullptr && platform::PMPrinterCopyDeviceURI(*queue, &text) == platform::kPMNoError)
        environment["DEVICE_URI"] = text;
    if (queue != nullptr && platform::PMPrinterCopyDescriptionURL(
                                *queue, platform::kPMPPDDescriptionType, &text) == platform::kPMNoError)
        environment["PPD"] = linkTargetOrSelf(withSingleSlashes(text));
    const std::vector<std::string> languages = platform::preferredLanguages();
    if (!languages.empty()) environment["LANG"] = upperCase(languages.front());
    environment["PRINTER"] = queue != nullptr ? platform::PMPrinterGetID(*queue) : "";
    return environment;
}

void OrvanBiDi::dispatchToFilter(const std::string& job) {
    if (_commandFilterTask != nullptr && _commandFilterTask->isRunning()) return;
    _commandFilterTask = nullptr;
    const std::optional<std::string> program = pathForCommandFilterInPPD(ppd_);
    if (printer() == nullptr || !program || platform::findInvalidUTF8(job) != std::string::npos) return;

    platform::TaskDescription task;
    task.program = *program;
    // Job, user, title and copies are empty; the filter finds its own path where options are expected.
    task.arguments = {"", "", "", "", *program};
    task.environment = commandFilterEnvironment();
    task.input = job;
    _commandFilterTask = platform::Task::launch(
        std::move(task), [channel = weak_from_this()](const platform::TaskOutput& output) {
            if (const auto self = channel.lock()) self->commandFilterTerminated(output);
        });
}

} // namespace orvan
