"""MATE as mate-session brings it up: marco, mate-settings-daemon, mate-panel with its first layout (the notification
area is the tray), caja, mate-notification-daemon, mate-screensaver."""

import ast
import os

from desktops.x11 import X11Desktop
from drive.notices import notifications_of
from drive.waiting import await_that, pump


class Mate(X11Desktop):
    name = "mate"
    title = "MATE"
    packages = (
        f"{X11Desktop.base_packages} mate-session-manager marco mate-settings-daemon mate-panel mate-themes "
        "mate-polkit mate-notification-daemon mate-screensaver caja mate-control-center"
    )
    releases = ("bookworm", "trixie")
    current_desktop = "MATE"
    session_command = ("mate-session",)
    services = ("org.freedesktop.mate.Notifications.service", "org.mate.ScreenSaver.service")

    asks_for_password = os.getuid() != 0

    def version(self):
        return self.package_version("mate-panel")

    def prepare_home(self):
        super().prepare_home()
        self.let_password_unlock("mate-screensaver")

    def tray_icon_place(self):
        return self.plug_of("notification-area-applet")

    def without_tray(self):
        objects = ast.literal_eval(self.run("gsettings", "get", "org.mate.panel", "object-id-list"))
        kept = [name for name in objects if name != "notification-area"]
        self.run("gsettings", "set", "org.mate.panel", "object-id-list", str(kept))
        await_that("the tray is gone", lambda: not self.tray_items())

    def move_panel(self, edge):
        path = "org.mate.panel.toplevel:/org/mate/panel/toplevels/bottom/"
        self.run("gsettings", "set", path, "orientation", edge)
        self.await_panel(edge)

    def notifications(self):
        return notifications_of(self, "mate-notification-daemon")

    def set_dark(self, is_dark):
        self.run("gsettings", "set", "org.mate.interface", "gtk-theme", "Adwaita-dark" if is_dark else "Menta")

    def set_scale(self, factor):
        dpi = 120.0 if factor == 1.25 else 0.0
        self.run("gsettings", "set", "org.mate.font-rendering", "dpi", str(dpi))
        if factor != 1.25:
            self.run("gsettings", "set", "org.mate.interface", "window-scaling-factor", str(factor))
            self.rescale(factor)

    def lock(self):
        self.run("mate-screensaver-command", "--lock")
        await_that("the lock screen covers the screen", lambda: self.covered_by("mate-screensaver"))
        pump(1)

    def unlock(self):
        self.press("Shift_L")
        pump(2)
        if self.covered_by("mate-screensaver"):  # root is not asked for a password
            self.type(self.session.password)
            self.press("Return")
        await_that("the lock screen is gone", lambda: not self.covered_by("mate-screensaver"))
