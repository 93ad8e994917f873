"""What is on the screen, through the accessibility interface, and the print dialogs of the toolkits in it."""
import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 300  # seconds; only what hangs takes that long


class Trouble(Exception):
    """What was looked for and is not there."""


def wait_for(what, probe, patience=PATIENCE):
    end = time.monotonic() + patience
    while True:
        try:
            found = probe()
        except (GLib.Error, AttributeError, LookupError, StopIteration):  # it went while it was looked at, or is to come
            found = None
        if found:
            return found
        if time.monotonic() > end:
            raise Trouble(f"{what} does not appear")
        time.sleep(0.05)


def below(widget):
    """The widget and all that is in it."""
    yield widget
    for index in range(widget.get_child_count()):
        child = widget.get_child_at_index(index)
        if child is not None:
            yield from below(child)


def find(root, role, name=None):
    for widget in below(root):
        if widget.get_role() == role and (name is None or widget.get_name() == name):
            return widget
    return None


def from_the_end(widget):
    """The same, last to first: a dialog's buttons come behind all of its tabs."""
    for index in reversed(range(widget.get_child_count())):
        child = widget.get_child_at_index(index)
        if child is not None:
            yield from from_the_end(child)
    yield widget


def application(pid):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        child = desktop.get_child_at_index(index)
        if child is not None and child.get_process_id() == pid:
            return child
    return None


def has_state(widget, state):
    return widget.get_state_set().contains(state)


def named_by(widget):
    for relation in widget.get_relation_set():
        if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY:
            return relation.get_target(0).get_name()
    return widget.get_name()


def pop_ups(page):
    return {named_by(widget): widget for widget in below(page) if widget.get_role() == Atspi.Role.COMBO_BOX}


def lines(page):
    """What the page says besides its pop-ups: the line that matters now, the trays and supplies, the summary."""
    labels = set(pop_ups(page))
    roles = (Atspi.Role.LABEL, Atspi.Role.STATUS_BAR)
    texts = [widget.get_name() for widget in below(page) if widget.get_role() in roles]
    return [line for text in texts if text not in labels for line in text.splitlines()]


class Gtk3Dialog:
    """GTK 3's: selections and clicks go through the accessibility interface."""

    def __init__(self, dialog, _pid):
        self.dialog = dialog

    def press(self, widget):
        Atspi.Action.do_action(widget, 0)

    def press_button(self, name):
        self.press(wait_for("the button", lambda: find(self.dialog, Atspi.Role.PUSH_BUTTON, name)))

    def take_picture(self, file):
        place = Atspi.Component.get_extents(self.dialog, Atspi.CoordType.SCREEN)
        crop = f"{place.width}x{place.height}+{place.x}+{place.y}"
        subprocess.run(["import", "-window", "root", "-crop", crop, "+repage", file], check=True)

    def select_printer(self, name):
        cell = wait_for(f"the printer {name}", lambda: find(self.dialog, Atspi.Role.TABLE_CELL, name))
        table = cell.get_parent()
        Atspi.Table.add_row_selection(table, Atspi.Table.get_row_at_index(table, cell.get_index_in_parent()))

    def open_tab(self, name):
        tab = wait_for(f"the tab {name}", lambda: find(self.dialog, Atspi.Role.PAGE_TAB, name))
        Atspi.Selection.select_child(tab.get_parent(), tab.get_index_in_parent())
        return tab

    def shown(self, pop_up):
        return pop_up.get_name()

    def entries(self, pop_up):
        """In their places, the line between the office's own papers and the others included."""
        roles = (Atspi.Role.MENU_ITEM, Atspi.Role.SEPARATOR)
        return [item.get_name() for item in below(pop_up) if item.get_role() in roles]

    def pick(self, page, label, choice):
        def ready():
            pop_up = pop_ups(page).get(label)
            return pop_up if pop_up is not None and choice in self.entries(pop_up) else None

        pop_up = wait_for(f"the choice {choice} of {label}", ready)
        Atspi.Selection.select_child(pop_up, self.entries(pop_up).index(choice))

    def unfold(self, page):
        details = wait_for("the details", lambda: find(page, Atspi.Role.TOGGLE_BUTTON, "Details"))
        self.press(details)
        wait_for("what is in the details", lambda: details.get_child_count() > 0)


class Gtk4Dialog:
    """GTK 4's, in a window on an X screen: its widgets hear of nothing but the mouse and the keyboard."""

    PATIENCE = 2  # seconds, before it is tried again: widgets move while a dialog is laid out

    def __init__(self, dialog, pid):
        self.dialog = dialog
        self.pid = str(pid)

    def window(self):
        title = f"^{self.dialog.get_name()}$"
        return xdotool("search", "--onlyvisible", "--pid", self.pid, "--name", title).split()[-1]

    def press(self, widget):
        place = Atspi.Component.get_extents(widget, Atspi.CoordType.WINDOW)
        x, y = place.x + place.width // 2, place.y + place.height // 2
        xdotool("mousemove", "--window", self.window(), x, y, "click", 1)

    def press_button(self, name):
        def button():  # its name is its label, with the letter's mark, and once more without
            buttons = (w for w in from_the_end(self.dialog) if w.get_role() == Atspi.Role.PUSH_BUTTON)
            return next(w for w in buttons if w.get_name().endswith(name))

        self.press(wait_for("the button", button))

    def take_picture(self, file):
        subprocess.run(["import", "-window", self.window(), file], check=True)

    def press_until(self, what, widget, probe):
        end = time.monotonic() + PATIENCE
        while True:
            self.press(wait_for(what, widget))
            try:
                return wait_for(what, probe, self.PATIENCE)
            except Trouble:
                if time.monotonic() > end:
                    raise

    def select_printer(self, name):
        def row():
            return find(self.dialog, Atspi.Role.LABEL, name).get_parent().get_parent()

        self.press_until(f"the printer {name}", row, lambda: has_state(row(), Atspi.StateType.SELECTED))

    def open_tab(self, name):
        def tab():
            tabs = find(self.dialog, Atspi.Role.PAGE_TAB_LIST)
            return find(tabs, Atspi.Role.LABEL, name).get_parent()

        self.press_until(f"the tab {name}", tab, lambda: has_state(tab(), Atspi.StateType.SELECTED))
        tabs = tab().get_parent()
        titles = [find(t, Atspi.Role.LABEL).get_name() for t in below(tabs) if t.get_role() == Atspi.Role.PAGE_TAB]
        stack = tabs.get_parent().get_parent().get_child_at_index(1)
        pages = [stack.get_child_at_index(i) for i in range(stack.get_child_count())]
        # Later releases tell of what is in the page in front alone.
        filled = [page for page in pages if page.get_child_count() > 0]
        return filled[0] if len(filled) == 1 else pages[titles.index(name)]

    def shown(self, pop_up):
        face = pop_up.get_child_at_index(0)
        return next(w for w in from_the_end(face) if w.get_role() == Atspi.Role.LABEL).get_name()

    def entries(self, pop_up):
        """Of an open list."""
        rows = [row for row in below(pop_up) if row.get_role() == Atspi.Role.LIST_ITEM]
        return [find(row, Atspi.Role.LABEL).get_name() for row in rows]

    def pick(self, page, label, choice):
        def pop_up():
            return pop_ups(page)[label]

        what = f"the choice {choice} of {label}"
        self.press_until(what, pop_up, lambda: choice in self.entries(pop_up()))
        xdotool("windowfocus", self.window(), "key", "Home", *["Down"] * self.entries(pop_up()).index(choice), "Return")

    def unfold(self, page):
        self.press_until("the details", lambda: find(page, Atspi.Role.LABEL, "Details"),
                         lambda: any(": " in line for line in lines(page)))


def xdotool(*arguments):
    command = ["xdotool", *map(str, arguments)]
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def dialog_of(app, widget, pid):
    is_old = app.get_toolkit_version().startswith("3.")
    return (Gtk3Dialog if is_old else Gtk4Dialog)(widget, pid)
