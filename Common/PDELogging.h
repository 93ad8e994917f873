// Of the given vocabulary; nothing here calls what is here: trace lines in the system log, "BEGIN", "END" or
// "LOG", the object on whose behalf the line is written
// ("self(...)") when there is one, and the message.
//
// The object is a pointer to one of any class, or null. Format and arguments are those of
// Formats/TextFormat.h; the object's description is plain text and takes no argument. Each call writes one
// line, always: a line feed, a NUL, a carriage return and a tabulator in it are shown as "\n", "\0", "\r" and
// "\t". Callable from any thread.
#pragma once

#include "Formats/TextFormat.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace orvan {

class LoggedObject {
public:
    LoggedObject(std::nullptr_t) {}
    template <class T>
    LoggedObject(const T* object) {
        if (object != nullptr) description_ = platform::descriptionOf(*object);
    }

    // Nothing for no object.
    const std::optional<std::string>& description() const { return description_; }

private:
    std::optional<std::string> description_;
};

void writeTraceLine(std::string_view tag, const LoggedObject& object, std::string_view format,
    std::span<const platform::FormatValue> values);

// NOLINTBEGIN(bugprone-reserved-identifier): the names that this system's developers know

// An operation begins.
template <class... Arguments>
void _PDEProlog(const LoggedObject& object, std::string_view format, const Arguments&... arguments) {
    writeTraceLine("BEGIN", object, format,
        std::array<platform::FormatValue, sizeof...(arguments)>{platform::FormatValue(arguments)...});
}

// It ends.
template <class... Arguments>
void _PDEEpilog(const LoggedObject& object, std::string_view format, const Arguments&... arguments) {
    writeTraceLine("END", object, format,
        std::array<platform::FormatValue, sizeof...(arguments)>{platform::FormatValue(arguments)...});
}

// Anything in between.
template <class... Arguments>
void _PDELog(const LoggedObject& object, std::string_view format, const Arguments&... arguments) {
    writeTraceLine("LOG", object, format,
        std::array<platform::FormatValue, sizeof...(arguments)>{platform::FormatValue(arguments)...});
}

// NOLINTEND(bugprone-reserved-identifier)

} // namespace orvan
