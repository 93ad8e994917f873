// The presets on the tab: a menu among the rows, and below the line a place to name, rename and delete them.
#pragma once

#include "Platform/Controls.h"
#include "PrintDialog/Host/Mnemonics.h"
#include "PrintDialog/Host/PresetStore.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvan {

// One thread. A tab without presets has none of these.
class PresetMenu {
public:
    struct Actions {
        // The person chose this preset, which may have no name (the defaults, what was used last).
        std::function<void(const Preset& preset)> chosen;
        // What is marked now, for a preset of that name.
        std::function<Preset(const std::string& name)> current;
        // What could not be done, for people.
        std::function<void(const std::string& problem)> refused;
        // The views have changed; this one wants the keyboard if it is not null.
        std::function<void(const platform::View* view)> changed;
    };
    // `language`: of the texts. `defaults`: what the first entry chooses.
    PresetMenu(PresetStore store, Preset defaults, std::string language, Actions actions);
    PresetMenu(const PresetMenu&) = delete;
    PresetMenu& operator=(const PresetMenu&) = delete;

    const PresetStore& store() const { return store_; }
    const PresetStore::Listing& listing() const { return listing_; }
    const std::shared_ptr<platform::Menu>& menu() const { return menu_; }
    // Hidden unless a person names or deletes one.
    const std::shared_ptr<platform::Stack>& editor() const { return editor_; }
    bool isEditing() const { return !editor_->isHidden(); }

    // Titles, with letters; before the first showing.
    void setTitles(Mnemonics& mnemonics);
    // Reads what there is anew.
    void reload();
    // What the menu calls it.
    std::string titleOf(const Preset& preset) const;
    // The preset was applied, and these choices came of it.
    void applied(const Preset& preset, const std::map<std::string, std::string>& marks);
    // Shows which preset the marked choices are.
    void update(const std::map<std::string, std::string>& marks);

private:
    enum class Doing { nothing, defaults, lastUsed, named, saveAs, rename, remove };
    struct Entry {
        Doing doing = Doing::nothing;
        std::string name; // of the preset
    };

    std::string text(const std::string& key, const std::vector<std::string>& values = {}) const;
    void fill();
    void addEntry(Entry entry, std::string title, std::vector<platform::MenuEntry>& entries);
    void addLine(std::vector<platform::MenuEntry>& entries);
    Entry shownEntry() const;
    void pick(std::size_t index);
    void edit(Entry entry);
    void updateButton();
    void finish();
    void leave();

    PresetStore store_;
    Preset defaults_;
    std::string language_;
    Actions actions_;
    PresetStore::Listing listing_;
    std::map<std::string, std::string> marks_;
    Entry applied_; // what was chosen last, if that is still marked
    std::map<std::string, std::string> appliedMarks_;
    Entry edited_;               // what the editor is for
    std::vector<Entry> entries_; // of the menu
    std::shared_ptr<platform::Menu> menu_;
    std::shared_ptr<platform::Stack> editor_;
    std::shared_ptr<platform::TextField> question_;
    std::shared_ptr<platform::TextEntry> name_;
    std::shared_ptr<platform::Button> button_;
    std::shared_ptr<platform::Button> cancel_;
};

} // namespace orvan
