"""XFCE as startxfce4 brings it up: xfwm4, xfsettingsd, xfce4-panel with its first layout, xfdesktop, xfce4-notifyd. Of
the lock screens that Debian offers with it, the one that needs no other console: xscreensaver."""

from desktops.x11 import X11Desktop
from desktops.xscreensaver import XScreenSaver
from drive.notices import notifications_of
from drive.tree import ROLES
from drive.waiting import await_that

_PLACES = {"top": ("p=6;x=640;y=13", 0), "bottom": ("p=8;x=640;y=787", 0), "left": ("p=6;x=13;y=400", 1)}


class Xfce(XScreenSaver, X11Desktop):
    name = "xfce"
    title = "XFCE"
    packages = (
        f"{X11Desktop.base_packages} xfce4-session xfwm4 xfce4-panel xfce4-settings xfdesktop4 xfce4-notifyd thunar "
        "xscreensaver"
    )
    releases = ("bookworm", "trixie")
    current_desktop = "XFCE"
    session_command = ("startxfce4",)
    services = ("org.xfce.xfce4-notifyd.Notifications.service",)

    def version(self):
        return self.package_version("xfce4-session")

    def await_ready(self):
        super().await_ready()
        await_that("the tray is drawn", lambda: self.plug_of("wrapper-2.0"))
        self.start_locker()

    def tray_icon_place(self):
        # The other plug-ins with a window of their own come behind it.
        return self.plug_of("wrapper-2.0")

    def without_tray(self):
        plugins = self.run("xfconf-query", "-c", "xfce4-panel", "-p", "/plugins", "-lv").splitlines()
        tray = next(line.split("-")[1].split()[0] for line in plugins if line.split()[-1] == "systray")
        known = self.run("xfconf-query", "-c", "xfce4-panel", "-p", "/panels/panel-1/plugin-ids").split("\n\n")[1]
        kept = [number for number in known.split() if number != tray]
        arguments = [word for number in kept for word in ("-t", "int", "-s", number)]
        self.run("xfconf-query", "-c", "xfce4-panel", "-p", "/panels/panel-1/plugin-ids", "--force-array", *arguments)
        self.run("xfce4-panel", "--restart")
        await_that("the tray is gone", lambda: not self.tray_items())

    def move_panel(self, edge):
        place, mode = _PLACES[edge]
        self.run("xfconf-query", "-c", "xfce4-panel", "-p", "/panels/panel-1/mode", "-n", "-t", "int", "-s", str(mode))
        self.run("xfconf-query", "-c", "xfce4-panel", "-p", "/panels/panel-1/position", "-s", place)
        self.await_panel(edge)

    def notifications(self):
        """A click on the text does nothing but close it: what it does elsewhere is the first button here."""

        def first_button(window):
            return next((one for one in window.walk() if one.role() == ROLES["button"] and one.is_shown()), None)

        return notifications_of(self, "xfce4-notifyd", first_button)

    def _set(self, name, kind, value):
        self.run("xfconf-query", "-c", "xsettings", "-p", name, "-n", "-t", kind, "-s", str(value))

    def set_dark(self, is_dark):
        self._set("/Net/ThemeName", "string", "Adwaita-dark" if is_dark else "Xfce")

    def set_scale(self, factor):
        if factor == 1.25:
            self._set("/Xft/DPI", "int", 120)
            return
        self._set("/Xft/DPI", "int", 96)
        self._set("/Gdk/WindowScalingFactor", "int", factor)
        self.rescale(factor)
