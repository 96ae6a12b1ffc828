"""What the desktops on X11 share: the server, input and pictures through it, windows as EWMH describes them."""

import getpass
import os
import pathlib
import re
import subprocess

from desktops.base import Desktop, NotHere, Window
from drive import neighbours
from drive.bus import Refused
from drive.processes import Process
from drive.waiting import await_that, pump
from gi.repository import GLib

try:
    from PIL import Image
    from Xlib import X, display, error
    from Xlib.ext import xtest
except ImportError:  # not on every system, and other desktops do without
    pass

_EVDEV_OFFSET = 8  # between the kernel's number of a key and the server's
_BUTTONS = {0x110: 1, 0x112: 2, 0x111: 3}
WATCHER = "org.kde.StatusNotifierWatcher"


class X11Desktop(Desktop):
    """Everything is in the server's pixels inside, and in points outside: `factor` lies between them."""

    current_desktop = ""  # XDG_CURRENT_DESKTOP
    session_command = ()
    session_variables = {}
    services = ()  # files of /usr/share/dbus-1/services that are its own, where other desktops bring the like
    starts_at_login = ()  # files of /etc/xdg/autostart that are its own, where they start on other desktops, too
    base_packages = "xvfb python3-xlib python3-pil x11-utils adwaita-icon-theme dconf-gsettings-backend dconf-service"

    def __init__(self, session):
        super().__init__(session)
        self.factor = 1
        self.display = None
        self.modes = set()

    # --- start ---------------------------------------------------------------------------------------

    def start(self):
        self._start_server()
        self.prepare_home()
        self.session.export(
            XDG_SESSION_TYPE="x11",
            XDG_CURRENT_DESKTOP=self.current_desktop,
            XDG_SESSION_DESKTOP=self.current_desktop.lower(),
            DESKTOP_SESSION=self.name,
            GDK_BACKEND="x11",
            QT_ACCESSIBILITY="1",
            **self.session_variables,
        )
        _ = self.session.tree  # from now on every program shows what it draws
        self.session.run(*self.session_command, log="session")
        await_that("the window manager is there", self.manager, 90)
        self.await_ready()

    def _start_server(self):
        log = self.session.folder / "Xvfb.log"
        reader, writer = os.pipe()
        self.session.processes.append(
            Process(
                ["Xvfb", "-displayfd", writer, "-screen", "0", "2560x1600x24", "-nolisten", "tcp", "-noreset"]
                + ["+extension", "RANDR", "+extension", "Composite"],
                log,
                pass_fds=(writer,),
            )
        )
        os.close(writer)
        with os.fdopen(reader) as answer:
            number = answer.readline().strip()
        if not number:
            raise RuntimeError(f"Xvfb did not start: {log.read_text()}")
        self.session.export(DISPLAY=f":{number}")
        self.display = display.Display(f":{number}")
        self.root = self.display.screen().root
        self.display.set_error_handler(lambda *_: None)
        self.resize(self.width, self.height)

    def resize(self, width, height):
        """The screen has the size of a common one; with the scale of 2, of a common one with twice as many pixels."""
        name = f"own-{width}x{height}"
        # The server's own mode has no refresh rate, so that Cinnamon does not find it.
        if name not in self.modes:
            self.modes.add(name)
            numbers = [width, 0, 0, width, height, 0, 0, height]
            self.run("xrandr", "--newmode", name, "60", *[str(number) for number in numbers])
            self.run("xrandr", "--addmode", "screen", name)
        self.run("xrandr", "--output", "screen", "--mode", name)

    def rescale(self, factor):
        """Waits until the desktop has announced its new scale, on a screen with as many points as before."""
        self.factor = factor
        self.resize(self.width * factor, self.height * factor)
        pump(3)

    def await_panel(self, edge):
        def is_there():
            x, y, width, height = self.work_area()
            return {"top": y > 0, "left": x > 0, "bottom": y + height < self.height}[edge]

        await_that(f"the panel is at the {edge}", is_there)
        pump(1)

    def prepare_home(self):
        """Writes what has to be there before the session starts."""
        (pathlib.Path(os.environ["HOME"]) / "Desktop").mkdir(exist_ok=True)
        neighbours.keep_away(self.session, self.services, self.starts_at_login)

    def let_password_unlock(self, service):
        """Lets a lock screen take the session's password, by the service with which it asks PAM."""
        folder = pathlib.Path(os.environ["KELO_PRIVATE_DESKTOP_FOLDER"])
        ours = (folder / "pam.d" / "kelo").read_text(encoding="utf-8")
        (folder / "pam.d" / service).write_text(ours, encoding="utf-8")
        with open(folder / "passdb", "a", encoding="utf-8") as known:
            known.write(f"{getpass.getuser()}:{self.session.password}:{service}\n")

    def await_ready(self):
        """Waits until panels and tray are there."""
        self.session.bus.await_name(WATCHER, 90)
        await_that("a panel keeps a part of the screen", lambda: self.work_area()[3] < self.height, 60)
        pump(2)

    def manager(self):
        """The window manager's own name for itself, once there is one."""
        window = self._number(self.root, "_NET_SUPPORTING_WM_CHECK")
        return self._text(self.display.create_resource_object("window", window), "_NET_WM_NAME") if window else ""

    def run(self, *command):
        """Runs a tool of the desktop to its end. What it printed."""
        ended = subprocess.run(command, capture_output=True, text=True, timeout=30)
        if ended.returncode:
            raise RuntimeError(f"{' '.join(command)}: {ended.stderr or ended.stdout}")
        return ended.stdout

    def package_version(self, package):
        return re.sub(r"^\d+:|[-+~].*$", "", self.run("dpkg-query", "--show", "--showformat=${Version}", package))

    # --- input -----------------------------------------------------------------------------------------

    def turn_key(self, code, is_down):
        xtest.fake_input(self.display, X.KeyPress if is_down else X.KeyRelease, code + _EVDEV_OFFSET)
        self.display.sync()

    def turn_button(self, code, is_down):
        xtest.fake_input(self.display, X.ButtonPress if is_down else X.ButtonRelease, _BUTTONS[code])
        self.display.sync()

    def move_to(self, x, y):
        xtest.fake_input(self.display, X.MotionNotify, x=round(x * self.factor), y=round(y * self.factor))
        self.display.sync()

    # --- tray ------------------------------------------------------------------------------------------

    def tray_items(self):
        """What has registered with the tray: (bus name, path of the object) each."""
        try:
            items = self.session.bus.get(WATCHER, "/StatusNotifierWatcher", WATCHER, "RegisteredStatusNotifierItems")
        except Refused:
            return []
        return [(item.partition("/")[0], "/" + item.partition("/")[2]) for item in items]

    def kelo_item(self):
        for name, path in self.tray_items():
            try:
                if self.session.bus.get(name, path, "org.kde.StatusNotifierItem", "Title") == "Kelo":
                    return name, path
            except Refused:
                continue
        return None

    def tray_icon(self, program="Kelo"):
        if not self.kelo_item():
            return None
        place = self.tray_icon_place()
        return place and (place[0] / self.factor, place[1] / self.factor)

    def tray_icon_place(self):
        """The middle of Kelo's icon in pixels, or None. It has registered when this is asked."""
        raise NotHere("no tray")

    def plug_of(self, kind):
        """The middle of the window that a program of the class has put into a panel, in pixels."""
        for window in self.all_windows():
            if (window.get_wm_class() or ("", ""))[0] == kind and self._numbers(window, "_XEMBED_INFO"):
                x, y, width, height = self.rectangle(window)
                return x + width / 2, y + height / 2
        return None

    def tray_menu(self):
        """Hosts draw the menu by themselves, and say nothing of its entries. Their texts are the menu's on the bus,
        and their places the lines of text in the picture."""
        menu = self._open_menu()
        item = self.kelo_item()
        if not menu or not item:
            return []
        x, y, width, _height = self.rectangle(menu)
        labels, lines = self._labels_on_bus(*item), self._lines_of_text(menu)
        if len(labels) != len(lines):
            return []
        middle = (x + width / 2) / self.factor
        return [(label, middle, (y + line) / self.factor) for label, line in zip(labels, lines)]

    def _open_menu(self):
        kinds = [self._atom(f"_NET_WM_WINDOW_TYPE_{kind}") for kind in ("POPUP_MENU", "DROPDOWN_MENU", "MENU")]
        for window in reversed(self.root.query_tree().children):
            is_shown = window.get_attributes().map_state == X.IsViewable
            if is_shown and set(self._numbers(window, "_NET_WM_WINDOW_TYPE")) & set(kinds):
                return window
        return None

    def _labels_on_bus(self, name, path):
        menu = self.session.bus.get(name, path, "org.kde.StatusNotifierItem", "Menu")
        arguments = GLib.Variant("(iias)", (0, -1, ["label", "type"]))
        _revision, layout = self.session.bus.call(name, menu, "com.canonical.dbusmenu", "GetLayout", arguments)
        return [entry[1]["label"] for entry in layout[2] if entry[1].get("type") != "separator"]

    def _lines_of_text(self, window):
        """The middles of the lines, in pixels below the window's upper edge."""
        x, y, width, height = self.rectangle(window)
        inset = 14 * self.factor
        picture = self.shot().crop((x + inset, y, x + width - inset, y + height))
        # A row with text has bright and dark pixels side by side; one of a separator or of a shadow has not.
        rows = [max(shades) - min(shades) > 60 for shades in self._shades_by_row(picture)]
        found, begin = [], None
        for row, has_text in enumerate([*rows, False]):
            if has_text and begin is None:
                begin = row
            elif not has_text and begin is not None:
                # What reaches the edge is seen through the shadow around the menu.
                if row - begin >= 5 * self.factor and 0 < begin and row < picture.height:
                    found.append((begin + row) / 2)
                begin = None
        return found

    @staticmethod
    def _shades_by_row(picture):
        gray = picture.convert("L").tobytes()
        return [gray[at : at + picture.width] for at in range(0, len(gray), picture.width)]

    # --- looking ---------------------------------------------------------------------------------------

    def shot(self):
        """The screen as an image of PIL."""
        size = self.root.get_geometry()
        raw = self.root.get_image(0, 0, size.width, size.height, X.ZPixmap, 0xFFFFFFFF)
        return Image.frombytes("RGB", (size.width, size.height), raw.data, "raw", "BGRX")

    def picture(self, file):
        self.shot().save(file)

    def windows(self):
        managed = set(self._numbers(self.root, "_NET_CLIENT_LIST"))
        active = self._number(self.root, "_NET_ACTIVE_WINDOW")
        focused = self.focused_window()
        found = []
        for place, top in enumerate(self.root.query_tree().children):
            try:
                if top.get_attributes().map_state != X.IsViewable:
                    continue
                client = self._client_in(top, managed)
                found.append(self._describe(client or top, place, active if client else focused))
            except error.XError:
                continue  # closed meanwhile
        return [one for one in found if one.width > 1]

    def all_windows(self, below=None):
        """All that are shown, also those inside others."""
        for one in (below or self.root).query_tree().children:
            try:
                if one.get_attributes().map_state == X.IsViewable:
                    yield one
                    yield from self.all_windows(one)
            except error.XError:
                continue

    def rectangle(self, window):
        """x, y, width and height in pixels of the screen."""
        size = window.get_geometry()
        corner = self.root.translate_coords(window, 0, 0)
        return corner.x, corner.y, size.width, size.height

    def _client_in(self, window, managed, depth=3):
        """The window of a program in a frame of the window manager, or the window itself."""
        if window.id in managed:
            return window
        for child in window.query_tree().children if depth else ():
            if found := self._client_in(child, managed, depth - 1):
                return found
        return None

    def covered_by(self, program):
        """Whether the program shows a window over the whole screen. They are known by WM_CLASS or by their title."""
        for one in self.windows():
            is_theirs = program.lower() in f"{one.program} {one.title}".lower()
            if is_theirs and one.width >= self.width and one.height >= self.height:
                return True
        return False

    def _describe(self, window, place, keyboard):
        x, y, width, height = self.rectangle(window)
        left, right, top, bottom = self._numbers(window, "_GTK_FRAME_EXTENTS") or (0, 0, 0, 0)
        kind = window.get_wm_class()
        states = self._numbers(window, "_NET_WM_STATE")
        return Window(
            title=self._text(window, "_NET_WM_NAME") or window.get_wm_name() or "",
            pid=self._number(window, "_NET_WM_PID"),
            x=(x + left) / self.factor,
            y=(y + top) / self.factor,
            width=(width - left - right) / self.factor,
            height=(height - top - bottom) / self.factor,
            has_keyboard=window.id == keyboard,
            is_full_screen=self._atom("_NET_WM_STATE_FULLSCREEN") in states,
            program=kind[1] if kind else "",
            above=place,
        )

    def focused_window(self):
        """The number of the top-level window that the server sends keys to."""
        focus = self.display.get_input_focus().focus
        if isinstance(focus, int):
            return 0
        try:
            while (parent := focus.query_tree().parent) and parent != self.root:
                focus = parent
        except error.XError:
            return 0
        return focus.id

    def work_area(self):
        area = self._numbers(self.root, "_NET_WORKAREA")[:4]
        if len(area) < 4:
            return 0, 0, self.width, self.height
        return tuple(number / self.factor for number in area)

    def _atom(self, name):
        return self.display.intern_atom(name)

    def _property(self, window, name):
        try:
            found = window.get_full_property(self._atom(name), X.AnyPropertyType)
        except error.XError:
            return None
        return found.value if found else None

    def _numbers(self, window, name):
        return list(self._property(window, name) or ())

    def _number(self, window, name):
        return next(iter(self._numbers(window, name)), 0)

    def _text(self, window, name):
        found = self._property(window, name)
        return bytes(found).decode("utf-8", "replace") if found else ""
