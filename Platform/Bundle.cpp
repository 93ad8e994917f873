#include "Platform/Bundle.h"

#include "Platform/UserDefaults.h"
#include "Platform/ViewResource.h"

#include <dlfcn.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace platform {
namespace {

constexpr std::string_view kDevelopmentLanguage = "en";
constexpr const char* kLanguageFolder = ".lproj";

std::optional<std::string> readFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    if (!stream) return std::nullopt;
    std::string bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return stream.bad() ? std::nullopt : std::optional(std::move(bytes));
}

std::nullptr_t refuse(Failure& error, const std::string& message) {
    error = message;
    return nullptr;
}

// The dictionary in the file, nothing (and why, in *problem) when there is none.
std::optional<PropertyList> readDictionary(const std::filesystem::path& file, Failure& problem) {
    const std::optional<std::string> bytes = readFile(file);
    if (!bytes) {
        problem = "there is no such file, or it cannot be read";
        return std::nullopt;
    }
    std::optional<PropertyList> list = PropertyList::read(*bytes, problem);
    if (list && list->asDictionary() == nullptr) {
        problem = "it is no dictionary";
        return std::nullopt;
    }
    return list;
}

} // namespace

Bundle::Bundle(std::filesystem::path folder, PropertyList info)
    : folder_(std::move(folder)), info_(std::move(info)) {}

std::shared_ptr<Bundle> Bundle::open(const std::filesystem::path& folder, Failure& error) {
    const std::filesystem::path file = folder / "Contents" / "Info.plist";
    Failure problem;
    std::optional<PropertyList> info = readDictionary(file, problem);
    if (!info) return refuse(error, "cannot open the bundle: " + file.string() + ": " + *problem);
    return std::shared_ptr<Bundle>(new Bundle(folder, std::move(*info)));
}

const std::string* Bundle::infoString(std::string_view key) const {
    return info_.findString(key);
}

std::unique_ptr<PDEPlugin> Bundle::createPrincipalClass(Failure& error) const {
    const std::string* const executable = infoString("BundleExecutable");
    const std::string* const principalClass = infoString("PrincipalClass");
    if (executable == nullptr || principalClass == nullptr)
        return refuse(error,
            folder_.string() + " is no plug-in: its Info.plist names no executable or no principal class");

    const std::filesystem::path object = folder_ / "Contents" / "Linux" / *executable;
    // Never closed: the code of views and panels is in it.
    void* const library = dlopen(object.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr) return refuse(error, std::string("cannot load the plug-in: ") + dlerror());
    void* const symbol = dlsym(library, ("create" + *principalClass).c_str());
    if (symbol == nullptr)
        return refuse(
            error, "cannot load the plug-in: " + object.string() + " has no class " + *principalClass);
    return std::unique_ptr<PDEPlugin>(reinterpret_cast<PDEPluginCreator>(symbol)());
}

std::shared_ptr<View> Bundle::loadView(std::string_view name, const ViewOwner& owner, Failure& error) const {
    const std::filesystem::path file = resources() / (std::string(name) + ".view");
    const std::optional<std::string> bytes = readFile(file);
    if (!bytes) return refuse(error, "cannot read the view resource " + file.string());
    ViewResource resource;
    Failure problem;
    if (!resource.read(
            *bytes, [this](std::string_view text) { return localizedString(text); }, problem))
        return refuse(error, "cannot read the view resource " + file.string() + ": " + *problem);

    for (const auto& [outlet, view] : resource.outlets)
        if (owner.setOutlet) owner.setOutlet(outlet, view);
    for (const auto& [action, popUp] : resource.actions)
        if (owner.action) popUp->setAction(owner.action(action));
    return resource.root;
}

std::vector<std::string> Bundle::languages() const {
    std::vector<std::string> languages;
    std::error_code problem;
    for (const auto& entry : std::filesystem::directory_iterator(resources(), problem))
        if (entry.path().extension() == kLanguageFolder) languages.push_back(entry.path().stem());
    std::ranges::sort(languages);
    return languages;
}

std::shared_ptr<Bundle> Bundle::inLanguage(const std::string& language) const {
    std::shared_ptr<Bundle> bundle(new Bundle(folder_, info_));
    bundle->language_ = language;
    return bundle;
}

PropertyList Bundle::readStringTable() const {
    std::vector<std::string> languages = language_.empty() ? preferredLanguages() : std::vector{language_};
    languages.emplace_back(kDevelopmentLanguage);
    for (const std::string& language : languages) {
        Failure problem;
        const auto file = resources() / (language + kLanguageFolder) / "Localizable.strings";
        if (auto table = readDictionary(file, problem)) return std::move(*table);
    }
    return PropertyList::Dictionary{};
}

std::string Bundle::localizedString(std::string_view key) const {
    std::call_once(stringTableIsRead_, [this] { stringTable_ = readStringTable(); });
    const std::string* const text = stringTable_.findString(key);
    return text != nullptr ? *text : std::string(key);
}

} // namespace platform
