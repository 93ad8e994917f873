// Text by format: the conversions of printf(3), and %@ for the description of an object.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
#include <variant>

namespace platform {

// "<orvan::Panel 0x55d0c8e2a0>"
std::string classAndAddress(const std::type_info& type, const void* address);

template <class T>
concept SelfDescribing = requires(const T& object) {
    { object.description() } -> std::convertible_to<std::string>;
};

// What the object's description() answers, or its class and address when it has none.
template <class T>
std::string descriptionOf(const T& object) {
    if constexpr (SelfDescribing<T>)
        return object.description();
    else
        return classAndAddress(typeid(object), std::addressof(object));
}

// One argument of a format: a number, a text, an object or an address. It keeps no reference to any of them.
class FormatValue {
public:
    struct Integer {
        std::uint64_t value; // sign-extended
        std::size_t size;    // bytes, at least those of an int
        bool isSigned;
    };
    struct Pointer {
        const void* address;
        std::string description;
    };
    using Value = std::variant<Integer, double, std::string, Pointer>;

    template <std::integral T>
    FormatValue(T number)
        : value_(Integer{static_cast<std::uint64_t>(number), sizeof(number + 0), std::is_signed_v<T>}) {}
    FormatValue(double number) : value_(number) {}
    FormatValue(std::string text) : value_(std::move(text)) {}
    FormatValue(std::string_view text) : value_(std::string(text)) {}
    FormatValue(const char* text) : value_(std::string(text != nullptr ? text : "(null)")) {}
    FormatValue(const void* address);
    template <class T>
    requires std::is_class_v<T> FormatValue(const T* object) : FormatValue(static_cast<const void*>(object)) {
        if (object != nullptr) std::get<Pointer>(value_).description = descriptionOf(*object);
    }

    const Value& value() const { return value_; }

private:
    Value value_;
};

// The format with its conversions replaced by the values in turn, or by those that they name ("%2$s", from
// 1). Flags, width and precision (numbers, "*" or "*2$") count; of the length modifiers only h and hh do,
// because a value knows its size. A conversion that does not fit its value's kind gives the value's plain
// text. One without a value, an unknown one and %n stand in the answer as they stand in the format.
std::string formatText(std::string_view format, std::span<const FormatValue> values);

} // namespace platform
