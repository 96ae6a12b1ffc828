"""The notifications that programs made with GTK 3 or Qt show, by the accessibility tree."""

from gi.repository import GLib

from drive.tree import ROLES


def rectangle_on_screen(one):
    return one._ask("org.a11y.atspi.Component", "GetExtents", GLib.Variant("(u)", (0,)), (0, 0, 0, 0))


def notifications_of(desktop, program, to_click=None):
    """(title, body, x, y) for each window of a program that shows notifications, one in a window. Their place is the
    middle of the window, or of the object in it that to_click(window) names."""
    found = []
    for root in [one for one in desktop.session.tree.programs() if one.name() == program]:
        for window in root.children():
            if not window.is_shown():
                continue
            texts = [one.name() or one.text() for one in window.walk() if one.role() == ROLES["label"]]
            texts = [text for text in texts if text]
            x, y, width, height = rectangle_on_screen((to_click and to_click(window)) or window)
            if texts:
                place = (x + width / 2) / desktop.factor, (y + height / 2) / desktop.factor
                found.append((texts[0], " ".join(texts[1:]), *place))
    return found
