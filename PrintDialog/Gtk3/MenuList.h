// A menu with many entries or long ones: a button that opens a list, which can be searched.
#pragma once

#include "PrintDialog/Gtk/GObjectRef.h"
#include "PrintDialog/Gtk/MenuMirror.h"

#include <memory>
#include <string>
#include <vector>

namespace orvan {

// The list is filled each time when it is opened. Letters that are typed
// into its search line leave the entries that contain them; Return picks the marked one. GTK's thread.
class MenuList final : public MenuControl {
public:
    // The menu must outlive this.
    explicit MenuList(platform::Menu& menu);
    ~MenuList() override;

    GtkWidget* widget() const override { return GTK_WIDGET(button_); }
    void show(const std::vector<platform::MenuEntry>& entries, std::optional<std::size_t> selected) override;
    bool isOpen() const override;
    bool suits(const platform::Menu& menu) const override { return isWantedFor(menu); }

    // A combo box's menu takes a time that grows with the square of its items, cannot be searched, and has no
    // tooltips.
    static bool isWantedFor(const platform::Menu& menu);

private:
    static void onOpened(GtkToggleButton* button, MenuList* self);
    static void onSearch(GtkSearchEntry* entry, MenuList* self);
    static gboolean onKey(GtkWidget* entry, GdkEventKey* event, MenuList* self);
    static void onActivated(GtkTreeView* list, GtkTreePath* path, GtkTreeViewColumn*, MenuList* self);
    static void onReturn(GtkEntry* entry, MenuList* self);
    void makeList();
    void fill();
    void mark(std::size_t entry);
    void pickMarked();

    platform::Menu& menu_;
    GtkMenuButton* button_;
    GtkLabel* label_;
    GtkPopover* popover_ = nullptr;
    GtkSearchEntry* search_ = nullptr;
    GtkTreeView* list_ = nullptr;
    std::vector<std::unique_ptr<SignalConnection>> connections_;
    std::vector<platform::MenuEntry> entries_;
    std::optional<std::size_t> selected_;
};

} // namespace orvan
