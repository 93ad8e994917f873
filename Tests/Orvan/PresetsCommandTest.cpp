// orvan presets, with a scheduler.
#include "PrintDialog/Host/PresetStore.h"
#include "Tests/Support/CommandQueue.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

class PresetsCommand : public CommandQueue {
protected:
    void SetUp() override {
        CommandQueue::SetUp();
        if (!IsSkipped() && !HasFatalFailure()) addQueue("Office", DerivedPPD());
    }

    void addQueue(const std::string& name, const DerivedPPD& ppd) const {
        ASSERT_EQ(
            system_->addQueue({.name = name, .ppdFile = ppd.file(), .deviceURI = "socket://127.0.0.1:9"}),
            std::nullopt);
    }

    Environment settings() const {
        return {
            {"XDG_CONFIG_HOME", home_.path().string()}, {"XDG_CONFIG_DIRS", administrator_.path().string()}};
    }
    ProgramEnd command(const Words& words) const { return CommandQueue::orvan(words, settings()); }
    ProgramEnd presets(Words words, const std::string& queue = "Office") const {
        words.insert(words.begin(), {"presets", "-q", queue});
        return command(words);
    }
    ProgramEnd panel(Words words) const {
        words.insert(words.begin(), {"panel", "--release", "10.10"}); // nobody is asked
        return command(words);
    }
    // The names, a line each.
    std::string list(const std::string& queue = "Office") const {
        const ProgramEnd end = presets({"list"}, queue);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
        return end.output;
    }
    void save(const std::string& name, const Words& sets = {}) const {
        Words words{"save", name};
        for (const std::string& set : sets)
            words.insert(words.end(), {"--set", set});
        const ProgramEnd end = presets(words);
        EXPECT_EQ(end.exitCode, 0) << end.errors;
    }
    std::vector<fs::path> files() const {
        std::vector<fs::path> files;
        for (const auto& entry : fs::directory_iterator(home_.path() / "orvan/presets/Office"))
            files.push_back(entry.path());
        return files;
    }

    TempFolder home_;
    TempFolder administrator_;
};

TEST_F(PresetsCommand, KeepsNamedChoices) {
    save(" Größe A3, \"beidseitig\" = 2\\3 ",
        {"PageSize=A3", "Duplex=DuplexTumble", "MediaType=Transparency"});
    const std::string name = "Größe A3, \"beidseitig\" = 2\\3";
    EXPECT_EQ(list(), name + "\n");
    ASSERT_EQ(files().size(), 1U);
    struct stat file {};
    ASSERT_EQ(::stat(files()[0].c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 0777U, 0600U);

    // What contradicts is settled, and said, before it is saved: transparencies have one side.
    const Json shown = Json::parse(presets({"show", name, "--json"}).output);
    EXPECT_EQ(shown["choices"]["PageSize"], "A3");
    EXPECT_FALSE(
        shown["choices"]["Duplex"] == "DuplexTumble" && shown["choices"]["MediaType"] == "Transparency");
    EXPECT_EQ(shown["administrator"], false);
    save(name, {"MediaType=Glossy"}); // in its place
    EXPECT_EQ(presets({"show", name}).output.find("PageSize"), std::string::npos);
    EXPECT_NE(presets({"show", name}).output.find("MediaType=Glossy\n"), std::string::npos);
    const ProgramEnd shownPanel = panel({"-q", "Office", "--preset", name, "--set", "Slipsheet=BlankAfter"});
    EXPECT_NE(shownPanel.output.find("Paper Type: [Glossy]"), std::string::npos)
        << shownPanel.output << shownPanel.errors;
    EXPECT_NE(shownPanel.output.find("Separator Page: [Blank Page After Document]"), std::string::npos)
        << shownPanel.output;
    EXPECT_EQ(presets({"delete", name}).exitCode, 0);
    EXPECT_EQ(list(), "");

    const struct {
        Words words;
        int exitCode;
        std::string says;
    } cases[] = {
        {{"delete", name}, 1, "There is no preset “" + name + "” for this printer."},
        {{"show", "x"}, 1, "There is no preset “x”"},
        {{"save", " \t"}, 1, "A preset needs a name"},
        {{"save", std::string(201, 'x')}, 1, "A preset needs a name"},
        {{"save", "a\nb"}, 1, "A preset needs a name"},
        {{"save", "x", "--set", "MediaType=Nope"}, 1, "has no such choice"},
        {{"save", "x", "--set", "Nope=Nope"}, 1, "has no such option"},
        {{"save", "x", "--set", "Nope"}, 2, "is not KEYWORD=CHOICE"},
        {{"save"}, 2, "needs the name of a preset"},
        {{"list", "--set", "A=b"}, 2, "--set is for"},
        {{"lsit"}, 2, "none of list, show, save and delete"},
    };
    for (const auto& [words, exitCode, says] : cases) {
        const ProgramEnd end = presets(words);
        EXPECT_EQ(end.exitCode, exitCode) << says;
        EXPECT_NE(end.errors.find(says), std::string::npos) << end.errors;
    }
    EXPECT_EQ(list(), "");
    EXPECT_NE(panel({"-q", "Office", "--preset", "x"}).errors.find("has no preset \"x\""), std::string::npos);
}

TEST_F(PresetsCommand, FollowThePrinterToAnotherQueue) {
    save("Photos", {"MediaType=Glossy"});
    addQueue("Annex", DerivedPPD());
    DerivedPPD other;
    addQueue("Other", other.replace("*ModelName: \"Orvan 4500\"", "*ModelName: \"Orvan 4600\""));
    ASSERT_EQ(system_->deleteQueue("Office"), std::nullopt);
    EXPECT_EQ(list("Annex"), "Photos\n");
    EXPECT_EQ(list("Other"), "") << "another printer at the same device";
    const ProgramEnd gone = presets({"list"});
    EXPECT_EQ(gone.output, "Photos\n");
    EXPECT_NE(gone.errors.find("going by the queue's name alone"), std::string::npos) << gone.errors;
    // What the driver has lost is said, and the rest applies.
    DerivedPPD lesser;
    lesser.removeOptions({"Slipsheet"}).replace("*MediaType Glossy/Glossy: ", "*MediaType Gloss/Gloss: ");
    addQueue("Annex", lesser);
    const ProgramEnd shownPanel = panel({"-q", "Annex", "--preset", "Photos"});
    EXPECT_EQ(shownPanel.exitCode, 0);
    EXPECT_NE(shownPanel.errors.find("This queue’s driver has no choice “Glossy” of Paper Type any more. "
                                     "This queue’s driver has no option Slipsheet any more."),
        std::string::npos)
        << shownPanel.errors;
    EXPECT_EQ(presets({"save", "Photos"}, "Annex").exitCode, 0); // there are two files now
    EXPECT_EQ(presets({"delete", "Photos"}, "Annex").exitCode, 0);
    EXPECT_EQ(list("Annex"), "");
}

TEST_F(PresetsCommand, OfTheAdministratorStay) {
    const char* const kHouse = "[Preset]\nName=House\n[Choices]\nMediaType=Bond\n";
    administrator_.write("orvan/presets/house.conf", kHouse);
    administrator_.write("orvan/presets/x/cards.conf", "[Preset]\nName=Cards\nQueue=Office\n[Choices]\n");
    administrator_.write("orvan/presets/big.conf", "[Preset]\nName=Big\nModel=Orvan 9000\n[Choices]\n");
    save("Own");
    EXPECT_EQ(list(), "Cards (the administrator's)\nHouse (the administrator's)\nOwn\n");
    for (const char* doing : {"save", "delete"}) {
        const ProgramEnd end = presets({doing, "House"});
        EXPECT_EQ(end.exitCode, 1);
        EXPECT_EQ(end.errors, "orvan: The preset “House” is the administrator’s.\n");
    }
    EXPECT_NE(panel({"-q", "Office", "--preset", "House"}).output.find("[Bond]"), std::string::npos);
    administrator_.write("orvan/paper-options.conf", "[Paper Options]\nPresets=false\n");
    EXPECT_NE(presets({"list"}).errors.find("presets are switched off"), std::string::npos);
    EXPECT_EQ(panel({"-q", "Office"}).output.find("Preset:"), std::string::npos);
}

TEST_F(PresetsCommand, LoseNothing) {
    {
        std::vector<std::unique_ptr<BackgroundProcess>> writers;
        const auto prepare = [this] {
            changeEnvironment(environment());
            changeEnvironment(settings());
        };
        for (int writer = 0; writer < 20; ++writer) {
            // Every second one writes what its neighbour writes.
            const std::string name = "Preset " + std::to_string(writer / 2 + 10);
            writers.push_back(std::make_unique<BackgroundProcess>(
                Words{ORVAN_PROGRAM, "presets", "-q", "Office", "save", name, "--set",
                    writer % 2 == 0 ? "MediaType=Bond" : "MediaType=Glossy"},
                prepare));
        }
        for (const auto& writer : writers)
            EXPECT_EQ(writer->end(0), 0) << "waited for, with no signal";
    }
    EXPECT_EQ(files().size(), 10U) << "and nothing half written beside them";
    for (int preset = 10; preset < 20; ++preset) {
        const std::string shown = presets({"show", "Preset " + std::to_string(preset)}).output;
        EXPECT_TRUE(shown.ends_with("Slipsheet=None\n")) << shown;
    }

    // What is no preset is said, and left alone, also by whoever saves one of that name.
    const fs::path damaged = files()[0];
    const std::string text = contents(damaged);
    const std::string name = text.substr(text.find("Preset 1"), std::string("Preset 10").size());
    home_.write(damaged, "no preset");
    const ProgramEnd damagedList = presets({"list"});
    EXPECT_NE(
        damagedList.errors.find(damaged.string() + " cannot be read and is left alone"), std::string::npos);
    EXPECT_EQ(std::ranges::count(damagedList.output, '\n'), 9);
    EXPECT_NE(presets({"save", name}).errors.find("is there and cannot be read: " + damaged.string()),
        std::string::npos);
    EXPECT_EQ(contents(damaged), "no preset");
    home_.write(damaged, text);

    // At most a hundred.
    for (int preset = 10; preset < 100; ++preset)
        home_.write(damaged.parent_path() / (std::to_string(preset) + ".conf"),
            "[Preset]\nQueue=Office\nName=Copy " + std::to_string(preset) + "\n[Choices]\n");
    EXPECT_NE(presets({"save", "One more"}).errors.find("There are 100 presets"), std::string::npos);
    save("Preset 10"); // is there
    save("Copy 10", {"MediaType=Bond"});
    EXPECT_NE(presets({"show", "Copy 10"}).output.find("MediaType=Bond"), std::string::npos)
        << "in the file that somebody named";
}

// However a scheduler names it.
TEST_F(PresetsCommand, StayInTheirFolder) {
    const fs::path home = home_.path() / "a/b/c";
    const std::string left = inChild({{"XDG_CONFIG_HOME", home.string()}}, [] {
        for (const char* queue : {"../../../../up", "..", ".", "/etc", "a/../../../b"}) {
            const PresetStore store(PresetPrinter{.queue = queue, .model = {}, .device = {}});
            if (store.save(Preset{.name = "P", .printer = {}, .choices = {}, .paper = {}}).kind !=
                    PresetProblem::Kind::none ||
                store.list().find("P") == nullptr)
                return std::string(queue);
        }
        return std::string();
    });
    EXPECT_EQ(left, "");
    const auto below = [](const fs::path& folder) {
        return std::distance(fs::directory_iterator(folder), fs::directory_iterator());
    };
    EXPECT_EQ(below(home_.path()), 1);
    EXPECT_EQ(below(home), 1);
    EXPECT_EQ(below(home / "orvan/presets"), 5);
}

// On a file system of its own that is as small as can be.
TEST_F(PresetsCommand, AreWholeOnAFullDisk) {
    const std::string disk = home_.path().string();
    const auto script = [&](const std::string& commands) {
        return run(
            {"/usr/bin/unshare", "--map-root-user", "--mount", "/bin/sh", "-c",
                "mount -t tmpfs -o size=8k tmpfs " + disk + " || exit 77\n" + commands, "sh", ORVAN_PROGRAM},
            settings());
    };
    if (script("").exitCode != 0) GTEST_SKIP() << "file systems of one's own are not permitted here";
    const ProgramEnd end = script("$1 presets -q Office save A --set MediaType=Bond\n"
                                  "dd if=/dev/zero of=" +
                                  disk +
                                  "/rest bs=4096 count=1 2>/dev/null\n"
                                  "$1 presets -q Office save A --set MediaType=Glossy; echo $?\n"
                                  "$1 presets -q Office show A | grep MediaType; ls " +
                                  disk + "/orvan/presets/Office | wc -l");
    EXPECT_EQ(end.output, "1\nMediaType=Bond\n1\n");
    EXPECT_NE(end.errors.find("The preset was not saved: "), std::string::npos) << end.errors;
    EXPECT_NE(end.errors.find("No space left on device"), std::string::npos) << end.errors;
}

} // namespace
} // namespace orvan
