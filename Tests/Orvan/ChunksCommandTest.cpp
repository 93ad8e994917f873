// `orvan chunks` where the chunks are not whole, or could not be read back.
#include "Tests/Orvan/Program.h"
#include "Tests/Support/DerivedPPD.h"

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace orvan {
namespace {

ProgramEnd shell(const std::string& line, const TempFolder& files) {
    return runProgram({"/bin/sh", "-c", line}, {{"ORVAN", ORVAN_PROGRAM}, {"FILES", files.path()}});
}

// The entries of a block with six chunks, the terminator among them.
Words entriesOfBlock(const TempFolder& files, std::string& block) {
    unsigned number = 1;
    for (int i = 0; i < 700; ++i)
        block += static_cast<char>((number = number * 1103515245U + 12345U) >> 16U); // does not get smaller
    files.write("block", block);
    std::istringstream words(shell("\"$ORVAN\" chunks encode N <$FILES/block", files).output);
    Words entries;
    for (std::string word; words >> word;)
        if (word != "PPD:") entries.push_back(word);
    return entries;
}

TEST(ChunksCommand, SaysWhatIsWrongWithAnAnswer) {
    const TempFolder files;
    std::string block;
    const Words whole = entriesOfBlock(files, block);
    ASSERT_EQ(whole.size(), 6U);
    const auto with = [&whole](const std::vector<int>& numbers, const std::string& more = "") {
        std::string line = "PPD:";
        for (const int number : numbers)
            line += ' ' + whole[static_cast<std::size_t>(number)];
        return line + more + '\n';
    };
    const std::tuple<std::string, int, const char*> cases[] = {
        {with({0, 1, 2, 3, 4, 5}), 0, ""},
        {with({0, 1, 2, 3, 4}), 0, ""}, // nothing of the block is missing
        {with({0, 1, 3, 4, 5}), 1, " have a gap: N0002 is missing, while N0003 is there; what could be read"},
        {with({0, 1, 5}), 1, " have a gap: N0002 is missing, while N0005 is there"},
        {with({0, 1, 2}), 1, " have no end: N0003 is missing"},
        {with({0, 1}, " N0002=\"\""), 1, " end with N0002, before the block does"},
        // Of the right length, so that only the check at the end tells.
        {with({0, 1}, " N0002=" + std::string(211, 'A') + ' ' + whole[3] + ' ' + whole[4]), 1,
            " are damaged, which shows at N0004; what could be read was written"},
        {"PPD: N0000=AAAA " + whole[1] + " N0002=\"\"\n", 1, " are damaged, which shows at N0000"},
        {with({1, 2}), 1, "there are no chunks of N in "},
        {"PPD: N0000=\"\"\n", 0, ""},
    };
    for (const auto& [lines, exitCode, words] : cases) {
        SCOPED_TRACE(lines);
        files.write("lines", lines);
        DerivedPPD ppd;
        ppd.addEntries(lines);
        for (const std::string& end : {std::string("<$FILES/lines"), "--ppd " + ppd.file().string()}) {
            const ProgramEnd decoded = shell("\"$ORVAN\" chunks decode N " + end, files);
            EXPECT_EQ(block.substr(0, std::min<std::size_t>(decoded.output.size(), 280)),
                decoded.output.substr(0, 280)); // what two chunks have
            if (exitCode == 0) {
                EXPECT_EQ(decoded.output.size(), lines.size() < 20 ? 0 : block.size());
            }
            expectEnd(decoded, exitCode, decoded.output, words);
            if (std::string(words).starts_with(" have")) {
                EXPECT_GT(decoded.output.size(), 0U);
            }
        }
    }
}

// What encode takes comes back by both ways, and the rest is refused.
TEST(ChunksCommand, TakesNamesThatCanBeRead) {
    const TempFolder files;
    files.write("block", "block");
    Words names;
    for (char c = '!'; c <= '~'; ++c) {
        if (std::isalnum(c) != 0) continue;
        names.push_back(std::string("a") + c + "b" + c);
        names.push_back(std::string(1, c) + "c");
    }
    DerivedPPD ppd;
    Words taken;
    std::string refused;
    for (const std::string& name : names) {
        const ProgramEnd lines = runProgram({"/bin/sh", "-c", "\"$0\" chunks encode -- \"$1\" <\"$2\"",
            ORVAN_PROGRAM, name, files.path() / "block"});
        if (lines.exitCode == 0) {
            ppd.addEntries(lines.output);
            taken.push_back(name);
            const std::string file = files.write("lines", lines.output);
            const ProgramEnd piped = runProgram(
                {"/bin/sh", "-c", "\"$0\" chunks decode -- \"$1\" <\"$2\"", ORVAN_PROGRAM, name, file});
            expectEnd(piped, 0, "block");
        } else {
            expectRefusal(lines, "nothing can read chunks of the name \"" + name + "\" back: ");
            refused += name + ' ';
        }
    }
    EXPECT_EQ(refused, "a\"b\" \"c %c a/b/ /c a:b: :c a=b= =c ?c {c ");
    const std::string file = ppd.file();
    for (const std::string& name : taken)
        expectEnd(orvan({"chunks", "decode", "--ppd", file, "--", name}), 0, "block");
    for (const char* const name :
        {"", " ", "a b", "a\tb", "a\nb", "a\177", "Büro", "\377", "NNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN"})
        expectRefusal(orvan({"chunks", "encode", name}), "nothing can read chunks of the name");
}

} // namespace
} // namespace orvan
