"""What leads from one check to the next."""

from drive.kelo import Kelo
from drive.picture import Picture
from drive.user import OtherProgram, User
from drive.waiting import await_that, pump
from drive.widget import BUTTON, WIDGET, has_button_colour, widget_area


class Road:
    """What the checks share: a Kelo that stays open from one to the next, and another program for a while."""

    def __init__(self, desktop, build, folder, pictures):
        self.desktop, self.build, self.folder, self.pictures = desktop, build, folder, pictures
        self.kelo = None
        self.number = 0

    def open_kelo(self, environment=None, arguments=()):
        self.kelo = Kelo(self.desktop, self.build, self.folder / "user", arguments, environment)
        self.user = User(self.kelo)

    def close_kelo(self):
        if self.kelo:
            self.kelo.end()
            self.kelo = None

    def look(self, file=None):
        file = file or self.folder / "screen.png"
        self.desktop.picture(file)
        return Picture(file, self.desktop.space())

    def picture(self, name):
        """Of the screen when it has come to rest, or after some seconds: a page may go on moving."""
        self.number += 1
        file = self.pictures / f"{self.number:02}-{name}.png"
        seen = self.look(file)
        for _ in range(10):
            pump(0.3)
            before, seen = seen, self.look(file)
            if seen.is_like(before):
                break
        return seen

    def other(self, command=()):
        return OtherProgram(self.desktop, self.folder, command)

    def main_windows(self):
        """Their title is the page's."""
        return [one for one in self.kelo.windows() if one.title != WIDGET]

    def main_window(self):
        return await_that("the main window is there", lambda: next(iter(self.main_windows()), None))

    def is_in_front(self):
        return any(one.has_keyboard for one in self.main_windows())

    def widget(self):
        """The page of a hidden window goes on saying that it is shown: the window has to be there, too."""
        window = any(self.kelo.tree.find(role, WIDGET) for role in ("frame", "window"))
        return window and self.kelo.tree.find("button", BUTTON, "page")

    def sees_widget(self, seen, before=None):
        """Whether the picture shows it, as one from before did not: its button has a colour of its own."""
        area = widget_area(self.kelo)
        shares = [one.share(area, has_button_colour) if one else 0 for one in (before, seen)]
        return shares[1] - shares[0] > 0.01

    def await_widget(self, before):
        await_that("the widget is there", self.widget)
        await_that("the widget can be seen", lambda: self.sees_widget(self.look(), before))
