// A disclosure, with the texts and levels in it, as GTK widgets.
#pragma once

#include "Platform/View.h"
#include "PrintDialog/Gtk3/GObjectRef.h"

#include <gtk/gtk.h>

#include <optional>
#include <string>
#include <vector>

namespace orvan {

// Mirrors a disclosure, which it borrows. GTK's thread.
class DisclosureMirror {
public:
    explicit DisclosureMirror(platform::Disclosure& disclosure);
    DisclosureMirror(const DisclosureMirror&) = delete;
    DisclosureMirror& operator=(const DisclosureMirror&) = delete;

    // Owned by whichever container it is put into.
    GtkWidget* widget() const { return GTK_WIDGET(expander_); }

    // Brings the title and what is in it up to date with the view.
    void refresh();

private:
    struct Row {
        std::string text;
        bool isLevel = false;
        std::optional<int> percent;
        std::string color;
        bool operator==(const Row&) const = default;
    };
    std::vector<Row> rowsOfView() const;
    static GtkWidget* makeRow(const Row& row);

    platform::Disclosure& model_;
    GtkExpander* expander_;
    GtkBox* box_;
    std::vector<Row> shown_;
    SignalConnection expanded_;
};

} // namespace orvan
