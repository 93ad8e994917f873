// Whatever is read can be written in both forms, and what was written reads back as the same.
#include "Formats/PropertyList.h"

#include <cstdlib>

using platform::PropertyList;

namespace {

void promise(bool kept) {
    if (!kept) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    platform::Failure error;
    const auto value = PropertyList::read({reinterpret_cast<const char*>(data), size}, error);
    promise(value.has_value() == !error);
    if (!value) return 0;

    // The bytes are compared, since a NaN is not equal to itself.
    const std::string binary = value->writeBinary();
    const auto fromBinary = PropertyList::read(binary);
    promise(fromBinary.has_value());
    promise(fromBinary->writeBinary() == binary);

    // The XML form replaces some characters; after that it is as exact.
    const auto fromXML = PropertyList::read(value->writeXML());
    promise(fromXML.has_value());
    const std::string xml = fromXML->writeXML();
    const auto again = PropertyList::read(xml);
    promise(again.has_value());
    promise(again->writeXML() == xml);
    return 0;
}
