#include "PrintDialog/Host/PresetStore.h"

#include "Formats/Unicode.h"
#include "PrintDialog/Host/HostText.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace orvan {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPresetGroup = "Preset";
constexpr const char* kChoicesGroup = "Choices";
constexpr const char* kNameKey = "Name";
constexpr const char* kQueueKey = "Queue";
constexpr const char* kModelKey = "Model";
constexpr const char* kDeviceKey = "Device";
constexpr const char* kPaperKey = "Paper";
constexpr const char* kExtension = ".conf";
constexpr const char* kLastUsedFile = "last-used.conf";
constexpr std::uintmax_t kLargestFile = std::uintmax_t{64} * 1024;
constexpr std::size_t kHashLength = 32; // characters of a file's name
constexpr int kOwnerOnly = 0600;
constexpr int kOwnersFolder = 0700;

using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;

struct FreeText {
    void operator()(char* text) const { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

struct FreeTexts {
    void operator()(char** texts) const { g_strfreev(texts); }
};

std::string textIn(GKeyFile* file, const char* group, const char* key) {
    const Text text(g_key_file_get_string(file, group, key, nullptr));
    return text != nullptr ? text.get() : "";
}

// Nothing for a file that is no preset.
std::optional<Preset> readPreset(const fs::path& path) {
    std::error_code problem;
    if (!fs::is_regular_file(path, problem) || fs::file_size(path, problem) > kLargestFile || problem)
        return std::nullopt;
    const KeyFile file(g_key_file_new(), g_key_file_unref);
    if (g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, nullptr) == FALSE ||
        g_key_file_has_group(file.get(), kPresetGroup) == FALSE)
        return std::nullopt;
    const auto text = [&file](const char* key) { return textIn(file.get(), kPresetGroup, key); };
    Preset preset{.name = text(kNameKey),
        .printer = {.queue = text(kQueueKey), .model = text(kModelKey), .device = text(kDeviceKey)},
        .choices = {},
        .paper = text(kPaperKey)};
    gsize count = 0;
    const std::unique_ptr<char*, FreeTexts> keys(
        g_key_file_get_keys(file.get(), kChoicesGroup, &count, nullptr));
    for (gsize i = 0; i < count; ++i)
        preset.choices.emplace(keys.get()[i], textIn(file.get(), kChoicesGroup, keys.get()[i]));
    return preset;
}

// A scheduler may name a queue as it likes: the name stays one folder's, below ours.
std::string folderFor(const std::string& queue) {
    std::string folder = queue.starts_with('.') ? "%" + queue : queue;
    std::ranges::replace(folder, '/', '%');
    return folder;
}

fs::path presetsBelow(const char* folder) {
    return fs::path(folder) / "orvan" / "presets";
}

// All files of presets in a folder, and in those below it.
std::vector<fs::path> presetFiles(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code problem;
    for (const auto& entry : fs::directory_iterator(folder, problem)) {
        if (entry.path().extension() == kExtension) files.push_back(entry.path());
        std::error_code noFolder;
        for (const auto& below : fs::directory_iterator(entry.path(), noFolder))
            if (below.path().extension() == kExtension) files.push_back(below.path());
    }
    std::ranges::sort(files);
    return files;
}

// An administrator's preset may be for every printer, or for every one of a model.
bool isForPrinter(const Preset& preset, const PresetPrinter& printer) {
    const PresetPrinter& wanted = preset.printer;
    if (!wanted.queue.empty()) return printer.hasPresetsOf(wanted);
    return wanted.model.empty() || wanted.model == printer.model;
}

bool isName(const std::string& name) {
    const auto isControl = [](unsigned char character) { return character < ' ' || character == 0x7F; };
    return !name.empty() && name.size() <= PresetStore::kLongestName &&
           !std::ranges::any_of(name, isControl) && platform::findInvalidUTF8(name) == std::string::npos;
}

PresetProblem removeFiles(const std::vector<fs::path>& files) {
    std::error_code problem;
    for (const fs::path& file : files)
        if (!fs::remove(file, problem) && problem)
            return {PresetProblem::Kind::notRemoved, file.string() + ": " + problem.message()};
    return {};
}

} // namespace

std::string PresetProblem::text(const std::string& language) const {
    switch (kind) {
    case Kind::none:
        break;
    case Kind::noName:
        return hostText(language, "A preset needs a name of at most 200 bytes.");
    case Kind::tooMany:
        return hostText(language, "There are 100 presets for this printer already; delete one first.");
    case Kind::fixed:
        return hostText(language, "The preset “%1” is the administrator’s.", {detail});
    case Kind::unreadable:
        return hostText(language, "A preset of this name is there and cannot be read: %1.", {detail});
    case Kind::missing:
        return hostText(language, "There is no preset “%1” for this printer.", {detail});
    case Kind::notSaved:
        return hostText(language, "The preset was not saved: %1.", {detail});
    case Kind::notRemoved:
        return hostText(language, "The preset was not deleted: %1.", {detail});
    }
    return {};
}

const PresetStore::Listed* PresetStore::Listing::find(const std::string& name) const {
    const auto found =
        std::ranges::find_if(presets, [&name](const Listed& listed) { return listed.preset.name == name; });
    return found != presets.end() ? &*found : nullptr;
}

std::string PresetStore::nameIn(const std::string& typed) {
    constexpr const char* kSpace = " \t\r\n";
    const std::size_t begin = typed.find_first_not_of(kSpace);
    return begin == std::string::npos ? "" : typed.substr(begin, typed.find_last_not_of(kSpace) - begin + 1);
}

fs::path PresetStore::folder() const {
    return presetsBelow(g_get_user_config_dir()) / folderFor(printer_.queue);
}

PresetStore::Listing PresetStore::list() const {
    Listing listing;
    std::map<std::string, std::size_t> names; // to the place in the listing
    const auto add = [&](const fs::path& file, bool isFixed) {
        std::optional<Preset> preset = readPreset(file);
        const bool isLastUsed = file.filename() == kLastUsedFile;
        if (!preset || (!isLastUsed && !isName(preset->name))) {
            listing.unreadable.push_back(file);
        } else if (isLastUsed) {
            if (!isFixed && printer_.hasPresetsOf(preset->printer) && !listing.lastUsed)
                listing.lastUsed = std::move(preset);
        } else if (isForPrinter(*preset, printer_)) {
            const auto [place, isNew] = names.emplace(preset->name, listing.presets.size());
            if (isNew) listing.presets.push_back({*std::move(preset), isFixed, {}});
            Listed& listed = listing.presets[place->second];
            if (!isFixed && !listed.isFixed) listed.files.push_back(file);
        }
    };
    for (const gchar* const* system = g_get_system_config_dirs(); *system != nullptr; ++system)
        for (const fs::path& file : presetFiles(presetsBelow(*system)))
            add(file, true);
    const fs::path own = folder();
    std::vector<fs::path> files = presetFiles(presetsBelow(g_get_user_config_dir()));
    std::stable_partition(
        files.begin(), files.end(), [&own](const fs::path& file) { return file.parent_path() == own; });
    for (const fs::path& file : files)
        add(file, false);
    std::ranges::sort(listing.presets, [](const Listed& a, const Listed& b) {
        return g_utf8_collate(a.preset.name.c_str(), b.preset.name.c_str()) < 0;
    });
    return listing;
}

fs::path PresetStore::fileOf(const std::string& name) const {
    const Text hash(g_compute_checksum_for_string(G_CHECKSUM_SHA256, name.c_str(), -1));
    return folder() / (std::string(hash.get()).substr(0, kHashLength) + kExtension);
}

PresetProblem PresetStore::problemWith(const std::string& name, const Listing& listing) const {
    using Kind = PresetProblem::Kind;
    if (!isName(name)) return {Kind::noName, ""};
    const fs::path file = fileOf(name);
    if (std::ranges::find(listing.unreadable, file) != listing.unreadable.end())
        return {Kind::unreadable, file.string()};
    const Listed* const before = listing.find(name);
    if (before != nullptr && before->isFixed) return {Kind::fixed, name};
    return {};
}

PresetProblem PresetStore::save(Preset preset) const {
    using Kind = PresetProblem::Kind;
    preset.name = nameIn(preset.name);
    const Listing listing = list();
    if (PresetProblem problem = problemWith(preset.name, listing); problem.kind != Kind::none) return problem;
    const auto own =
        std::ranges::count_if(listing.presets, [](const Listed& listed) { return !listed.isFixed; });
    const Listed* const before = listing.find(preset.name);
    if (before == nullptr && own >= static_cast<std::ptrdiff_t>(kMostPresets)) return {Kind::tooMany, ""};
    // A file that somebody has named otherwise stays the preset's.
    const bool hasOwnFile = before != nullptr && before->files.front().parent_path() == folder();
    return write(preset, hasOwnFile ? before->files.front() : fileOf(preset.name));
}

PresetProblem PresetStore::rename(const std::string& from, const std::string& to) const {
    using Kind = PresetProblem::Kind;
    const Listing listing = list();
    const Listed* const found = listing.find(from);
    if (found == nullptr) return {Kind::missing, from};
    if (found->isFixed) return {Kind::fixed, from};
    Preset preset = found->preset;
    preset.name = nameIn(to);
    if (preset.name == from) return {};
    if (PresetProblem problem = problemWith(preset.name, listing); problem.kind != Kind::none) return problem;
    // The new one is there before the old one goes.
    if (PresetProblem problem = write(preset, fileOf(preset.name)); problem.kind != Kind::none)
        return problem;
    return removeFiles(found->files);
}

PresetProblem PresetStore::remove(const std::string& name) const {
    using Kind = PresetProblem::Kind;
    const Listing listing = list();
    const Listed* const found = listing.find(name);
    if (found == nullptr) return {Kind::missing, name};
    if (found->isFixed) return {Kind::fixed, name};
    return removeFiles(found->files);
}

PresetProblem PresetStore::rememberLastUsed(Preset preset) const {
    preset.name.clear();
    return write(preset, folder() / kLastUsedFile);
}

PresetProblem PresetStore::write(const Preset& preset, const fs::path& file) const {
    const KeyFile keys(g_key_file_new(), g_key_file_unref);
    const auto set = [&keys](const char* group, const std::string& key, const std::string& value) {
        if (!value.empty()) g_key_file_set_string(keys.get(), group, key.c_str(), value.c_str());
    };
    set(kPresetGroup, kNameKey, preset.name);
    set(kPresetGroup, kQueueKey, printer_.queue);
    set(kPresetGroup, kModelKey, printer_.model);
    set(kPresetGroup, kDeviceKey, printer_.device);
    set(kPresetGroup, kPaperKey, preset.paper);
    for (const auto& [option, choice] : preset.choices)
        set(kChoicesGroup, option, choice);
    gsize size = 0;
    const Text text(g_key_file_to_data(keys.get(), &size, nullptr));

    using Kind = PresetProblem::Kind;
    if (g_mkdir_with_parents(file.parent_path().c_str(), kOwnersFolder) != 0)
        return {Kind::notSaved, file.parent_path().string() + ": " + std::strerror(errno)};
    GError* error = nullptr;
    g_file_set_contents_full(file.c_str(), text.get(), static_cast<gssize>(size),
        G_FILE_SET_CONTENTS_CONSISTENT, kOwnerOnly, &error);
    if (error == nullptr) return {};
    PresetProblem problem{Kind::notSaved, error->message};
    g_error_free(error);
    return problem;
}

} // namespace orvan
