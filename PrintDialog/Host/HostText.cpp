#include "PrintDialog/Host/HostText.h"

#include "Platform/Bundle.h"
#include "Platform/UserDefaults.h"
#include "PrintDialog/Host/InstalledFiles.h"

#include <functional>
#include <map>
#include <memory>

namespace orvan {
namespace {

// One for each language, read when this is first asked for.
using Tables = std::map<std::string, std::shared_ptr<platform::Bundle>, std::less<>>;

const Tables& hostTables() {
    static const auto* const tables = [] {
        auto* const all = new Tables;
        const auto resources = platform::Bundle::open(privateFolder() / "PrintDialog.resources");
        if (resources == nullptr) return all;
        for (const std::string& language : resources->languages())
            all->emplace(language, resources->inLanguage(language));
        return all;
    }();
    return *tables;
}

// One pass, so that a value that looks like a place holder stays as it is.
std::string fill(const std::string& text, const std::vector<std::string>& values) {
    std::string filled;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t index = text[i] == '%' && i + 1 < text.size()
                                      ? static_cast<std::size_t>(text[i + 1] - '1')
                                      : values.size();
        if (index < values.size()) {
            filled += values[index];
            ++i;
        } else {
            filled += text[i];
        }
    }
    return filled;
}

} // namespace

const std::vector<std::string>& hostLanguages() {
    static const auto* const languages = [] {
        auto* const all = new std::vector<std::string>;
        for (const auto& [language, table] : hostTables())
            all->push_back(language);
        return all;
    }();
    return *languages;
}

std::string personsHostLanguage() {
    for (const std::string& language : platform::preferredLanguages())
        if (hostTables().contains(language)) return language;
    return "en";
}

std::string hostText(
    const std::string& language, const std::string& key, const std::vector<std::string>& values) {
    const auto table = hostTables().find(language);
    return fill(table != hostTables().end() ? table->second->localizedString(key) : key, values);
}

} // namespace orvan
