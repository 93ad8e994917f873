// Where presets are kept: a file for each.
//
// A person's are in orvan/presets/QUEUE of their configuration folder, an administrator's in orvan/presets of
// the folders XDG_CONFIG_DIRS (/etc/xdg), in a folder of a queue or for all. A file is a key file: the group
// "Preset" with "Name" and, of the printer that it was saved for, "Queue", "Model" and "Device" (an
// administrator's may leave them out), and "Paper"; and the group "Choices" with a key for each option. A
// file is written whole or not at all, by a new file and a rename, of mode 0600. Nothing is locked: two
// programs that write at once write different files, or one after the other the same.
#pragma once

#include "PrintDialog/Host/Preset.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// Why something was not done to a preset.
struct PresetProblem {
    enum class Kind { none, noName, tooMany, fixed, unreadable, missing, notSaved, notRemoved };
    Kind kind = Kind::none;
    std::string detail; // the preset's name, a file, or the system's reason
    // For people, in a language of the host's.
    std::string text(const std::string& language) const;
};

class PresetStore {
public:
    // Of a person's for a queue. Programs that save at the same moment may go beyond.
    static constexpr std::size_t kMostPresets = 100;
    static constexpr std::size_t kLongestName = 200; // bytes

    explicit PresetStore(PresetPrinter printer) : printer_(std::move(printer)) {}
    const PresetPrinter& printer() const { return printer_; }

    struct Listed {
        Preset preset;
        bool isFixed = false;                     // the administrator's
        std::vector<std::filesystem::path> files; // the one that counts first; of the person's
    };
    struct Listing {
        std::vector<Listed>
            presets; // by name; of two with one name the administrator's, else the queue's own
        std::optional<Preset> lastUsed;
        std::vector<std::filesystem::path> unreadable; // which are left alone

        // Null for none.
        const Listed* find(const std::string& name) const;
    };
    Listing list() const;

    // The name that is kept of what a person has typed: without white space around it.
    static std::string nameIn(const std::string& typed);

    // Saves a preset, in the place of one with the same name.
    PresetProblem save(Preset preset) const;
    PresetProblem rename(const std::string& from, const std::string& to) const;
    PresetProblem remove(const std::string& name) const;
    // What was printed with; it has no name, and is not counted.
    PresetProblem rememberLastUsed(Preset preset) const;

private:
    std::filesystem::path folder() const;
    std::filesystem::path fileOf(const std::string& name) const;
    // Why no preset of that name may be written.
    PresetProblem problemWith(const std::string& name, const Listing& listing) const;
    PresetProblem write(const Preset& preset, const std::filesystem::path& file) const;

    PresetPrinter printer_;
};

} // namespace orvan
