// What GTK 3 alone has: combo boxes that listen to the wheel, ATK, and a list of this program's own.
#include "Tests/PrintDialog/Gtk/Application.h"
#include "Tests/Support/DerivedPPD.h"

#include <string>
#include <vector>

namespace orvan::test {
namespace {

using Gtk3Tab = DialogTest;

TEST_F(Gtk3Tab, theWheelPicksNothing) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        for (const auto& [label, popUp] : dialog.popUps()) {
            const std::string shown = dialog.shownIn(label);
            GdkEvent* const event = gdk_event_new(GDK_SCROLL);
            event->scroll.window = GDK_WINDOW(g_object_ref(gtk_widget_get_window(popUp)));
            event->scroll.direction = GDK_SCROLL_DOWN;
            gdk_event_set_device(
                event, gdk_seat_get_pointer(gdk_display_get_default_seat(gdk_display_get_default())));
            gtk_widget_event(popUp, event);
            gdk_event_free(event);
            EXPECT_EQ(dialog.shownIn(label), shown) << label;
        }
    });
}

TEST_F(Gtk3Tab, isNamedForAssistiveTechnology) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        for (const auto& [label, combo] : dialog.popUps()) {
            AtkRelationSet* const relations = atk_object_ref_relation_set(gtk_widget_get_accessible(combo));
            AtkRelation* const name =
                atk_relation_set_get_relation_by_type(relations, ATK_RELATION_LABELLED_BY);
            ASSERT_NE(name, nullptr) << label;
            auto* const text = ATK_OBJECT(g_ptr_array_index(atk_relation_get_target(name), 0));
            EXPECT_EQ(atk_object_get_name(text), label);
            g_object_unref(relations);
        }
    });
}

// The names of the controls below an object that can be seen, in the order in which assistive technology has
// them.
void collectControls(AtkObject* object, std::vector<std::string>& names) {
    AtkStateSet* const states = atk_object_ref_state_set(object);
    const bool isShowing = atk_state_set_contains_state(states, ATK_STATE_SHOWING) != FALSE;
    const bool isCombo = atk_object_get_role(object) == ATK_ROLE_COMBO_BOX;
    const bool isControl = isCombo || atk_state_set_contains_state(states, ATK_STATE_FOCUSABLE) != FALSE;
    g_object_unref(states);
    if (!isShowing) return;
    if (isControl) {
        const char* const name = atk_object_get_name(object);
        names.emplace_back(name != nullptr ? name : "");
    }
    for (int i = 0; !isCombo && i < atk_object_get_n_accessible_children(object); ++i) {
        AtkObject* const child = atk_object_ref_accessible_child(object, i);
        collectControls(child, names);
        g_object_unref(child);
    }
}

TEST_F(Gtk3Tab, hasItsControlsInTheOrderOfTheScreenForAssistiveTechnology) {
    inApplication([] {
        OpenDialog dialog(Settings{{"printer", "Office"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        dialog.pick("Edge to Edge:", "On");
        dialog.pick("Paper Type:", "Transparency");
        const std::vector<std::string> expected{"Undo", "None", "Transparency", "None", "Automatic",
            "Same as Document", "Use Printer Setting", "Automatic", "Off", "Details"};
        std::vector<std::string> names;
        EXPECT_TRUE(waitUntil([&] {
            names.clear();
            collectControls(gtk_widget_get_accessible(dialog.frontPage()), names);
            return names == expected;
        })) << ::testing::PrintToString(names);
    });
}

TEST_F(Gtk3Tab, searchesAmongManyPapers) {
    DerivedPPD ppd;
    std::string choices;
    for (int i = 1; i <= 300; ++i)
        choices.append("*MediaType Extra")
            .append(std::to_string(i))
            .append("/Paper ")
            .append(std::to_string(i))
            .append(": \"\"\n");
    ppd.replace("*CloseUI: *MediaType", choices + "*CloseUI: *MediaType");
    ASSERT_EQ(desktop_.printing->addQueue({.name = "Many", .ppdFile = ppd.file()}), std::nullopt);
    inApplication([this] {
        OpenDialog dialog(Settings{{"printer", "Many"}});
        ASSERT_TRUE(dialog.waitForTab(kTab));
        dialog.openTab(kTab);
        const auto list = [&] { return dialog.controlOf("Paper Type:"); };
        ASSERT_TRUE(waitUntil([&] { return GTK_IS_MENU_BUTTON(list()); }));
        EXPECT_EQ(atk_object_get_role(gtk_widget_get_accessible(list())), ATK_ROLE_COMBO_BOX);
        gtk_button_clicked(GTK_BUTTON(list()));
        GtkWidget* const search = gtk_window_get_focus(GTK_WINDOW(dialog.dialog()));
        ASSERT_TRUE(GTK_IS_SEARCH_ENTRY(search)) << "what is typed is searched for";
        gtk_entry_set_text(GTK_ENTRY(search), "pAPER 27");
        dialog.keepPicture("search");
        g_signal_emit_by_name(search, "activate");
        EXPECT_TRUE(dialog.says("Paper 27"));
        EXPECT_EQ(gtk_window_get_focus(GTK_WINDOW(dialog.dialog())), list());
        EXPECT_EQ(gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(list())), FALSE);
        EXPECT_EQ(dialog.print(document_), "");
    });
    EXPECT_EQ(jobs("Many").back().attribute("MediaType"), "Extra27");
}

} // namespace
} // namespace orvan::test
