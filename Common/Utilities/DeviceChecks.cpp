#include "Common/Utilities/DeviceChecks.h"

#include "Formats/TextEncoding.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>

namespace orvan {
namespace {

constexpr std::array<const char*, 2> kFamilyOptions{"OVNImageSmoothing", "OVNHasOVRaster"};
constexpr std::string_view kManufacturer = "Orvan";
constexpr std::string_view kDigits = "0123456789";

} // namespace

std::string getDeviceModelNumber(ppd_file_t* ppd) {
    constexpr const char* kUnreadable = "0000";
    const ppd_attr_t* const attribute = ppdFindAttr(ppd, "ModelName", nullptr);
    if (attribute == nullptr || attribute->value == nullptr) return kUnreadable;
    const std::optional<std::string> name = platform::decodeUTF8(attribute->value);
    if (!name) return kUnreadable;

    const std::size_t first = std::min(name->find_first_of(kDigits), name->size());
    const std::size_t end = std::min(name->find_first_not_of(kDigits, first), name->size());
    const std::string run = name->substr(first, end - first);
    const std::size_t significant = run.find_first_not_of('0');
    return significant == std::string::npos ? "0" : run.substr(significant);
}

std::int32_t MyCheckPDEContextCUPS(ppd_file_t* ppd) {
    // libcups finds options whatever the case of their letters.
    const auto hasOption = [&](const char* keyword) {
        const ppd_option_t* const option = ppdFindOption(ppd, keyword);
        return option != nullptr && std::strcmp(option->keyword, keyword) == 0;
    };
    if (std::ranges::none_of(kFamilyOptions, hasOption)) return kPDEContextNotValid;
    const bool ours = ppd->manufacturer != nullptr && kManufacturer == ppd->manufacturer;
    return ours ? kPDEContextValid : kPDEContextNotValid;
}

} // namespace orvan
