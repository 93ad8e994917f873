// Views: a small retained tree that the print dialog's panels work on.
//
// The tree is a model. It draws nothing and needs no display; whoever shows a panel mirrors the tree into
// widgets (or text) and carries a person's picks back through PopUpButton::pick. Frames are in points
// (1/72 inch) in the parent's coordinates, y pointing up, so a smaller y is lower on the panel.
//
// Everything here is used on one thread, the one on which the dialog calls its panels.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

struct Point {
    double x = 0;
    double y = 0;
    bool operator==(const Point&) const = default;
};

struct Rect {
    Point origin;
    double width = 0;
    double height = 0;
    bool operator==(const Rect&) const = default;
};

class View {
public:
    View() = default;
    virtual ~View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    std::int64_t tag() const { return tag_; }
    void setTag(std::int64_t tag) { tag_ = tag; }

    const Rect& frame() const { return frame_; }
    void setFrame(const Rect& frame) { frame_ = frame; }
    void setFrameOrigin(Point origin) { frame_.origin = origin; }

    bool isHidden() const { return hidden_; }
    void setHidden(bool hidden) { hidden_ = hidden; }

    // The children in the order in which they were added.
    const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
    void addSubview(std::shared_ptr<View> view) { subviews_.push_back(std::move(view)); }
    void removeAllSubviews() { subviews_.clear(); }

    // The first view with the tag, this one or below it, in depth-first order; null when there is none.
    View* viewWithTag(std::int64_t tag);

private:
    std::int64_t tag_ = 0;
    Rect frame_;
    bool hidden_ = false;
    std::vector<std::shared_ptr<View>> subviews_;
};

// A line of text that a person cannot change.
class TextField : public View {
public:
    enum class Role {
        label,
        status, // tells what matters now; who cannot see the screen is told of each change
    };
    Role role() const { return role_; }
    void setRole(Role role) { role_ = role; }

    const std::string& stringValue() const { return stringValue_; }
    void setStringValue(std::string text) { stringValue_ = std::move(text); }

private:
    Role role_ = Role::label;
    std::string stringValue_;
};

// One entry of a pop-up list. The represented object is whatever the panel ties to the entry; a mirror does
// not look at it.
struct MenuItem {
    std::string title;
    std::string keyword; // that the entry stands for, as the panel was given it; "" for none
    std::string keyEquivalent;
    bool enabled = true;
    std::shared_ptr<void> representedObject;
};

// A pop-up list: a menu of which at most one item is selected.
class PopUpButton : public View {
public:
    using Action = std::function<void(PopUpButton& sender)>;

    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }

    // The PPD option whose choices the items are, for who shows more of it than the items say; "" for none.
    const std::string& optionKeyword() const { return optionKeyword_; }
    void setOptionKeyword(std::string keyword) { optionKeyword_ = std::move(keyword); }

    // While it is on, a mirror may enable and disable the items by itself; off, the items' own flags rule.
    bool autoenablesItems() const { return autoenablesItems_; }
    void setAutoenablesItems(bool on) { autoenablesItems_ = on; }

    const std::vector<MenuItem>& items() const { return items_; }
    void reserveItems(std::size_t count) { items_.reserve(count); }
    void addItem(MenuItem item) { items_.push_back(std::move(item)); }
    // Afterwards nothing is selected.
    void removeAllItems();
    // Null when there is no such item.
    const MenuItem* itemAtIndex(std::int64_t index) const;

    // -1 when nothing is selected.
    std::int64_t indexOfSelectedItem() const { return selected_; }
    // Selects without sending the action; an index without an item is ignored.
    void selectItemAtIndex(std::int64_t index);

    // What the control tells its target when a person has picked an item.
    void setAction(Action action) { action_ = std::move(action); }
    // A person's pick: selects the item, then sends the action. Answers false, and does nothing, when the
    // control is disabled or hidden, or there is no such item, or the item is disabled.
    bool pick(std::int64_t index);

private:
    std::string optionKeyword_;
    bool enabled_ = true;
    bool autoenablesItems_ = true;
    std::vector<MenuItem> items_;
    std::int64_t selected_ = -1;
    Action action_;
};

} // namespace platform
