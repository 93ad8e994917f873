#include "PrintDialog/Host/PresetMenu.h"

#include "PrintDialog/Host/HostText.h"

#include <algorithm>
#include <utility>

namespace orvan {

using platform::MenuEntry;

PresetMenu::PresetMenu(PresetStore store, Preset defaults, std::string language, Actions actions)
    : store_(std::move(store)),
      defaults_(std::move(defaults)),
      language_(std::move(language)),
      actions_(std::move(actions)),
      listing_(store_.list()),
      menu_(std::make_shared<platform::Menu>()),
      editor_(std::make_shared<platform::Stack>(platform::Stack::Axis::horizontal)),
      question_(std::make_shared<platform::TextField>()),
      name_(std::make_shared<platform::TextEntry>()),
      button_(std::make_shared<platform::Button>()),
      cancel_(std::make_shared<platform::Button>()) {
    menu_->setAction([this](std::size_t index) { pick(index); });
    name_->setActions(
        {.edited = [this] { updateButton(); }, .ended = [this] { finish(); }, .left = [this] { leave(); }});
    button_->setAction([this] { finish(); });
    cancel_->setAction([this] { leave(); });
    cancel_->setTitle({.text = text("Cancel")});
    editor_->addSubview(question_);
    editor_->addSubview(name_);
    editor_->addSubview(button_);
    editor_->addSubview(cancel_);
    editor_->setHidden(true);
}

std::string PresetMenu::text(const std::string& key, const std::vector<std::string>& values) const {
    return hostText(language_, key, values);
}

void PresetMenu::setTitles(Mnemonics& mnemonics) {
    menu_->setTitle(mnemonics.titled(text("Preset:"), "Preset"));
}

void PresetMenu::reload() {
    listing_ = store_.list();
    fill();
}

std::string PresetMenu::titleOf(const Preset& preset) const {
    if (!preset.name.empty()) return preset.name;
    return preset.choices == defaults_.choices ? text("Defaults") : text("Last used");
}

void PresetMenu::applied(const Preset& preset, const std::map<std::string, std::string>& marks) {
    const bool isNamed = !preset.name.empty();
    applied_ = {isNamed ? Doing::named : Doing::lastUsed, preset.name};
    if (!isNamed && preset.choices == defaults_.choices) applied_.doing = Doing::defaults;
    appliedMarks_ = marks;
    update(marks);
}

void PresetMenu::update(const std::map<std::string, std::string>& marks) {
    marks_ = marks;
    fill();
}

// Which of the entries is what is marked.
PresetMenu::Entry PresetMenu::shownEntry() const {
    const bool isThere = applied_.doing != Doing::named || listing_.find(applied_.name) != nullptr;
    if (applied_.doing != Doing::nothing && isThere && marks_ == appliedMarks_) return applied_;
    const bool isDefault = std::ranges::all_of(defaults_.choices, [this](const auto& choice) {
        const auto marked = marks_.find(choice.first);
        return marked == marks_.end() || marked->second == choice.second;
    });
    return {isDefault ? Doing::defaults : Doing::nothing, ""};
}

void PresetMenu::addEntry(Entry entry, std::string title, std::vector<MenuEntry>& entries) {
    entries.push_back({.title = std::move(title), .keyword = entry.name});
    entries_.push_back(std::move(entry));
}

void PresetMenu::addLine(std::vector<MenuEntry>& entries) {
    entries.push_back({.title = {}, .keyword = {}, .enabled = false, .isLine = true});
    entries_.emplace_back();
}

void PresetMenu::fill() {
    const Entry shown = shownEntry();
    const PresetStore::Listed* const chosen =
        shown.doing == Doing::named ? listing_.find(shown.name) : nullptr;
    std::vector<MenuEntry> entries;
    entries_.clear();
    if (shown.doing == Doing::nothing) addEntry({}, text("None"), entries);
    addEntry({Doing::defaults, ""}, text("Defaults"), entries);
    if (listing_.lastUsed) addEntry({Doing::lastUsed, ""}, text("Last used"), entries);
    if (!listing_.presets.empty()) addLine(entries);
    for (const PresetStore::Listed& listed : listing_.presets)
        addEntry({Doing::named, listed.preset.name}, listed.preset.name, entries);
    addLine(entries);
    addEntry({Doing::saveAs, chosen != nullptr ? shown.name : ""}, text("Save as …"), entries);
    if (chosen != nullptr && !chosen->isFixed) {
        addEntry({Doing::rename, shown.name}, text("Rename “%1” …", {shown.name}), entries);
        addEntry({Doing::remove, shown.name}, text("Delete “%1” …", {shown.name}), entries);
    }
    const auto selected = std::ranges::find_if(entries_, [&shown, &entries, this](const Entry& entry) {
        const auto place = static_cast<std::size_t>(&entry - entries_.data());
        return entry.doing == shown.doing && entry.name == shown.name && !entries[place].isLine;
    });
    menu_->setEntries(std::move(entries), static_cast<std::size_t>(selected - entries_.begin()));
}

void PresetMenu::pick(std::size_t index) {
    const Entry entry = entries_[index];
    const PresetStore::Listed* const listed = listing_.find(entry.name);
    switch (entry.doing) {
    case Doing::nothing:
        return actions_.changed(nullptr);
    case Doing::defaults:
        return actions_.chosen(defaults_);
    case Doing::lastUsed:
        return actions_.chosen(Preset(*listing_.lastUsed));
    case Doing::named:
        return actions_.chosen(Preset(listed->preset));
    case Doing::saveAs:
    case Doing::rename:
    case Doing::remove:
        return edit(entry);
    }
}

void PresetMenu::edit(Entry entry) {
    edited_ = std::move(entry);
    const std::vector<std::string> values{edited_.name};
    const bool isNaming = edited_.doing != Doing::remove;
    question_->setStringValue(edited_.doing == Doing::saveAs   ? text("Save as:")
                              : edited_.doing == Doing::rename ? text("Rename “%1” to:", values)
                                                               : text("Delete “%1”?", values));
    name_->setHidden(!isNaming);
    name_->setLabel(question_->stringValue());
    name_->setStringValue(edited_.name);
    editor_->setHidden(false);
    fill();
    updateButton();
    if (!isNaming)
        actions_.changed(button_.get());
    else
        actions_.changed(name_.get());
}

// It says what it does to one that is there.
void PresetMenu::updateButton() {
    const std::string name = PresetStore::nameIn(name_->stringValue());
    const bool replaces = name != edited_.name && listing_.find(name) != nullptr;
    const bool replacesItself =
        edited_.doing == Doing::saveAs && !edited_.name.empty() && name == edited_.name;
    button_->setTitle({.text = edited_.doing == Doing::remove   ? text("Delete")
                               : replaces || replacesItself     ? text("Replace")
                               : edited_.doing == Doing::rename ? text("Rename")
                                                                : text("Save")});
    actions_.changed(nullptr);
}

void PresetMenu::finish() {
    if (!isEditing()) return;
    const std::string name = name_->stringValue();
    PresetProblem problem;
    if (edited_.doing == Doing::remove)
        problem = store_.remove(edited_.name);
    else if (edited_.doing == Doing::rename)
        problem = store_.rename(edited_.name, name);
    else
        problem = store_.save(actions_.current(name));
    listing_ = store_.list();
    if (problem.kind != PresetProblem::Kind::none) {
        fill();
        return actions_.refused(problem.text(language_));
    }
    // The one that was named is what is marked now.
    if (edited_.doing != Doing::remove) {
        applied_ = {Doing::named, PresetStore::nameIn(name)};
        appliedMarks_ = marks_;
    }
    leave();
}

void PresetMenu::leave() {
    editor_->setHidden(true);
    edited_ = {};
    fill();
    actions_.changed(menu_.get());
}

} // namespace orvan
