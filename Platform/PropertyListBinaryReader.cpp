#include "Platform/PropertyListReaders.h"

namespace platform {
std::optional<PropertyList> readBinaryPropertyList(std::string_view, std::string& error) {
    error = "the binary form is not read yet";
    return std::nullopt;
}
} // namespace platform
