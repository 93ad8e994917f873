// Where lines end: on terminals, and nowhere else.
#include "Orvan/Wrapping.h"

#include "Tests/Orvan/Program.h"
#include "Tests/Support/Terminal.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace orvan {
namespace {

TEST(Wrapping, HangsInTheColumnsOfTheText) {
    const struct {
        const char* text;
        std::size_t width;
        std::size_t indent;
        std::size_t used;
        const char* lines;
    } cases[] = {
        {"one two three", 0, 4, 0, "one two three"},
        {"one two three", 7, 2, 0, "one two\n  three"},
        {"one two three", 8, 2, 4, "one\n  two\n  three"},
        {"one two", 4, 9, 0, "one\n  two"}, // no more than half
        {"two /a/long/path", 8, 2, 0, "two\n  /a/long/path"},
        {"/a/long/path", 8, 2, 0, "/a/long/path"},
        {"/a/long/path", 8, 2, 8, "\n  /a/long/path"},
        {"größe größe", 11, 2, 0, "größe größe"},
        {"事務所 事務所", 12, 2, 0, "事務所\n  事務所"},
        {"事務所 事務所", 13, 2, 0, "事務所 事務所"},
        {"e\u0301e\u0301 e\u0301e\u0301", 5, 2, 0, "e\u0301e\u0301 e\u0301e\u0301"},
        {"\033[31mred\033[m red", 7, 2, 0, "\033[31mred\033[m red"},
        {"\377\377 \377\377", 4, 2, 0, "\377\377\n  \377\377"},
    };
    for (const auto& [text, width, indent, used, lines] : cases)
        EXPECT_EQ(wrapped(text, width, indent, used), lines) << text;
    EXPECT_EQ(prefixOfColumns("事務所", 5), "事務");
    EXPECT_EQ(columnsOf("事e\u0301\033[1m"), 3U);
}

std::size_t widestOf(const std::string& shown) {
    std::istringstream lines(shown);
    std::size_t widest = 0;
    for (std::string line; std::getline(lines, line);)
        widest = std::max(widest, columnsOf(line.substr(0, line.find('\r'))));
    return widest;
}

TEST(Wrapping, FitsTheTerminal) {
    const Words commands[] = {{"--help"}, {"panel", "--help"}, {"chunks", "decode", "--help"},
        {"doctor", "--help"}, {"status", "-H", "localhost:1"}, {"status", "--timeout", "soon", "--all"}};
    for (const Words& command : commands) {
        SCOPED_TRACE(testing::PrintToString(command));
        const ProgramEnd piped =
            runProgram(joined({ORVAN_PROGRAM}, command), {{"COLUMNS", "40"}, {"LC_ALL", "C.UTF-8"}});
        const std::string whole = piped.output + piped.errors;
        for (const auto& [columns, widest] :
            {std::pair{"20", 40U}, {"40", 40U}, {"63", 63U}, {"many", 80U}}) {
            Terminal terminal(joined({ORVAN_PROGRAM}, command),
                {{"COLUMNS", columns}, {"TERM", "xterm"}, {"LC_ALL", "C.UTF-8"}});
            const std::string shown = terminal.shownUntilEnd();
            EXPECT_LE(widestOf(shown), widest) << shown;
            std::istringstream first(whole);
            std::istringstream second(shown);
            for (std::string word; first >> word;) { // nothing is lost
                std::string same;
                second >> same;
                EXPECT_EQ(same, word);
            }
        }
    }
}

TEST(Wrapping, LeavesPipesWhole) {
    const ProgramEnd end = runProgram({ORVAN_PROGRAM, "chunks", "decode", "--help"}, {{"COLUMNS", "40"}});
    EXPECT_GT(widestOf(end.output), 80U);
    const ProgramEnd wrong = runProgram({ORVAN_PROGRAM, "status", "--timeout", "soon"}, {{"COLUMNS", "40"}});
    EXPECT_EQ(std::ranges::count(wrong.errors, '\n'), 1) << wrong.errors;
}

} // namespace
} // namespace orvan
