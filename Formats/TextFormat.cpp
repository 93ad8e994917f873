#include "Formats/TextFormat.h"

#include <cxxabi.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace platform {
namespace {

constexpr std::string_view kFlags = "-+ #0'";
constexpr std::string_view kLengths = "hlqjztL";
constexpr std::string_view kSigned = "di";
constexpr std::string_view kUnsigned = "ouxX";
constexpr std::string_view kReals = "aAeEfFgG";

bool contains(std::string_view set, char c) {
    return set.find(c) != std::string_view::npos;
}

template <class T>
std::optional<std::string> print(const std::string& conversion, T value) {
    const int size = std::snprintf(nullptr, 0, conversion.c_str(), value);
    if (size < 0) return std::nullopt;
    std::string text(static_cast<std::size_t>(size) + 1, '\0');
    std::snprintf(text.data(), text.size(), conversion.c_str(), value);
    text.pop_back();
    return text;
}

// A conversion as far as printf's own work goes: "%", flags, width and precision.
struct Conversion {
    std::string head = "%";
    std::size_t size = sizeof(std::uint64_t); // bytes that the length modifier leaves
    char kind = '\0';
};

std::int64_t signedOf(const FormatValue::Integer& number, std::size_t size) {
    const std::size_t unused = 64 - 8 * std::min(size, number.size);
    return static_cast<std::int64_t>(number.value << unused) >> unused;
}

std::uint64_t unsignedOf(const FormatValue::Integer& number, std::size_t size) {
    const std::size_t unused = 64 - 8 * std::min(size, number.size);
    return number.value << unused >> unused;
}

std::string plainText(const FormatValue& value) {
    if (const auto* const number = std::get_if<FormatValue::Integer>(&value.value()))
        return number->isSigned ? std::to_string(signedOf(*number, number->size))
                                : std::to_string(unsignedOf(*number, number->size));
    if (const auto* const real = std::get_if<double>(&value.value())) return *print("%g", *real);
    if (const auto* const pointer = std::get_if<FormatValue::Pointer>(&value.value()))
        return pointer->description;
    return std::get<std::string>(value.value());
}

std::optional<std::string> expandOne(const Conversion& conversion, const FormatValue& value) {
    const auto* const number = std::get_if<FormatValue::Integer>(&value.value());
    const auto* const real = std::get_if<double>(&value.value());
    const auto* const pointer = std::get_if<FormatValue::Pointer>(&value.value());
    const char kind = conversion.kind;
    if (number != nullptr && contains(kSigned, kind))
        return print(conversion.head + "jd", std::intmax_t{signedOf(*number, conversion.size)});
    if (number != nullptr && contains(kUnsigned, kind))
        return print(conversion.head + "j" + kind, std::uintmax_t{unsignedOf(*number, conversion.size)});
    if (number != nullptr && kind == 'c')
        return print(conversion.head + kind, static_cast<int>(signedOf(*number, sizeof(int))));
    if (real != nullptr && contains(kReals, kind)) return print(conversion.head + kind, *real);
    if (pointer != nullptr && kind == 'p') return print(conversion.head + kind, pointer->address);
    return print(conversion.head + "s", plainText(value).c_str());
}

class Expansion {
public:
    Expansion(std::string_view format, std::span<const FormatValue> values)
        : format_(format), values_(values) {}

    std::string run() {
        std::string text;
        while (position_ < format_.size()) {
            const std::size_t start = position_;
            const std::size_t sign = std::min(format_.find('%', start), format_.size());
            text += format_.substr(start, sign - start);
            position_ = sign;
            if (sign == format_.size()) break;
            if (const std::optional<std::string> expanded = conversion())
                text += *expanded;
            else
                text += format_.substr(sign, position_ - sign);
        }
        return text;
    }

private:
    std::optional<std::string> conversion() {
        ++position_;
        Conversion found;
        while (contains(kFlags, peek()))
            found.head += take();
        if (!number(found.head)) return std::nullopt;
        if (peek() == '.') {
            found.head += take();
            if (!number(found.head)) return std::nullopt;
        }
        while (contains(kLengths, peek()))
            if (take() == 'h') found.size = found.size > 2 ? 2 : 1;
        found.kind = take();
        if (found.kind == '%') return "%";
        constexpr std::string_view kOthers = "csp@";
        const bool isKnown = contains(kSigned, found.kind) || contains(kUnsigned, found.kind) ||
                             contains(kReals, found.kind) || contains(kOthers, found.kind);
        if (!isKnown || values_.empty()) return std::nullopt;
        return expandOne(found, nextValue());
    }

    // A width or precision; without digits there is none.
    bool number(std::string& head) {
        if (peek() == '*') {
            take();
            if (values_.empty()) return false;
            const auto* const given = std::get_if<FormatValue::Integer>(&nextValue().value());
            if (given != nullptr) head += std::to_string(signedOf(*given, sizeof(int)));
            return given != nullptr;
        }
        while (std::isdigit(static_cast<unsigned char>(peek())) != 0)
            head += take();
        return true;
    }

    const FormatValue& nextValue() {
        const FormatValue& value = values_.front();
        values_ = values_.subspan(1);
        return value;
    }

    // NUL at the end, which is no part of any conversion.
    char peek() const { return position_ < format_.size() ? format_[position_] : '\0'; }
    char take() { return position_ < format_.size() ? format_[position_++] : '\0'; }

    std::string_view format_;
    std::span<const FormatValue> values_;
    std::size_t position_ = 0;
};

} // namespace

std::string classAndAddress(const std::type_info& type, const void* address) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    return "<" + std::string(name != nullptr ? name.get() : type.name()) + " " + *print("%p", address) + ">";
}

FormatValue::FormatValue(const void* address)
    : value_(Pointer{address, address != nullptr ? *print("%p", address) : "(null)"}) {}

std::string formatText(std::string_view format, std::span<const FormatValue> values) {
    return Expansion(format, values).run();
}

} // namespace platform
