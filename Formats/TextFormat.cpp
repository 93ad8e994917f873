#include "Formats/TextFormat.h"

#include <cxxabi.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <system_error>

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

struct Conversion {
    std::string flags;
    std::optional<int> width;                 // a negative one is for the left side
    std::optional<int> precision;             // a negative one is none
    std::size_t size = sizeof(std::uint64_t); // bytes that the length modifier leaves
    char kind = '\0';
};

// As far as printf's own work goes.
std::string headOf(const Conversion& conversion) {
    std::string head = "%" + conversion.flags;
    if (conversion.width) head += std::to_string(*conversion.width);
    if (conversion.precision && *conversion.precision >= 0)
        head.append(".").append(std::to_string(*conversion.precision));
    return head;
}

// What printf does with %s, for a text that may have a NUL in it.
std::string fitted(const Conversion& conversion, std::string text) {
    const int precision = conversion.precision.value_or(-1);
    if (precision >= 0) text.resize(std::min(text.size(), static_cast<std::size_t>(precision)));
    const std::int64_t width = conversion.width.value_or(0);
    const auto least = static_cast<std::size_t>(std::abs(width));
    if (text.size() >= least) return text;
    const bool isLeft = width < 0 || contains(conversion.flags, '-');
    return text.insert(isLeft ? text.size() : 0, least - text.size(), ' ');
}

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
    const std::string head = headOf(conversion);
    if (number != nullptr && contains(kSigned, kind))
        return print(head + "jd", std::intmax_t{signedOf(*number, conversion.size)});
    if (number != nullptr && contains(kUnsigned, kind))
        return print(head + "j" + kind, std::uintmax_t{unsignedOf(*number, conversion.size)});
    if (number != nullptr && kind == 'c')
        return fitted(conversion, std::string(1, static_cast<char>(signedOf(*number, sizeof(int)))));
    if (real != nullptr && contains(kReals, kind)) return print(head + kind, *real);
    if (pointer != nullptr && kind == 'p') return print(head + kind, pointer->address);
    return fitted(conversion, plainText(value));
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
        const std::optional<int> place = placeOfValue();
        while (contains(kFlags, peek()))
            found.flags += take();
        if (!readNumber(found.width)) return std::nullopt;
        if (peek() == '.') {
            take();
            if (!readNumber(found.precision)) return std::nullopt;
            if (!found.precision) found.precision = 0;
        }
        while (contains(kLengths, peek()))
            if (take() == 'h') found.size = found.size > 2 ? 2 : 1;
        found.kind = take();
        if (found.kind == '%') return "%";
        constexpr std::string_view kOthers = "csp@";
        const bool isKnown = contains(kSigned, found.kind) || contains(kUnsigned, found.kind) ||
                             contains(kReals, found.kind) || contains(kOthers, found.kind);
        const FormatValue* const value = isKnown ? valueAt(place) : nullptr;
        return value != nullptr ? expandOne(found, *value) : std::nullopt;
    }

    // Digits; nothing, and the position stays, when there are none.
    std::optional<int> digits() {
        int number = 0;
        const std::string_view rest = format_.substr(position_);
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
        if (error != std::errc() || number < 0) return std::nullopt;
        position_ += static_cast<std::size_t>(end - rest.data());
        return number;
    }

    // The "2$" of a conversion that names its value; nothing, and the position stays, for others.
    std::optional<int> placeOfValue() {
        const std::size_t start = position_;
        const std::optional<int> place = digits();
        if (place && peek() == '$') {
            take();
            return place;
        }
        position_ = start;
        return std::nullopt;
    }

    // A width or precision; without digits there is none. False when it wants a value that does not fit.
    bool readNumber(std::optional<int>& number) {
        if (peek() != '*') {
            number = digits();
            return true;
        }
        take();
        const FormatValue* const value = valueAt(placeOfValue());
        const auto* const given =
            value != nullptr ? std::get_if<FormatValue::Integer>(&value->value()) : nullptr;
        if (given != nullptr) number = static_cast<int>(signedOf(*given, sizeof(int)));
        return given != nullptr;
    }

    // The next one unless the place is given, which counts from 1; null when there is none.
    const FormatValue* valueAt(std::optional<int> place) {
        const std::size_t index = place ? static_cast<std::size_t>(*place) - 1 : next_++;
        return index < values_.size() ? &values_[index] : nullptr;
    }

    // NUL at the end, which is no part of any conversion.
    char peek() const { return position_ < format_.size() ? format_[position_] : '\0'; }
    char take() { return position_ < format_.size() ? format_[position_++] : '\0'; }

    std::string_view format_;
    std::span<const FormatValue> values_;
    std::size_t position_ = 0;
    std::size_t next_ = 0; // of the values
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
