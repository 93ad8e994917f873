#include "Common/PDELogging.h"
#include "Platform/SystemLog.h"
#include "Tests/Support/SystemLog.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvan {
namespace {

struct Panel {
    std::string description() const { return "the 100%d panel %@"; }
};
struct Base {
    virtual ~Base() = default;
};
struct Derived : Base {};

std::string lastLine() {
    if (logLines.empty()) return "no line";
    std::string line = logLines.back();
    logLines.clear();
    return line;
}

template <class... Arguments>
std::string logged(std::string_view format, const Arguments&... arguments) {
    _PDELog(nullptr, format, arguments...);
    return lastLine();
}

TEST(PDELogging, writesOneLineOfTagObjectAndMessage) {
    const Panel panel;
    _PDEProlog(&panel, "willShow");
    EXPECT_EQ(lastLine(), "orvan: BEGIN self(the 100%d panel %@) willShow");
    _PDEEpilog(&panel, "%s took %d of %@", "it", 3, &panel);
    EXPECT_EQ(lastLine(), "orvan: END self(the 100%d panel %@) it took 3 of the 100%d panel %@");
    _PDELog(&panel, "");
    EXPECT_EQ(lastLine(), "orvan: LOG self(the 100%d panel %@) ");
    _PDEProlog(static_cast<const Panel*>(nullptr), "");
    EXPECT_EQ(lastLine(), "orvan: BEGIN ");

    const Derived derived;
    _PDELog(static_cast<const Base*>(&derived), "x");
    EXPECT_TRUE(lastLine().starts_with("orvan: LOG self(<orvan::(anonymous namespace)::Derived 0x"));
}

TEST(PDELogging, expandsFormatsAsPrintfDoes) {
    EXPECT_EQ(logged("%d items of %-6s|%5.1f%%", 3, "A4", 12.25), "orvan: LOG 3 items of A4    | 12.2%");
    EXPECT_EQ(logged("%x %X %o %#x", -1, std::uint8_t{255}, 8, 16L), "orvan: LOG ffffffff FF 10 0x10");
    EXPECT_EQ(logged("%hhd %hu %c %c", 300, 65537, 'o', 0x6B), "orvan: LOG 44 1 o k");
    EXPECT_EQ(logged("%lld %zu", std::numeric_limits<std::int64_t>::min(), std::size_t{7}),
        "orvan: LOG -9223372036854775808 7");
    EXPECT_EQ(logged("%*d|%-*s|%.*s", 4, 7, 3, "a", 2, std::string("abc")), "orvan: LOG    7|a  |ab");
    EXPECT_EQ(
        logged("%2$d of %1$s, %1$-3s|%3$*2$s|%2$.1f", "A4", 5, "x", 0.25), "orvan: LOG 5 of A4, A4 |    x|5");
    EXPECT_EQ(logged("%2$s %s %.s|%.*s", "a", "b", -1, "c"), "orvan: LOG b a |c");
    EXPECT_EQ(logged("%@ %@ %@ %p", 5, 0.5, std::string_view("text"), static_cast<const void*>(nullptr)),
        "orvan: LOG 5 0.5 text (nil)");
}

TEST(PDELogging, keepsALineOneLine) {
    platform::systemLog(std::string("a\nb\0c\x1B[2J\xC2\x9B", 11));
    EXPECT_EQ(lastLine(), "orvan: a b c [2J ");
    EXPECT_EQ(logged("it ends\n"), "orvan: LOG it ends");
    EXPECT_EQ(logged("a\nb\r\n\tc\n\n"), "orvan: LOG a\\nb\\r\\n\\tc");
    EXPECT_EQ(logged(std::string("a\0b\n%s %4@ %c", 13), std::string("c\0d", 3), std::string("\0e", 2), '\0'),
        "orvan: LOG a\\0b\\nc\\0d   \\0e \\0");
}

TEST(PDELogging, survivesFormatsThatDoNotFitTheirArguments) {
    EXPECT_EQ(logged("%d %s %d", "three", 3), "orvan: LOG three 3 %d");
    EXPECT_EQ(logged("%s %@", static_cast<const char*>(nullptr), static_cast<const Panel*>(nullptr)),
        "orvan: LOG (null) (null)");
    EXPECT_EQ(logged("%n %k %", 1), "orvan: LOG %n %k %");
    EXPECT_EQ(logged("%*", 1), "orvan: LOG %*");
    EXPECT_EQ(logged("%0$d %2$d %1$k %99999999999d %99999999999$d", 1),
        "orvan: LOG %0$d %2$d %1$k %99999999999d %99999999999$d");
    EXPECT_EQ(logged("%*d %d", "n", 5), "orvan: LOG %*d 5");
}

} // namespace
} // namespace orvan
