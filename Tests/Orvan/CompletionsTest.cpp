// What the shells complete, in shells on terminals of their own.
#include "OrvanPaperOptions/Source/OptionRows.h"
#include "Tests/Orvan/Program.h"
#include "Tests/Support/CommandQueue.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace orvan {
namespace {

// A key that puts all that there is to complete onto the line.
constexpr const char* kAll = "\033*";

struct Shell {
    const char* name;
    const char* program;
    const char* command; // starts it with what is in $START
    const char* startFile;
    const char* start;
};
constexpr const char* kCommonStart = R"(
PS1=''
cd "$FILES"
orvan() { printf '%s\t' "$@" >>"$ANSWERS"; echo >>"$ANSWERS"; }
)";
constexpr Shell kShells[] = {
    {"bash", "/bin/bash", "/bin/bash --noprofile --rcfile $START/bashrc -i", "bashrc", R"(
set -u
HISTFILE=/dev/null
source "$COMPLETIONS/orvan"
before=''; before=$(compgen -v)
leaks() { orvan $(compgen -v | grep '^[a-z_]' | grep -vxF "$before"); }
)"},
    {"zsh", "/bin/zsh", "/bin/zsh -d -i", ".zshrc", R"(
fpath=("$COMPLETIONS" $fpath)
autoload -Uz compinit
compinit -u -D
all() { _main_complete; compstate[insert]=all; }
zle -C all complete-word all
bindkey '\e*' all
before=''; before=(${(k)parameters})
leaks() { orvan ${${(Mk)parameters:#[a-z]*}:|before}; }
)"},
};

struct Line {
    std::string keys;
    Words arguments; // that the command gets
};

void PrintTo(const Shell& shell, std::ostream* out) {
    *out << shell.name;
}

Words sorted(Words words) {
    std::ranges::sort(words);
    return words;
}

Words split(const std::string& text, char separator) {
    Words pieces;
    std::istringstream stream(text);
    for (std::string piece; std::getline(stream, piece, separator);)
        if (!piece.empty()) pieces.push_back(piece);
    return pieces;
}

std::string firstWord(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    return word;
}

// "-q,--queue" begins a line.
Words optionsIn(const std::string& help) {
    Words options;
    for (const std::string& line : split(help, '\n'))
        if (const std::string word = firstWord(line); line.starts_with(' ') && word.starts_with('-'))
            options = joined(options, split(word, ','));
    return options;
}

// Those that follow their heading, to the first empty line.
Words commandsIn(const std::string& help) {
    const std::string heading = "\nCommands:\n";
    const std::size_t start = help.find(heading);
    if (start == std::string::npos) return {};
    const std::string list = help.substr(start + heading.size());
    Words commands;
    for (const std::string& line : split(list.substr(0, list.find("\n\n")), '\n'))
        if (line.size() > 2 && line[2] != ' ') commands.push_back(firstWord(line));
    return commands;
}

class Completions : public CommandQueue, public testing::WithParamInterface<Shell> {
protected:
    void SetUp() override {
        if (!std::filesystem::exists(GetParam().program)) GTEST_SKIP() << GetParam().name << " is not there";
        CommandQueue::SetUp();
        for (const char* const file : {"one.ppd", "two words.ppd", "Info.plist", "folder/three.ppd"})
            files_.write(file, "");
    }

    // Types the lines, and compares what `orvan` is given as arguments, in whatever order.
    void expect(const std::vector<Line>& lines, const Environment& more = {}) const {
        const TempFolder folder;
        folder.write(GetParam().startFile, std::string(kCommonStart) + GetParam().start);
        std::string keys;
        for (const Line& line : lines)
            keys += line.keys + '\n';
        Environment variables{{"START", folder.path()}, {"ZDOTDIR", folder.path()}, {"TERM", "xterm"},
            {"KEYS", folder.write("keys", keys)}, {"ANSWERS", folder.path() / "answers"},
            {"FILES", files_.path()}, {"COMPLETIONS", ORVAN_COMPLETIONS_FOLDER},
            {"COMMAND", GetParam().command}};
        variables.insert(more.begin(), more.end());
        const ProgramEnd end =
            run({"/bin/sh", "-c", R"(/usr/bin/script -qec "$COMMAND" /dev/null <"$KEYS")"}, variables);
        // Nothing complains.
        EXPECT_EQ(end.output.find(": "), std::string::npos) << end.output;

        std::istringstream answers(contents(folder.path() / "answers"));
        for (const Line& line : lines) {
            std::string answer;
            std::getline(answers, answer);
            EXPECT_EQ(sorted(split(answer, '\t')), sorted(line.arguments)) << line.keys;
        }
    }

    // The lines that ask for the options and commands behind these words; expects what `orvan` itself says.
    void askForAllBehind(const Words& words, std::vector<Line>& lines) const {
        const std::string help = orvan(joined(words, {"--help"})).output;
        std::string line = "orvan ";
        for (const std::string& word : words)
            line += word + ' ';
        lines.push_back({line + '-' + kAll, joined(words, optionsIn(help))});
        const Words commands = commandsIn(help);
        if (commands.empty()) return;
        lines.push_back({line + kAll, joined(words, commands)});
        for (const std::string& command : commands)
            askForAllBehind(joined(words, {command}), lines);
    }

    TempFolder files_;
};

TEST_P(Completions, KnowAllCommandsAndOptions) {
    std::vector<Line> lines;
    askForAllBehind({}, lines);
    ASSERT_GE(lines.size(), 15U);
    expect(lines);
}

TEST_P(Completions, KnowWhatStandsWhere) {
    const std::string all = kAll;
    Words keywords;
    for (const OptionRowSpec& row : kOptionRows)
        keywords.push_back(std::string(row.keyword) + '=');
    expect({
        {"orvan st\t", {"status"}},
        {"orvan chunks d\tname --ppd fol\tth\t", {"chunks", "decode", "name", "--ppd", "folder/three.ppd"}},
        {"orvan panel --ppd " + all, {"panel", "--ppd", "folder", "one.ppd", "two words.ppd"}},
        {"orvan check --json tw\t", {"check", "--json", "two words.ppd"}},
        {"orvan check one.ppd --j\t", {"check", "one.ppd", "--json"}},
        {"orvan plist " + all, {"plist", "Info.plist", "folder", "one.ppd", "two words.ppd"}},
        {"orvan panel --response=In\t", {"panel", "--response=Info.plist"}},
        {"orvan panel --set " + all, joined({"panel", "--set"}, keywords)},
        {"orvan panel --set Med\tPlain", {"panel", "--set", "MediaType=Plain"}},
        {"orvan panel --set=Sli\tNone", {"panel", "--set=Slipsheet=None"}},
        {"orvan panel --set MediaType=" + all, {"panel", "--set", "MediaType="}},
        {"orvan status --watch " + all, {"status", "--watch"}},
        {"orvan ticket --snmp 1.3=" + all, {"ticket", "--snmp", "1.3="}},
        {"orvan fetch --user " + all, {"fetch", "--user"}},
        {"orvan fetch http://" + all, {"fetch", "http://"}},
        {"orvan nonsense " + all, {"nonsense"}},
        {"leaks", {}},
    });
}

TEST_P(Completions, KnowTheSchedulersQueues) {
    const Words queues{"Lager", "Office", "Pay$HOME"};
    for (const std::string& name : queues)
        ASSERT_EQ(system_->addQueue({.name = name, .ppdFile = ORVAN_DRIVER_PPD}), std::nullopt);
    expect({
        {std::string("orvan status -q ") + kAll, joined({"status", "-q"}, queues)},
        {"orvan url --queue=Of\t", {"url", "--queue=Office"}},
        {"orvan papers -qLa\t", {"papers", "-qLager"}},
        {"orvan doctor -q Pa\t", {"doctor", "-q", "Pay$HOME"}},
    });
    const Environment elsewhere{{"CUPS_SERVER", "/nowhere"}};
    const std::string server = files_.path() / "there:631";
    std::filesystem::create_symlink(system_->folder().socket(), server);
    expect(
        {{"orvan doctor -H " + server + " -q Of\t", {"doctor", "-H", server, "-q", "Office"}},
            {"orvan panel --server=" + server + " -q Of\t", {"panel", "--server=" + server, "-q", "Office"}},
            {"orvan panel -q Of\t", {"panel", "-q", "Of"}}},
        elsewhere);
}

TEST_P(Completions, WaitForNoScheduler) {
    ASSERT_EQ(system_->addQueue({.name = "Office", .ppdFile = ORVAN_DRIVER_PPD}), std::nullopt);
    const std::vector<Line> lines{{"orvan status -q Of\t", {"status", "-q", "Of"}}};
    system_->scheduler().suspend();
    expect(lines);
    system_->scheduler().kill();
    expect(lines);
    expect({{"PATH=/nowhere\norvan status -q Of\t", {"status", "-q", "Of"}}});
}

INSTANTIATE_TEST_SUITE_P(Shells, Completions, testing::ValuesIn(kShells),
    [](const testing::TestParamInfo<Shell>& shell) { return shell.param.name; });

} // namespace
} // namespace orvan
