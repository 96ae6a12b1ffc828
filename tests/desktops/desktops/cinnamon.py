"""Cinnamon as cinnamon-session brings it up: Cinnamon on Muffin, its settings daemons, xapp-sn-watcher for the tray,
cinnamon-screensaver."""

import getpass
import json
import os

from desktops.x11 import X11Desktop
from drive.waiting import await_that, pump
from gi.repository import GLib

_INTERFACE = "org.cinnamon.desktop.interface"
_PLACE = "let [x, y] = actor.get_transformed_position(); let [w, h] = actor.get_transformed_size(); "


class Cinnamon(X11Desktop):
    name = "cinnamon"
    title = "Cinnamon"
    packages = (
        f"{X11Desktop.base_packages} cinnamon cinnamon-screensaver xapp-sn-watcher libxapp-gtk3-module metacity-common"
    )
    releases = ("bookworm", "trixie")
    current_desktop = "X-Cinnamon"
    session_command = ("cinnamon-session-cinnamon",)
    asks_for_password = os.getuid() != 0
    locker = None
    starts_at_login = ("xapp-sn-watcher.desktop",)
    services = ("org.cinnamon.ScreenSaver.service",)

    def version(self):
        return self.package_version("cinnamon")

    def prepare_home(self):
        super().prepare_home()
        self.let_password_unlock("cinnamon-screensaver")
        # The lock screen asks the login manager's own tool for its session, and that one asks systemd.
        mock = "org.freedesktop.DBus.Mock"
        session = GLib.Variant("(ssusb)", ("1", "seat0", os.getuid(), getpass.getuser(), True))
        self.session.system.call("org.freedesktop.login1", "/org/freedesktop/login1", mock, "AddSession", session)
        tools = self.session.folder / "tools"
        tools.mkdir()
        (tools / "loginctl").write_text("#!/bin/sh\necho 1\n", encoding="utf-8")
        (tools / "loginctl").chmod(0o755)
        self.session.export(PATH=f"{tools}:{os.environ['PATH']}")

    def ask(self, script):
        """What a script says that runs in Cinnamon itself, where `Main` is."""
        arguments = GLib.Variant("(s)", (f"const Main = imports.ui.main; (() => {{ {script} }})()",))
        worked, answer = self.session.bus.call("org.Cinnamon", "/org/Cinnamon", "org.Cinnamon", "Eval", arguments)
        if not worked:
            raise RuntimeError(f"Cinnamon does not run {script}: {answer}")
        return json.loads(answer) if answer else None

    def tray_icon_place(self):
        return self.ask(
            "for (const panel of Main.panelManager.getPanels()) for (const applet of "
            "imports.ui.appletManager.getRunningInstancesForUuid('xapp-status@cinnamon.org')) "
            "for (const key in applet.statusIcons) { const icon = applet.statusIcons[key]; "
            f"if (icon.proxy.name != 'kelo') continue; const actor = icon.actor; {_PLACE}"
            "return [x + w / 2, y + h / 2]; } return null;"
        )

    def without_tray(self):
        self.run("killall", "xapp-sn-watcher")
        await_that("the tray is gone", lambda: not self.tray_items())

    def move_panel(self, edge):
        self.run("gsettings", "set", "org.cinnamon", "panels-enabled", f"['1:0:{edge}']")
        self.await_panel(edge)

    def notifications(self):
        """Not before it is where it stays."""
        return self.ask(
            "const one = Main.messageTray._notification; const shown = 2; "
            "if (!one || Main.messageTray._notificationState != shown) return []; const actor = one.actor; "
            f"{_PLACE} return [[one.title, one._bodyUrlHighlighter ? one._bodyUrlHighlighter.actor.text : '', "
            "x + w / 2, y + h / 2]];"
        )

    def set_dark(self, is_dark):
        self.run("gsettings", "set", _INTERFACE, "gtk-theme", "Adwaita-dark" if is_dark else "Adwaita")

    def set_scale(self, factor):
        self.run("gsettings", "set", _INTERFACE, "text-scaling-factor", "1.25" if factor == 1.25 else "1.0")
        if factor == 1.25:
            return
        self.rescale(factor)
        monitors = "org.cinnamon.Muffin.DisplayConfig"
        where = monitors, "/org/cinnamon/Muffin/DisplayConfig", monitors
        serial, [(monitor, modes, _more)], _logical, _properties = self.session.bus.call(*where, "GetCurrentState")
        mode = next(one[0] for one in modes if "is-current" in one[6])
        placed = [(0, 0, float(factor), 0, True, [(monitor[0], mode, {})])]
        arguments = GLib.Variant("(uua(iiduba(ssa{sv}))a{sv})", (serial, 1, placed, {}))
        self.session.bus.call(*where, "ApplyMonitorsConfig", arguments)
        pump(2)

    def lock(self):
        """It ends when the theme has changed. The bus would start it with nowhere to print to, which ends it, too."""
        if not self.locker or not self.locker.is_running():
            self.locker = self.session.run("cinnamon-screensaver", log="screensaver")
            self.session.bus.await_name("org.cinnamon.ScreenSaver")

        def lock():
            self.session.run("cinnamon-screensaver-command", "--lock")
            pump(6)
            return self.covered_by("cinnamon-screensaver")

        await_that("the lock screen covers the screen", lock)

    def unlock(self):
        self.press("Shift_L")
        pump(2)
        if self.asks_for_password:
            self.type(self.session.password)
            self.press("Return")
        lockers = ("cinnamon-screensaver", "cs-backup-locker")
        await_that("the lock screen is gone", lambda: not any(self.covered_by(program) for program in lockers))
