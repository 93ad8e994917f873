// A menu's entries as rows of GTK's lists.
#pragma once

#include "Platform/Controls.h"
#include "PrintDialog/Gtk/GObjectRef.h"

#include <gtk/gtk.h>

#include <cstddef>

namespace orvan {

// Of a title, that are seen on the smallest screen.
inline constexpr int kFewLetters = 12;

enum MenuColumn : int { kTitleColumn, kEnabledColumn, kIsLineColumn, kIndexColumn, kMenuColumns };

inline GObjectRef<GtkListStore> makeMenuStore() {
    return GObjectRef<GtkListStore>(
        gtk_list_store_new(kMenuColumns, G_TYPE_STRING, G_TYPE_BOOLEAN, G_TYPE_BOOLEAN, G_TYPE_INT));
}

// `index`: the entry's in its menu.
inline void appendMenuRow(GtkListStore* store, const platform::MenuEntry& entry, std::size_t index) {
    gtk_list_store_insert_with_values(store, nullptr, -1, kTitleColumn, entry.title.c_str(), kEnabledColumn,
        entry.enabled ? TRUE : FALSE, kIsLineColumn, entry.isLine ? TRUE : FALSE, kIndexColumn,
        static_cast<int>(index), -1);
}

inline GtkCellRenderer* makeTitleRenderer() {
    GtkCellRenderer* const text = gtk_cell_renderer_text_new();
    g_object_set(text, "ellipsize", PANGO_ELLIPSIZE_END, "width-chars", kFewLetters, nullptr);
    return text;
}

// For gtk_combo_box_set_row_separator_func and its like.
inline gboolean isMenuLine(GtkTreeModel* model, GtkTreeIter* row, gpointer) {
    gboolean line = FALSE;
    gtk_tree_model_get(model, row, kIsLineColumn, &line, -1);
    return line;
}

} // namespace orvan
