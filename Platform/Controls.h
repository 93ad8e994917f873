// What a dialog's own part of a tab is made of, around the panel's view: controls that say what they are and
// leave places and sizes to whoever mirrors them.
//
// Used as Platform/View.h has it: one thread, no display, no frames.
#pragma once

#include "Platform/View.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// A control's title, and the letter that reaches the control by the keyboard.
struct ControlTitle {
    std::string text;
    // In lower case; 0 for none.
    char letter = 0;
    // The letter's place in the text, in bytes; nothing when it is not in the text and stands behind it.
    std::optional<std::size_t> place = {};
    bool operator==(const ControlTitle&) const = default;

    // The text as toolkits want it: the marker before the letter, and every marker of the text doubled.
    std::string withMarker(char marker) const;
};

// Its subviews in order, from top to bottom or, in reading direction, side by side.
class Stack : public View {
public:
    enum class Axis { vertical, horizontal };
    explicit Stack(Axis axis) : axis_(axis) {}
    Axis axis() const { return axis_; }

private:
    Axis axis_;
};

// Its subviews from top to bottom, in as much room as there is; the rest is scrolled to.
class ScrollView : public View {};

class Button : public View {
public:
    const ControlTitle& title() const { return title_; }
    void setTitle(ControlTitle title) { title_ = std::move(title); }

    // What the control tells when a person has pressed it.
    void setAction(std::function<void()> action) { action_ = std::move(action); }
    // A person's doing. Answers false, and does nothing, when the control is hidden.
    bool press();

private:
    ControlTitle title_;
    std::function<void()> action_;
};

// A line of text that a person writes.
class TextEntry : public View {
public:
    // What is asked for; shown by nobody but who reads the screen aloud.
    const std::string& label() const { return label_; }
    void setLabel(std::string label) { label_ = std::move(label); }

    const std::string& stringValue() const { return stringValue_; }
    void setStringValue(std::string text) { stringValue_ = std::move(text); }

    // What the control tells when a person has changed the text, has ended it (Return), or wants to leave it
    // (Escape).
    struct Actions {
        std::function<void()> edited;
        std::function<void()> ended;
        std::function<void()> left;
    };
    void setActions(Actions actions) { actions_ = std::move(actions); }
    // A person's doings.
    void edit(std::string text);
    void end();
    void leave();

private:
    std::string label_;
    std::string stringValue_;
    Actions actions_;
};

// How much there is of something.
class LevelIndicator : public View {
public:
    const std::string& stringValue() const { return stringValue_; }
    void setStringValue(std::string text) { stringValue_ = std::move(text); }

    // 0 to 100; nothing when it is not known.
    std::optional<int> percent() const { return percent_; }
    void setPercent(std::optional<int> percent) { percent_ = percent; }

    // Of what there is, as "#RRGGBB"; "" for none. Never the only sign of anything.
    const std::string& color() const { return color_; }
    void setColor(std::string color) { color_ = std::move(color); }

private:
    std::string stringValue_;
    std::optional<int> percent_;
    std::string color_;
};

// A title that shows and hides what is below it: its subviews, from top to bottom.
class Disclosure : public View {
public:
    const ControlTitle& title() const { return title_; }
    void setTitle(ControlTitle title) { title_ = std::move(title); }

    bool isUnfolded() const { return unfolded_; }
    void setUnfolded(bool unfolded) { unfolded_ = unfolded; }

    // What the control tells when a person has folded or unfolded it.
    void setAction(std::function<void(Disclosure& sender)> action) { action_ = std::move(action); }
    // A person's doing.
    void toggle();

private:
    ControlTitle title_;
    bool unfolded_ = false;
    std::function<void(Disclosure& sender)> action_;
};

struct MenuEntry {
    std::string title;
    std::string keyword; // that the entry stands for; "" for none
    bool enabled = true;
    bool isLine = false; // between groups of entries: no entry, nothing to pick
    bool operator==(const MenuEntry&) const = default;
};

// A choice of entries, with a title beside it; at most one entry is the selected one.
class Menu : public View {
public:
    // More entries than these want to be searched.
    static constexpr std::size_t kMostAtAGlance = 30;

    const ControlTitle& title() const { return title_; }
    void setTitle(ControlTitle title) { title_ = std::move(title); }

    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }

    const std::vector<MenuEntry>& entries() const { return entries_; }
    bool isLong() const { return entries_.size() > kMostAtAGlance; }
    // Null when nothing is selected.
    const MenuEntry* selectedEntry() const;
    std::optional<std::size_t> selected() const { return selected_; }
    // Sends no action.
    void setEntries(std::vector<MenuEntry> entries, std::optional<std::size_t> selected);

    // What the control tells when a person has picked an entry, also the one that was selected already. The
    // action decides what is selected then.
    using Action = std::function<void(std::size_t index)>;
    void setAction(Action action) { action_ = std::move(action); }
    // A person's pick. Answers false, and does nothing, when the control is disabled or hidden, or there is
    // no such entry, or the entry is disabled.
    bool pick(std::size_t index);

private:
    ControlTitle title_;
    bool enabled_ = true;
    std::vector<MenuEntry> entries_;
    std::optional<std::size_t> selected_;
    Action action_;
};

// Someone else's view, which is the only subview and which nobody but its owner changes, and what to show of
// it: a menu a line, from top to bottom, in the place of its texts and pop-ups.
class Form : public View {
public:
    Form(std::shared_ptr<View> content, std::vector<std::shared_ptr<Menu>> menus);
    const std::vector<std::shared_ptr<Menu>>& menus() const { return menus_; }

private:
    std::vector<std::shared_ptr<Menu>> menus_;
};

} // namespace platform
