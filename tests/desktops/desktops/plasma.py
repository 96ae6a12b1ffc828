"""Plasma on Wayland: KWin without a screen, and plasmashell."""

import os
import pathlib
import re
import shutil
import subprocess
import sys

from gi.repository import GLib

from desktops.base import Desktop, NotHere, Window
from drive.bus import Refused
from drive.kwin import KWIN, FakeInput, WindowList, X11Pointer, read_xvfb, write_picture
from drive.tree import ROLES
from drive.waiting import await_that, pump
from drive.wayland import WaylandConnection

_LIBEXEC = pathlib.Path("/usr/lib/x86_64-linux-gnu/libexec")
_NOTIFICATION = 101  # the role of what is told
_SOCKET = "wayland-kelo"
_SHELL = "org.kde.plasmashell"
_NOTIFICATIONS_FOR_TRAY = """
panels().forEach(panel => panel.widgets("org.kde.plasma.systemtray").forEach(tray => {
    tray.remove();
    panel.addWidget("org.kde.plasma.notifications");
}));
"""
_LOCK = ("org.freedesktop.ScreenSaver", "/ScreenSaver", "org.freedesktop.ScreenSaver")
_ACCENTS = {"green": "#1f9d55", "blue": "#3daee9"}
_MENU_EDGE, _MENU_RULE = 4, 7  # points of Breeze's menus: above the first line, and of a rule between two
_TOLD = re.compile(r"\d+(?:\.\d+)+")

_OUR_ENTRY = """[Desktop Entry]
Type=Application
Name=Python
Exec={program}
NoDisplay=true
X-KDE-Wayland-Interfaces=org_kde_kwin_fake_input
"""


class Plasma(Desktop):
    """What versions 5 and 6 have in common. Without a graphics card KWin takes no pictures, and with one drawn by
    the processor version 5 takes none of its lock screen: its screen is a window that fills a screen of Xvfb, which
    keeps what it shows in a file."""

    major = ""

    def start(self):
        session = self.session
        session.export(
            XDG_CURRENT_DESKTOP="KDE",
            XDG_SESSION_TYPE="wayland",
            XDG_MENU_PREFIX="plasma-",
            KDE_FULL_SESSION="true",
            KDE_SESSION_VERSION=self.major,
            QT_QUICK_BACKEND="software",
            QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1",
        )
        self._let_us_in()
        # Longer than it takes to look at them.
        settings = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "plasmanotifyrc"
        settings.write_text("[Notifications]\nPopupTimeout=60000\n", encoding="utf-8")
        self._make_lock_screen_take_the_password()
        self._start_compositor()
        session.export(WAYLAND_DISPLAY=_SOCKET, QT_QPA_PLATFORM="wayland")
        self.wayland = WaylandConnection()
        self.input = FakeInput(self.wayland)
        self.list = WindowList(session.bus, session.folder)
        session.tree  # noqa: B018  plasmashell is to find the accessibility bus
        session.run(_LIBEXEC / "kactivitymanagerd")
        session.run(f"kded{self.major}")
        session.bus.await_name(f"org.kde.kded{self.major}")
        self._start_shell()
        session.bus.await_name("org.kde.StatusNotifierWatcher")
        self._start_portal()
        pump(3)

    def _start_shell(self):
        self.shell = self.session.run("plasmashell", "--no-respawn")
        await_that("the panel is there", self._panel, 90)
        self.session.bus.await_name("org.freedesktop.Notifications")

    def _let_us_in(self):
        """KWin knows programs by their entries, which name what is not for everybody. To switch that off would make
        it forget what plasmashell may do, too: it then gives the clicks in the tray no valid activation token."""
        applications = pathlib.Path(os.environ["XDG_DATA_HOME"]) / "applications"
        applications.mkdir(parents=True, exist_ok=True)
        # In place of Debian's own entry for Python, which would be found first.
        program = pathlib.Path(sys.executable).resolve()
        (applications / f"{program.name}.desktop").write_text(_OUR_ENTRY.format(program=program), encoding="utf-8")
        self._run(f"kbuildsycoca{self.major}")

    def _start_portal(self):
        """The one that runs was started by the compositor's need of it, when nothing could show its dialogs yet."""
        session = self.session
        session.run(_LIBEXEC / "xdg-desktop-portal-kde")
        session.bus.await_name("org.freedesktop.impl.portal.desktop.kde")
        portal = session.run("/usr/libexec/xdg-desktop-portal", "--replace", log="portal")

        def is_ours():
            bus = "org.freedesktop.DBus"
            asked = GLib.Variant("(s)", ("org.freedesktop.portal.Desktop",))
            try:
                owner = session.bus.call(bus, "/org/freedesktop/DBus", bus, "GetConnectionUnixProcessID", asked)
            except Refused:
                return False
            return owner[0] == portal.pid

        await_that("the portal is there", is_ours)

    def _make_lock_screen_take_the_password(self):
        """The lock screen asks PAM by a service of its own, with a table of passwords of its own."""
        folder = self.session.folder
        ours = (folder / "pam.d" / "kelo").read_text(encoding="utf-8")
        table = folder / "passdb-kde"
        table.write_text((folder / "passdb").read_text(encoding="utf-8").replace(":kelo", ":kde"), encoding="utf-8")
        (folder / "pam.d" / "kde").write_text(ours.replace(str(folder / "passdb"), str(table)), encoding="utf-8")

    def _kwin(self, *arguments, environment=None):
        # A copy: the installed one asks for a capability (priorities) that a container may not grant, and the kernel
        # then refuses to start it at all.
        program = self.session.folder / "kwin_wayland"
        shutil.copy(shutil.which("kwin_wayland"), program)
        size = ("--width", str(self.width), "--height", str(self.height))
        self.session.run(program, *arguments, *size, "--socket", _SOCKET, environment=environment)
        self.session.bus.await_name(KWIN)
        self.session.bus.await_name("org.freedesktop.ScreenSaver")

    def _start_compositor(self):
        folder = self.session.folder / "screen"
        folder.mkdir()
        size = f"{self.width}x{self.height}x24"
        server = self.session.run("Xvfb", "-displayfd", "1", "-screen", "0", size, "-fbdir", folder, "-nolisten", "tcp",
                                  "-noreset")  # fmt: skip
        number = await_that("Xvfb is there", lambda: re.search(r"^\d+$", server.printed(), re.MULTILINE))[0]
        self.screen = folder / "Xvfb_screen0"
        self.pointer = X11Pointer(f":{number}")
        # It draws by itself: a window of its own to draw into by OpenGL needs a graphics card.
        self._kwin("--x11-display", f":{number}", environment={"KWIN_COMPOSE": "Q"})

    def version(self):
        return _TOLD.search(subprocess.check_output(["plasmashell", "--version"], text=True))[0]

    # --- input ---------------------------------------------------------------------------------------

    def turn_key(self, code, is_down):
        self.input.turn_key(code, is_down)

    def turn_button(self, code, is_down):
        self.input.turn_button(code, is_down)

    def move_to(self, x, y):
        # The server draws the pointer, so it has to know where it is.
        scale = self.width / self.space()[0]
        self.pointer.move_to(round(x * scale), round(y * scale))
        self.input.move_to(x, y)

    # --- looking -------------------------------------------------------------------------------------

    def picture(self, file):
        write_picture(file, *read_xvfb(self.screen))

    def windows(self):
        return [
            Window(
                title=one["title"],
                pid=one["pid"],
                x=one["x"],
                y=one["y"],
                width=one["width"],
                height=one["height"],
                has_keyboard=one["active"],
                is_full_screen=one["full"],
                program=one["program"],
                above=one["above"],
            )
            for one in self.list.now()
        ]

    def space(self):
        """The desktop itself is a window, too."""
        return max((one["width"], one["height"]) for one in self._parts_of_shell())

    def work_area(self):
        return self.list.work_area()

    def _parts_of_shell(self):
        return [one for one in self.list.now() if one["program"].endswith("plasmashell")]

    def _panel(self):
        return next((one for one in self._parts_of_shell() if one["dock"]), None)

    def _shell(self):
        return self.session.tree.program("plasmashell")

    def _frames(self, width):
        """The shell's windows of this width in the accessible tree, which has the heights wrong in version 5."""
        everything = self._shell().children()
        return [one for one in everything if one.extents()[2] == width and not one.name().startswith("Desktop")]

    def _buttons_in_panel(self):
        """Of the desktop's panel: the name and the middle of each."""
        panel = self._panel()
        for frame in self._frames(panel["width"]) if panel else ():
            for one in frame.walk():
                x, _y, width, _height = one.extents()
                if one.role() == ROLES["button"] and width > 0:
                    yield one.name(), panel["x"] + x + width / 2, panel["y"] + panel["height"] / 2

    # --- parts and settings ------------------------------------------------------------------------------

    def tray_icon(self, program="Kelo"):
        # The list of windows, which is left of the tray, has the program's name, too.
        found = [(x, y) for name, x, y in self._buttons_in_panel() if name == program]
        windows = any(one.program == "app.kelo.Kelo" for one in self.windows())
        return max(found) if len(found) > windows else None

    def tray_menu(self):
        """The open menu is not in the accessible tree. Its lines are as high as each other, and so are the lines
        between them: its height says how high."""
        shown = [one for one in self._parts_of_shell() if not one["dock"]]
        popup = max(shown, key=lambda one: one["above"], default=None)
        if not popup or popup["width"] >= self._panel()["width"]:
            return []
        entries = self._entries_of_tray_menu()
        lines = popup["height"] - 2 * _MENU_EDGE - _MENU_RULE * entries.count(None)
        height = lines / (len(entries) - entries.count(None))
        places = []
        y = popup["y"] + _MENU_EDGE
        for text in entries:
            if text:
                places.append((text, popup["x"] + popup["width"] / 2, y + height / 2))
            y += height if text else _MENU_RULE
        return places

    def _entries_of_tray_menu(self, program="Kelo"):
        """The texts, and None for a rule between them."""
        watcher = "org.kde.StatusNotifierWatcher"
        bus = self.session.bus
        for item in bus.get(watcher, "/StatusNotifierWatcher", watcher, "RegisteredStatusNotifierItems"):
            owner, _slash, path = item.partition("/")
            path = "/" + path if path else "/StatusNotifierItem"
            if bus.get(owner, path, "org.kde.StatusNotifierItem", "Title") != program:
                continue
            menu = bus.get(owner, path, "org.kde.StatusNotifierItem", "Menu")
            arguments = GLib.Variant("(iias)", (0, -1, []))
            layout = bus.call(owner, menu, "com.canonical.dbusmenu", "GetLayout", arguments)[1]
            shown = [one[1] for one in layout[2] if one[1].get("visible", True)]
            return [None if one.get("type") == "separator" else one["label"] for one in shown]
        raise NotHere(f"{program} is not in the tray")

    def without_tray(self):
        """Takes the tray out of the panel, as a user may. Programs are told so only at the next start of plasmashell:
        until then it goes on as a host without an icon. Notifications are a part of the tray, unless they are put
        into the panel by themselves."""
        arguments = GLib.Variant("(s)", (_NOTIFICATIONS_FOR_TRAY,))
        self.session.bus.call(_SHELL, "/PlasmaShell", "org.kde.PlasmaShell", "evaluateScript", arguments)
        pump(1)
        used = next((one for one in self.windows() if one.has_keyboard), None)
        self.shell.end()
        self._start_shell()
        if used:  # the new desktop has taken the keyboard
            self.click(used.x + used.width / 2, used.y + 8)

    def move_panel(self, edge):
        arguments = GLib.Variant("(s)", (f"panels().forEach(panel => panel.location = '{edge}');",))
        self.session.bus.call(_SHELL, "/PlasmaShell", "org.kde.PlasmaShell", "evaluateScript", arguments)

        def is_there():
            x, y, width, height = self.work_area()
            return {"top": y > 0, "left": x > 0, "bottom": x + y == 0 and height < self.space()[1]}[edge]

        await_that(f"the panel is at the {edge}", is_there)

    def notifications(self):
        """Each is in a window of its own. The accessible tree has the sizes of windows wrong in version 5."""
        frames = [[one for one in frame.walk() if one.is_shown()] for frame in self._shell().children()]
        places = [one for one in self.list.now() if one["notice"]]
        shown = []
        for inside in frames:
            titles = [one.name() for one in inside if one.role() == _NOTIFICATION]
            if titles and places:
                place = places.pop(0)
                texts = [one.text() for one in inside if one.role() == ROLES["text"]]
                middle = (place["x"] + place["width"] / 2, place["y"] + place["height"] / 2)
                shown.append((titles[0], " ".join(texts), *middle))
        return shown

    def set_dark(self, is_dark):
        self._run("plasma-apply-colorscheme", "BreezeDark" if is_dark else "BreezeLight")

    def set_accent(self, name):
        # Programs are told of it before it is written, and read it when they are told once more.
        for _ in range(2):
            self._run("plasma-apply-colorscheme", "--accent-color", _ACCENTS[name])
            pump(1)

    def set_scale(self, factor):
        self._run("kscreen-doctor", f"output.1.scale.{factor}")
        width = self.width / factor
        await_that("the panel has the new width", lambda: abs(self._panel()["width"] - width) < 1)

    def _run(self, *command):
        done = subprocess.run(command, capture_output=True, text=True, check=False, timeout=60)
        if done.returncode:
            raise Refused(f"{command[0]}: {done.stdout}{done.stderr}")

    def answer_shortcut_dialog(self):
        components = ("org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel", "allComponents")
        # By the name of the program's entry in version 6, and of the session in version 5.
        names = ("/component/app_kelo_Kelo", "/component/Kelo", "/component/app_kelo_KeloKelo")
        bus = self.session.bus
        await_that("the shortcut is registered", lambda: not set(names).isdisjoint(bus.call(*components)[0]))
        return "the shortcut counts without a question; it can be changed in the desktop's own settings"

    def _is_locked(self):
        return self.session.bus.call(*_LOCK, "GetActive")[0]

    def lock(self):
        self.session.bus.call(*_LOCK, "Lock")
        await_that("the screen is locked", self._is_locked)
        await_that("the lock screen is shown", lambda: self.session.tree.program("kscreenlocker_greet"))
        pump(2)

    def unlock(self):
        self.press("Escape")  # wakes it: it shows no field at first
        pump(1)
        self.type(self.session.password)
        self.press("Return")
        await_that("the screen is unlocked", lambda: not self._is_locked())


class Plasma6(Plasma):
    name = "plasma-6"
    title = "Plasma"
    major = "6"
    packages = "kwin-wayland libkscreen-bin plasma-desktop plasma-workspace qt6-wayland xdg-desktop-portal-kde"
    releases = ("trixie",)


class Plasma5(Plasma):
    name = "plasma-5"
    title = "Plasma"
    major = "5"
    packages = "kwin-wayland libkf5screen-bin plasma-desktop plasma-workspace qtwayland5 xdg-desktop-portal-kde"
    releases = ("bookworm",)

    def move_panel(self, edge):
        raise NotHere("without the library for the layer shell, which Debian has since 13, KWin chooses the place")

    def set_accent(self, name):
        raise NotHere("its portal does not tell programs of the accent colour")
