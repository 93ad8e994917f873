#include "PrintDialog/Host/HostText.h"

#include "Platform/Bundle.h"
#include "PrintDialog/Host/InstalledFiles.h"

#include <memory>

namespace orvan {
namespace {

const platform::Bundle* hostResources() {
    static const auto* const resources = new std::shared_ptr<platform::Bundle>(
        platform::Bundle::open(privateFolder() / "PrintDialog.resources"));
    return resources->get();
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

std::string hostText(const std::string& key, const std::vector<std::string>& values) {
    const platform::Bundle* const resources = hostResources();
    return fill(resources != nullptr ? resources->localizedString(key) : key, values);
}

} // namespace orvan
