#include "Orvan/TerminalEncoding.h"

#include <glib.h>
#include <unistd.h>

#include <memory>

namespace orvan {
namespace {

struct Free {
    void operator()(char* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<char, Free>;

std::string inEncoding(const std::string& text, const char* encoding) {
    if (text.find('\0') != std::string::npos) return text; // no text at all
    const OwnedText valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    gsize size = 0;
    const OwnedText converted(
        g_convert_with_fallback(valid.get(), -1, encoding, "UTF-8", "?", nullptr, &size, nullptr));
    return converted != nullptr ? std::string(converted.get(), size) : text;
}

} // namespace

TerminalEncoding::TerminalEncoding(std::ostream& stream, int descriptor) : stream_(stream) {
    const char* encoding = nullptr;
    if (isatty(descriptor) == 1 && g_get_charset(&encoding) == FALSE) below_ = stream.rdbuf(this);
}

TerminalEncoding::~TerminalEncoding() {
    if (below_ == nullptr) return;
    flush();
    stream_.rdbuf(below_);
}

TerminalEncoding::int_type TerminalEncoding::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    text_ += traits_type::to_char_type(character);
    const bool isLine = text_.back() == '\n';
    return isLine && !flush() ? traits_type::eof() : character;
}

bool TerminalEncoding::flush() {
    const char* encoding = nullptr;
    g_get_charset(&encoding);
    const std::string bytes = inEncoding(text_, encoding);
    text_.clear();
    const bool isWritten = below_->sputn(bytes.data(), static_cast<std::streamsize>(bytes.size())) ==
                           static_cast<std::streamsize>(bytes.size());
    return isWritten && below_->pubsync() == 0;
}

} // namespace orvan
