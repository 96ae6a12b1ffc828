"""What sway and labwc have in common: compositors made with wlroots, to which one adds a bar, a daemon for
notifications and a locker as one likes."""

import json
import os
import pathlib
import pwd
import subprocess

from gi.repository import Gio, GLib

from desktops.base import Desktop, NotHere
from drive.bus import Refused
from drive.picture import Picture
from drive.processes import Process
from drive.waiting import await_that, pump
from drive.wayland import WaylandConnection
from drive.wlroots import Keyboard, Pointer, Toplevels

BAR_HEIGHT = 30
_BAR_COLOUR = 43, 43, 43
_ICON = 22
_NOBODY = pwd.getpwnam("nobody")
_PACKAGES = (
    "dconf-gsettings-backend waybar mako-notifier grim swaylock wlr-randr "
    "xdg-desktop-portal-gtk xdg-desktop-portal-wlr"
)
_LOOK = "org.gnome.desktop.interface"


class WlrootsDesktop(Desktop):
    packages = _PACKAGES
    releases = ("trixie",)
    # The main window is as high as a small screen, and must not lie below the bar.
    width, height = 1440, 960
    outputs = 1
    hands_on_tokens = False
    tells_of_lock = False
    panel_status = "floats over all windows"

    def start(self):
        self.folder = self.session.folder / self.name
        self.runtime = self.folder / "run"
        self.runtime.mkdir(parents=True)
        # sway refuses to run as root. Root may use what a user who is allowed nothing has made.
        for folder in (self.folder, self.runtime):
            os.chown(folder, _NOBODY.pw_uid, _NOBODY.pw_gid)
        os.chmod(self.runtime, 0o700)
        os.chmod(self.session.folder, 0o711)
        os.environ["PATH"] += ":/usr/sbin:/sbin"
        self._start_compositor()
        socket = await_that("the compositor has a socket", self._socket)
        self.session.export(
            WAYLAND_DISPLAY=str(socket),
            GDK_BACKEND="wayland",
            XDG_SESSION_TYPE="wayland",
            XDG_CURRENT_DESKTOP=self.name,
        )
        self.arrange_outputs()
        self.wayland = WaylandConnection(socket)
        self.keyboard = Keyboard(self.wayland)
        self.pointer = Pointer(self.wayland)
        self.toplevels = Toplevels(self.wayland)
        self.move_to(self.width / 2, self.height / 2)
        self._start_notifications()
        self._start_bar("top", {"modules-left": ["tray"], "modules-center": ["clock"], "tray": {"icon-size": _ICON}})
        self.session.bus.await_name("org.kde.StatusNotifierWatcher")

    def _start_compositor(self):
        raise NotImplementedError

    def arrange_outputs(self):
        self.randr("--output", "HEADLESS-1", "--custom-mode", f"{self.width}x{self.height}", "--pos", "0,0")

    def run_compositor(self, *command, **environment):
        """As nobody, on outputs that nobody sees."""
        as_nobody = [f"--reuid={_NOBODY.pw_uid}", f"--regid={_NOBODY.pw_gid}", "--clear-groups"]
        variables = {
            "WLR_BACKENDS": "headless",
            "WLR_HEADLESS_OUTPUTS": str(self.outputs),
            "WLR_LIBINPUT_NO_DEVICES": "1",
            "WLR_RENDERER": "pixman",
            "XDG_RUNTIME_DIR": str(self.runtime),
            "HOME": str(self.folder),
            **environment,
        }
        return self.session.run("setpriv", *as_nobody, *command, environment=variables, log=self.name)

    def _socket(self):
        return next((one for one in self.runtime.glob("wayland-*") if one.suffix != ".lock"), None)

    def _start_notifications(self):
        configuration = self.folder / "mako"
        # One at a time, so that it is known where the newest is.
        configuration.write_text("anchor=top-right\nmargin=10\nwidth=300\nmax-visible=1\n", encoding="utf-8")
        self.session.run("mako", "--config", configuration)
        self.session.bus.await_name("org.freedesktop.Notifications")

    def _start_bar(self, edge, modules):
        self.bar_edge = edge
        configuration = self.folder / "waybar.json"
        thickness = "width" if edge == "left" else "height"
        bar = {"layer": "top", "position": edge, thickness: BAR_HEIGHT, **modules}
        configuration.write_text(json.dumps(bar), encoding="utf-8")
        style = self.folder / "waybar.css"
        style.write_text("window#waybar {{ background: rgb{}; color: #ffffff; }}".format(_BAR_COLOUR), encoding="utf-8")
        self.bar = self.session.run("waybar", "--config", configuration, "--style", style)

    def ask(self, *command):
        """What a tool prints."""
        return subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True).stdout

    def randr(self, *arguments):
        self.ask("wlr-randr", *arguments)

    # --- input ---------------------------------------------------------------------------------------

    def turn_key(self, code, is_down):
        self.keyboard.turn(code, is_down)

    def turn_button(self, code, is_down):
        self.pointer.turn(code, is_down)

    def move_to(self, x, y):
        self.pointer.move_to(x, y, *self.space())

    def space(self):
        """Width and height of what all outputs take up together, in points."""
        right = bottom = 0
        for one in json.loads(self.ask("wlr-randr", "--json")):
            if one["enabled"]:
                mode = next(mode for mode in one["modes"] if mode["current"])
                right = max(right, one["position"]["x"] + mode["width"] / one["scale"])
                bottom = max(bottom, one["position"]["y"] + mode["height"] / one["scale"])
        return right, bottom

    # --- looking -------------------------------------------------------------------------------------

    def picture(self, file):
        self.ask("grim", file)

    def work_area(self):
        width, height = self.space()
        if not self.bar.is_running():
            return 0, 0, width, height
        if self.bar_edge == "left":
            return BAR_HEIGHT, 0, width - BAR_HEIGHT, height
        return 0, BAR_HEIGHT if self.bar_edge == "top" else 0, width, height - BAR_HEIGHT

    # --- parts ---------------------------------------------------------------------------------------

    def tray_icon(self, program="Kelo"):
        watcher = "org.kde.StatusNotifierWatcher"
        try:
            items = self.session.bus.get(watcher, "/StatusNotifierWatcher", watcher, "RegisteredStatusNotifierItems")
        except Refused:
            return None
        for at, item in enumerate(items):
            owner, _, path = item.partition("/")
            try:
                title = self.session.bus.get(owner, "/" + path, "org.kde.StatusNotifierItem", "Title")
            except Refused:
                continue
            if title == program:
                return _ICON / 2 + at * _ICON, BAR_HEIGHT / 2
        return None

    def tray_menu(self):
        """The menu opens where the pointer is; the tree knows its entries' places in it."""
        icon = self.tray_icon()
        entries = []
        for root in self.session.tree.programs():
            if icon and root.name() == "waybar":
                for one in root.walk():
                    if one.role() in (8, 35) and one.name() and one.is_shown():
                        x, y, width, height = one.extents()
                        entries.append((one.name(), icon[0] + x + width / 2, icon[1] + y + height / 2))
        return entries

    def without_tray(self):
        self.bar.end()

    def move_panel(self, edge):
        """Without a tray: only where that is at the top is it known where in it the icon is."""
        self.bar.end()
        self._start_bar(edge, {})
        width, height = self.space()
        place = {
            "top": (0, 0, width, BAR_HEIGHT),
            "left": (0, 0, BAR_HEIGHT, height),
            "bottom": (0, height - BAR_HEIGHT, width, BAR_HEIGHT),
        }[edge]
        file = self.folder / "bar.png"

        def is_drawn():
            self.picture(file)
            return Picture(file, (width, height)).share(place, lambda *colour: colour == _BAR_COLOUR) > 0.9

        await_that("the bar is drawn", is_drawn)

    def notifications(self):
        mako = "fr.emersion.Mako"
        daemon = "org.freedesktop.Notifications"
        shown = self.session.bus.call(daemon, "/fr/emersion/Mako", mako, "ListNotifications")[0]
        # Below the bar, with mako's distance from the edges.
        place = self.space()[0] - 160, self.work_area()[1] + 30
        return [(one["summary"], one["body"], *place) for one in shown]

    def set_dark(self, is_dark):
        self._setting("color-scheme", "prefer-dark" if is_dark else "default")

    def set_accent(self, name):
        self._setting("accent-color", name)
        portal = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings"
        asked = GLib.Variant("(ss)", ("org.freedesktop.appearance", "accent-color"))
        try:
            self.session.bus.call(*portal, "Read", asked)
        except Refused as refusal:
            raise NotHere("its portal, xdg-desktop-portal-gtk, tells of no accent colour") from refusal

    def _setting(self, key, value):
        source = Gio.SettingsSchemaSource.get_default()
        schema = source and source.lookup(_LOOK, True)
        if not schema or not schema.has_key(key):
            raise NotHere(f"no {key} in {_LOOK}")
        self.ask("gsettings", "set", _LOOK, key, value)

    def set_scale(self, factor):
        mode = f"{self.width}x{self.height}"
        self.randr("--output", "HEADLESS-1", "--custom-mode", mode, "--scale", factor)
        pump(0.5)

    def lock(self):
        """swaylock takes the same password as everything else here."""
        services = pathlib.Path("/etc/pam.d")
        (services / "swaylock").write_text((services / "kelo").read_text(encoding="utf-8"), encoding="utf-8")
        passwords = self.session.folder / "passdb"
        known = passwords.read_text(encoding="utf-8")
        passwords.write_text(known + known.splitlines()[0].rpartition(":")[0] + ":swaylock\n", encoding="utf-8")
        ready, end = os.pipe()
        os.set_inheritable(end, True)
        self.locker = Process(
            ["swaylock", "--color", "204060", "--ready-fd", end], self.folder / "swaylock.log", close_fds=False
        )
        os.close(end)
        if os.read(ready, 1) != b"\n":
            raise RuntimeError(f"swaylock ended:\n{self.locker.printed()}")
        os.close(ready)

    def unlock(self):
        self.type(self.session.password)
        self.press("Return")
        await_that("the lock screen is gone", lambda: not self.locker.is_running())
