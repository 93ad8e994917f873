// A message behind the two bytes of a position: its readers agree on where its parts end, and stay inside.
#include "Common/DNSMessage.h"
#include "Common/Utilities/PrinterURL.h"

#include <array>
#include <cstdlib>

namespace {

constexpr std::size_t kLongestText = 254; // a name of 255 bytes

void promise(bool kept) {
    if (!kept) std::abort();
}

void checkNames(std::size_t start, orvan::DNSBytes message) {
    std::string text;
    std::size_t withText = start;
    std::size_t without = start;
    const int code = orvan::decode_name(&withText, message, &text);
    promise(code == orvan::decode_name(&without, message, nullptr) && withText == without);
    promise(text.size() <= kLongestText);
    promise(code != 0 || (withText > start && withText <= message.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const orvan::DNSBytes input(data, size);
    const std::size_t start = orvan::DNSCursor(input, 0).number().value_or(0);
    const orvan::DNSBytes message = input.subspan(size < 2 ? size : 2);
    checkNames(start, message);

    std::string target;
    std::uint16_t port = 0;
    std::size_t behindService = start;
    const int service = orvan::decode_srv(&behindService, message, &target, &port);
    promise(service != 0 || (behindService > start && behindService <= message.size()));
    promise(target.size() <= kLongestText);

    std::array<std::uint8_t, 64> strings{};
    std::uint32_t capacity = strings.size();
    std::size_t behindStrings = start;
    const int text = orvan::decode_txt(&behindStrings, message, strings.data(), &capacity);
    promise(capacity <= strings.size());
    promise(text != 0 || service != 0 || behindStrings == behindService);

    std::size_t behindQuestion = start;
    promise(orvan::skip_question(&behindQuestion, message) != 0 || behindQuestion <= message.size());

    const std::optional<std::string> host = orvan::serviceHostInAnswer(message);
    promise(!host || host->size() <= kLongestText);
    return 0;
}
