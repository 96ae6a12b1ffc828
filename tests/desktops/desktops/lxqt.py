"""LXQt as startlxqt brings it up: lxqt-panel, lxqt-notificationd, pcmanfm-qt, xscreensaver; xfwm4 as its window
manager, which Debian installs with it."""

import os
import pathlib
import re

from desktops.base import NotHere
from desktops.x11 import X11Desktop
from desktops.xscreensaver import XScreenSaver
from drive.notices import rectangle_on_screen
from drive.tree import ROLES
from drive.waiting import await_that, pump
from gi.repository import GLib


class Lxqt(XScreenSaver, X11Desktop):
    name = "lxqt"
    title = "LXQt"
    packages = (
        f"{X11Desktop.base_packages} lxqt-session lxqt-panel lxqt-notificationd lxqt-config lxqt-globalkeys "
        "lxqt-runner lxqt-policykit lxqt-themes lxqt-qtplugin pcmanfm-qt xfwm4 xscreensaver xsettingsd"
    )
    releases = ("bookworm", "trixie")
    current_desktop = "LXQt"
    session_command = ("startlxqt",)
    xsettings = None

    def version(self):
        return self.package_version("lxqt-session")

    @property
    def folder(self):
        return pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "lxqt"

    def prepare_home(self):
        super().prepare_home()
        self.folder.mkdir(exist_ok=True)
        (self.folder / "session.conf").write_text("[General]\nwindow_manager=xfwm4\n", encoding="utf-8")
        known = [pathlib.Path(folder) / "lxqt" / "panel.conf" for folder in ("/etc/xdg", "/usr/share")]
        self.panel_settings = next(file for file in known if file.exists()).read_text(encoding="utf-8")

    def await_ready(self):
        super().await_ready()
        self.start_locker()

    def _panel(self):
        return self.session.tree.program("lxqt-panel")

    def tray_icon_place(self):
        # Of all plug-ins, the one for the tray has a hidden button "+".
        panel = self._panel()
        for one in panel.walk() if panel else ():
            if one.role() == ROLES["button"] and one.name() == "+":
                icons = [icon for icon in one.parent().children() if "Kelo" in icon.description()]
                x, y, width, height = rectangle_on_screen(icons[0]) if icons else (0, 0, 0, 0)
                if width > 0:
                    return x + width / 2, y + height / 2
        return None

    def _restart_panel(self, pattern, replacement):
        """With another setting. The panel writes down what it knows when it ends, so that is done in between."""
        session = "org.lxqt.session"
        which = GLib.Variant("(s)", ("lxqt-panel.desktop",))
        self.session.bus.call(session, "/LXQtSession", session, "stopModule", which)
        await_that("the panel has ended", lambda: not self._panel())
        pump(1.5)  # until the session has noticed
        self.panel_settings = re.sub(pattern, replacement, self.panel_settings, flags=re.MULTILINE)
        (self.folder / "panel.conf").write_text(self.panel_settings, encoding="utf-8")
        self.session.bus.call(session, "/LXQtSession", session, "startModule", which)
        await_that("the panel is back", self._panel_windows)

    def _panel_windows(self):
        return [one for one in self.windows() if one.program == "lxqt-panel"]

    def without_tray(self):
        self._restart_panel(r"^(plugins=.*?), *statusnotifier, *tray\b", r"\1")
        await_that("the tray is gone", lambda: not self.tray_items())

    def move_panel(self, edge):
        self._restart_panel(r"^position=.*$", f"position={edge.capitalize()}")
        self.await_panel(edge)

    def notifications(self):
        """All of them are in one window. Each has a button "x", and its texts are program, title and body."""
        program = self.session.tree.program("lxqt-notificationd")
        found = []
        for one in program.walk() if program else ():
            parts = one.children()
            if not any(part.role() == ROLES["button"] and part.name() == "x" for part in parts):
                continue
            texts = [part for part in parts if part.role() == ROLES["label"] and part.name()]
            if len(texts) > 1:
                x, y, width, height = rectangle_on_screen(texts[1])
                body = " ".join(part.name() for part in texts[2:])
                found.append((texts[1].name(), body, x + width / 2, y + height / 2))
        return found

    def set_dark(self, is_dark):
        self._set("Net/ThemeName", '"Adwaita-dark"' if is_dark else '"Adwaita"')

    def _set(self, name, value):
        """As its settings for the appearance do: with xsettingsd."""
        self.settings = {**getattr(self, "settings", {}), name: value}
        file = self.folder / "xsettingsd.conf"
        lines = [f"{key} {number}\n" for key, number in self.settings.items()]
        file.write_text("".join(lines), encoding="utf-8")
        if self.xsettings:
            self.xsettings.end()
        self.xsettings = self.session.run("xsettingsd", "-c", file)
        pump(1)

    def set_scale(self, factor):
        if factor == 1.25:
            self._set("Xft/DPI", 120 * 1024)
            return
        self._set("Xft/DPI", 96 * 1024)
        if factor == 2:
            raise NotHere("its scale is a variable of the environment, so it is there after the next login")
