// The channel's job, and the filter that it runs itself.
#include "BiDi/OrvanBiDi.h"

#include "BiDi/Common/CommandFilterPath.h"
#include "BiDi/Common/StoredPassword.h"
#include "Formats/Unicode.h"
#include "Platform/PMPrinter.h"
#include "Platform/SystemLog.h"
#include "Platform/UserDefaults.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <utility>
#include <vector>

namespace orvan {
namespace {

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
    return orvan::pathForCommandFilterInPPD(ppd);
}

platform::TaskDescription::Environment OrvanBiDi::commandFilterEnvironment() const {
    auto environment = platform::defaultTaskEnvironment();
    // What this application inherited of these is about something else.
    for (const char* name : {"DEVICE_URI", "PPD", "LANG", "PRINTER"})
        environment.erase(name);

    const auto queue = printer();
    std::string text;
    if (queue != nullptr && platform::PMPrinterCopyDeviceURI(*queue, text) == platform::kPMNoError)
        environment["DEVICE_URI"] = text;
    if (queue != nullptr && platform::PMPrinterCopyDescriptionURL(
                                *queue, platform::kPMPPDDescriptionType, text) == platform::kPMNoError)
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
    platform::Failure problem;
    _commandFilterTask = platform::Task::launch(
        std::move(task),
        [channel = weak_from_this()](const platform::TaskOutput& output) {
            if (const auto self = channel.lock()) self->commandFilterTerminated(output);
        },
        problem);
    if (problem) platform::systemLog("the printer's command filter: " + *problem);
}

} // namespace orvan
