"""What a screen reader sees: the windows of Kelo, and the pages in them."""

from dataclasses import dataclass

from gi.repository import GLib

from drive.bus import Bus, Refused
from drive.waiting import await_that

ROLES = {
    "alert": 2, "check box": 7, "check menu item": 8, "dialog": 16, "frame": 23, "label": 29, "list item": 32,
    "menu": 33, "menu item": 35, "password": 40, "button": 43, "radio button": 44, "text": 61, "toggle": 62,
    "window": 69, "application": 75, "entry": 79, "heading": 83, "document": 95,
}  # fmt: skip
_ACCESSIBLE = "org.a11y.atspi.Accessible"
_SHOWING = 25
_VISIBLE = 30
_SENSITIVE = 24
_FOCUSED = 12
_REGISTRY = "org.a11y.atspi.Registry"


@dataclass(frozen=True)
class Accessible:
    """One object. Nothing is cached: each question goes to its program, and one that is gone is empty."""

    bus: Bus
    owner: str
    path: str
    in_page: bool = False

    def _ask(self, interface, method, arguments=None, default=None):
        try:
            return self.bus.call(self.owner, self.path, interface, method, arguments)[0]
        except Refused:
            return default

    def _get(self, interface, prop, default):
        try:
            return self.bus.get(self.owner, self.path, interface, prop)
        except Refused:
            return default

    def name(self):
        return self._get(_ACCESSIBLE, "Name", "")

    def description(self):
        return self._get(_ACCESSIBLE, "Description", "")

    def role(self):
        return self._ask(_ACCESSIBLE, "GetRole", default=0)

    def children(self):
        children = self._ask(_ACCESSIBLE, "GetChildren", default=[])
        return [Accessible(self.bus, *child, self.in_page) for child in children]

    def parent(self):
        owner, path = self._get(_ACCESSIBLE, "Parent", ("", ""))
        return Accessible(self.bus, owner, path, self.in_page) if owner else None

    def has_state(self, number):
        words = self._ask(_ACCESSIBLE, "GetState", default=[0, 0])
        return bool(words[number // 32] >> (number % 32) & 1)

    def is_shown(self):
        # GTK 4.8 never says of anything that it is showing.
        in_page = self.path.startswith("/org/a11y/webkit/accessible/")
        is_showing = self.has_state(_SHOWING) if in_page else True
        return is_showing and self.has_state(_VISIBLE) and self.extents()[2] > 0

    def is_sensitive(self):
        return self.has_state(_SENSITIVE)

    def is_focused(self):
        return self.has_state(_FOCUSED)

    def extents(self):
        """x, y, width and height in its window, in the window's own units."""
        # A page counts from its view when it is asked for its window, and from the window when asked for the screen.
        counted_from = GLib.Variant("(u)", (0 if self.in_page else 1,))
        return self._ask("org.a11y.atspi.Component", "GetExtents", counted_from, (0, 0, 0, 0))

    def place(self, window):
        """x, y, width and height from the upper left corner of the window that it is in."""
        x, y, width, height = self.extents()
        window_x, window_y = window.extents()[:2]
        x, y = x - window_x, y - window_y
        if self.owner != window.owner or not window.errs_in_paddings():
            return x, y, width, height
        # GTK 4.18 adds up places that each count from inside a box's padding as if they counted from its edge
        # (GTK 4.8 does not). How wide a padding is, the bus does not say, but what the contents leave free of the
        # box is twice the padding.
        box = self.parent()
        while box and box != window:
            left, top, box_width, box_height = box.extents()
            inside = [child.extents() for child in box.children()]
            x += _padding(box_width - max([0] + [one[0] + one[2] - left for one in inside]))
            y += _padding(box_height - max([0] + [one[1] + one[3] - top for one in inside]))
            box = box.parent()
        return x, y, width, height

    def errs_in_paddings(self):
        program = self.parent()
        version = program._get("org.a11y.atspi.Application", "Version", "") if program else ""
        numbers = version.split(".")
        return numbers[0] == "4" and len(numbers) > 1 and int(numbers[1]) >= 18

    def text(self):
        all_of_it = GLib.Variant("(ii)", (0, -1))
        return self._ask("org.a11y.atspi.Text", "GetText", all_of_it, "")

    def activate(self):
        """Does what a click would do, without one."""
        return self._ask("org.a11y.atspi.Action", "DoAction", GLib.Variant("(i)", (0,)), False)

    def walk(self, depth=40):
        yield self
        if depth:
            for child in self.children():
                yield from child.walk(depth - 1)


class Tree:
    """Everything that the accessibility bus of a session shows."""

    def __init__(self, session):
        address = session.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        self.bus = Bus(address)
        session.put("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "IsEnabled", GLib.Variant("b", True))

    def programs(self):
        try:
            roots = self.bus.call(_REGISTRY, "/org/a11y/atspi/accessible/root", _ACCESSIBLE, "GetChildren")[0]
        except Refused:
            return []
        return [Accessible(self.bus, *root) for root in roots]

    def named(self, name):
        """Under Wayland Kelo has the name by which the desktop finds its entry, and under X11 its program's."""
        names = (name, "app.kelo.Kelo") if name == "kelo" else (name,)
        return [one for one in self.programs() if one.name() in names]

    def program(self, name):
        return next(iter(self.named(name)), None)

    def main_window(self, program="kelo"):
        """The program's largest window, which is the one with the page."""
        root = self.program(program)
        windows = [one for one in root.children() if one.is_shown()] if root else []
        return max(windows, key=lambda one: one.extents()[2] * one.extents()[3], default=None)

    def pages(self):
        """The roots of the web pages, which a sandboxed web process puts on the bus by itself."""
        roots = []
        for owner in self.bus.names():
            if ".Sandboxed.WebProcess-" not in owner:
                continue
            try:
                items = self.bus.call(owner, "/org/a11y/atspi/cache", "org.a11y.atspi.Cache", "GetItems")[0]
            except Refused:
                continue
            roots += [
                Accessible(self.bus, owner, item[0][1], True)
                for item in items
                if item[0][1].startswith("/org/a11y/webkit/accessible/")
            ]
        return roots

    def find(self, role, name, program="kelo"):
        """The first that is shown, in a program's windows or in a page (program "page"). A name that ends with
        an asterisk is the beginning of one."""
        # In GTK 4.18 a menu in a bar is an entry of the bar.
        numbers = (ROLES["menu"], ROLES["menu item"]) if role == "menu" else (ROLES[role],)
        roots = self.pages() if program == "page" else self.named(program)
        for root in roots:
            for one in root.walk():
                if one.role() in numbers and _matches(one.name(), name) and one.is_shown():
                    return one
        return None

    def await_one(self, role, name, program="kelo", deadline=30):
        return await_that(f'the {role} "{name}" is shown', lambda: self.find(role, name, program), deadline)

    def await_gone(self, role, name, program="kelo"):
        await_that(f'the {role} "{name}" is gone', lambda: not self.find(role, name, program))

    def picture(self, program="kelo"):
        """As text, one object a line."""
        lines = []

        def add(one, indent):
            lines.append(f"{' ' * indent}{one.role()} \"{one.name()}\" {tuple(one.extents())}")
            for child in one.children():
                add(child, indent + 2)

        for root in self.named(program) + self.pages():
            add(root, 0)
        return "\n".join(lines)


def _padding(free):
    """Where more is free, the contents do not fill their box."""
    return free // 2 if 0 < free <= 2 * 32 else 0


def _matches(name, wanted):
    return name.startswith(wanted[:-1]) if wanted.endswith("*") else name == wanted
