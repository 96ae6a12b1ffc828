"""GNOME Shell on Wayland, without a screen. It is asked to run code of ours (its unsafe mode), which tells where
windows and menus are; keys and the pointer come through the interface for remote desktops, as from real devices."""

import contextlib
import json
import os
import pathlib
import subprocess

from gi.repository import GLib

from desktops.base import Desktop, NotHere, Window
from drive.bus import Refused
from drive.waiting import Missed, await_that, pump

_SHELL = "org.gnome.Shell"
_REMOTE = "org.gnome.Mutter.RemoteDesktop"
_DISPLAYS = "org.gnome.Mutter.DisplayConfig"
_EXTENSION = "ubuntu-appindicators@ubuntu.com"
_MOCK = "org.freedesktop.DBus.Mock"
_INTERFACE = "org.gnome.desktop.interface"

_ASKING = "Add Keyboard Shortcuts"
_ASKING_PROGRAM = "gnome-control-center-global-shortcuts-provider"

# The middle of an actor on the screen, in the units of windows.
_MIDDLE = """
const middle = actor => {
    const [x, y] = actor.get_transformed_position();
    const [width, height] = actor.get_transformed_size();
    return [x + width / 2, y + height / 2];
};
"""

_WINDOWS = """
global.get_window_actors().map((actor, place) => {
    const window = actor.meta_window;
    const frame = window.get_frame_rect();
    return {
        title: window.get_title() || '', pid: window.get_pid(), x: frame.x, y: frame.y, width: frame.width,
        height: frame.height, has_keyboard: window.has_focus() && global.stage.key_focus === null,
        is_full_screen: window.is_fullscreen(), program: window.get_gtk_application_id() || window.get_wm_class() || '',
        above: place,
    };
})
"""


class Gnome(Desktop):
    packages = (
        "gnome-shell gnome-shell-extension-appindicator xdg-desktop-portal xdg-desktop-portal-gnome "
        "gnome-session-bin gnome-settings-daemon gnome-control-center adwaita-icon-theme fonts-cantarell "
        "dconf-gsettings-backend pipewire wireplumber libglib2.0-bin gir1.2-gtk-4.0"
    )
    # So that there are points enough at 200 %, which the shell otherwise does not offer.
    width, height = 1920, 1200
    display = "wayland-kelo"
    panel_status = "this Wayland desktop has no layer shell"

    def start(self):
        self.session.export(
            XDG_CURRENT_DESKTOP="GNOME",
            XDG_SESSION_DESKTOP="gnome",
            XDG_SESSION_TYPE="wayland",
            XDG_SESSION_CLASS="user",
            DESKTOP_SESSION="gnome",
            XDG_MENU_PREFIX="gnome-",
            GNOME_KEYRING_CONTROL=os.environ["XDG_RUNTIME_DIR"] + "/keyring",
        )
        self._make_login_session()
        self.set(_SHELL.lower(), "enabled-extensions", f"['{_EXTENSION}']")
        self.set(_SHELL.lower(), "welcome-dialog-last-shown-version", "'99'")
        # Points of windows are then the same whatever the scale, and there are fractions of it.
        self.set("org.gnome.mutter", "experimental-features", "['scale-monitor-framebuffer']")
        self.set("org.gnome.desktop.session", "idle-delay", "0")
        self.set(_INTERFACE, "enable-hot-corners", "false")
        self.session.run("pipewire")
        self.session.run("wireplumber")
        self._start_shell()
        self._take_devices()
        self.evaluate("Main.overview.hide()")
        await_that("the overview is gone", lambda: self._is("!Main.overview.visible"))
        self._close_notifications()

    def _start_shell(self):
        for attempt in range(3):
            shell = self.session.run(
                "gnome-shell",
                *("--headless", "--unsafe-mode", "--no-x11", "--wayland", "--wayland-display", self.display),
                *("--virtual-monitor", f"{self.width}x{self.height}"),
            )
            try:
                self.session.bus.await_name("org.gnome.Shell")
                self.session.export(WAYLAND_DISPLAY=self.display)
                await_that("the shell has started", lambda: self._is("!Main.layoutManager._startingUp"))
                return
            except Missed:
                # On a busy machine it now and then stops for good while it starts a program of its own.
                shell.child.kill()
                if attempt == 2:
                    raise

    def version(self):
        return self.session.bus.get(_SHELL, "/org/gnome/Shell", _SHELL, "ShellVersion")

    def evaluate(self, code):
        """The value of the code's last expression, run inside the shell."""
        arguments = GLib.Variant("(s)", (code,))
        done, value = self.session.bus.call(_SHELL, "/org/gnome/Shell", _SHELL, "Eval", arguments)
        if not done:
            raise Refused(f"The shell says: {value}")
        return json.loads(value) if value else None

    def _is(self, expression):
        try:
            return self.evaluate(expression)
        except Refused:
            return False

    def set(self, schema, key, value):
        """A setting, in the way of every program of this desktop."""
        subprocess.run(["gsettings", "set", schema, key, value], check=True)

    def _make_login_session(self):
        """The session that logind knows, and the display manager without which the shell does not lock the screen."""
        system = self.session.system
        # "auto" is what programs ask logind for when they mean their own session.
        session = GLib.Variant("(ssusb)", ("auto", "seat0", os.getuid(), "root", True))
        system.call("org.freedesktop.login1", "/org/freedesktop/login1", _MOCK, "AddSession", session)
        self.session.export(XDG_SESSION_ID="auto")
        # By this folder the shell sees that there is a logind to tell of the lock. It can be made in a container.
        with contextlib.suppress(OSError):
            pathlib.Path("/run/systemd/seats").mkdir(parents=True, exist_ok=True)
        manager, where = "org.gnome.DisplayManager", "/org/gnome/DisplayManager/Manager"
        self.session.run(
            *("/usr/bin/python3", "-m", "dbusmock", "--system", manager, where, f"{manager}.Manager"),
            log="display-manager",
        )
        system.await_name(manager)
        version = GLib.Variant("(ssv)", (f"{manager}.Manager", "Version", GLib.Variant("s", "48.0")))
        system.call(manager, where, _MOCK, "AddProperty", version)

    def _close_notifications(self):
        """The shell's own, for instance that it runs as root."""
        self.evaluate("Main.messageTray.getSources().forEach(source => source.destroy()); 0")

    # --- input -----------------------------------------------------------------------------------

    def _take_devices(self):
        bus = self.session.bus
        path = "/org/gnome/Mutter/RemoteDesktop"
        bus.await_name(_REMOTE)
        self.devices = bus.call(_REMOTE, path, _REMOTE, "CreateSession")[0]
        self._device("Start")
        # With its first key the keyboard comes into being, and programs miss that key.
        self.press("Shift_L")

    def _device(self, method, arguments=None):
        self.session.bus.call(_REMOTE, self.devices, f"{_REMOTE}.Session", method, arguments)

    def turn_key(self, code, is_down):
        self._device("NotifyKeyboardKeycode", GLib.Variant("(ub)", (code, is_down)))

    def turn_button(self, code, is_down):
        self._device("NotifyPointerButton", GLib.Variant("(ib)", (code, is_down)))

    def move_to(self, x, y):
        def move():
            from_x, from_y, _modifiers = self.evaluate("global.get_pointer()")
            if abs(from_x - x) < 1 and abs(from_y - y) < 1:
                return True
            self._device("NotifyPointerMotionRelative", GLib.Variant("(dd)", (x - from_x, y - from_y)))
            return False

        # The edges of the screen hold the pointer back for a while.
        await_that("the pointer is there", move)

    # --- looking -----------------------------------------------------------------------------------

    def picture(self, file):
        shot = f"{_SHELL}.Screenshot"
        arguments = GLib.Variant("(bbs)", (False, False, str(file)))
        self.session.bus.call(shot, "/org/gnome/Shell/Screenshot", shot, "Screenshot", arguments)

    def windows(self):
        return [Window(**window) for window in self.evaluate(_WINDOWS)]

    def space(self):
        return tuple(self.evaluate("[global.screen_width, global.screen_height]"))

    def work_area(self):
        area = self.evaluate(
            "(() => { const area = Main.layoutManager.getWorkAreaForMonitor(0);"
            " return [area.x, area.y, area.width, area.height]; })()"
        )
        return tuple(area)

    # --- the desktop's own settings and parts ------------------------------------------------------

    def tray_icon(self, program="Kelo"):
        return self._shell_value(
            "(() => { const item = Object.entries(Main.panel.statusArea).find(([name, item]) =>"
            f" name.startsWith('appindicator-') && item?.visible && item.accessible_name === {json.dumps(program)});"
            " return item ? middle(item[1]) : null; })()"
        )

    def tray_menu(self):
        entries = self._shell_value(
            "Object.entries(Main.panel.statusArea)"
            ".filter(([name, item]) => name.startsWith('appindicator-') && item?.menu?.isOpen)"
            ".flatMap(([, item]) => item.menu._getMenuItems())"
            ".filter(entry => entry.visible && entry.label?.text)"
            ".map(entry => [entry.label.text, ...middle(entry)])"
        )
        return [tuple(entry) for entry in entries]

    def without_tray(self):
        self.set(_SHELL.lower(), "enabled-extensions", "[]")
        watcher = "org.kde.StatusNotifierWatcher"
        await_that("the tray is gone", lambda: watcher not in self.session.bus.names())

    def notifications(self):
        shown = self._shell_value(
            "(tray => tray._notification && tray._banner && tray._notificationState === 2"  # it has stopped moving
            " ? [[tray._notification.title, tray._notification.body ?? tray._notification.bannerBodyText ?? '',"
            " ...middle(tray._banner)]] : [])(Main.messageTray)"
        )
        return [tuple(one) for one in shown if None not in one]  # it has no place before it is laid out

    def set_dark(self, is_dark):
        self.set(_INTERFACE, "color-scheme", "prefer-dark" if is_dark else "default")

    def set_scale(self, factor):
        where = "/org/gnome/Mutter/DisplayConfig"
        serial, monitors, _logical, _properties = self.session.bus.call(_DISPLAYS, where, _DISPLAYS, "GetCurrentState")
        (connector, *_names), modes, _more = monitors[0]
        mode = next(mode for mode in modes if mode[6].get("is-current"))
        # Not each factor makes whole points of this many pixels; the shell names those that are close.
        scale = min(mode[5], key=lambda offered: abs(offered - factor))
        temporary = 1
        screen = [(0, 0, scale, 0, True, [(connector, mode[0], {})])]
        arguments = GLib.Variant("(uua(iiduba(ssa{sv}))a{sv})", (serial, temporary, screen, {}))
        self.session.bus.call(_DISPLAYS, where, _DISPLAYS, "ApplyMonitorsConfig", arguments)
        width = round(self.width / scale)
        await_that("the scale is set", lambda: self._is(f"global.screen_width === {width}"))

    def lock(self):
        self.evaluate("Main.screenShield.lock(true); 0")
        await_that("the screen is locked", lambda: self._is("Main.screenShield.locked"))

        def is_bright():
            """The shell darkens the screen when it locks, until somebody comes."""
            self.press("Shift_L")
            return self._is("!Main.screenShield._shortLightbox.active")

        await_that("the lock screen is shown", is_bright)

    def unlock(self):
        """As after the right password, which the display manager would check."""
        self.evaluate("Main.screenShield._continueDeactivate(false); 0")
        await_that("the screen is open", lambda: self._is("!Main.screenShield.locked && !Main.screenShield.active"))

    def _shell_value(self, code):
        return self.evaluate(_MIDDLE + code)


class Gnome48(Gnome):
    name = "gnome-48"
    title = "GNOME Shell"
    releases = ("trixie",)

    def set_accent(self, name):
        self.set(_INTERFACE, "accent-color", name)

    def await_shortcut_dialog(self):
        self.session.tree.await_one("button", "Add", _ASKING_PROGRAM)
        has_keyboard = f"global.display.focus_window?.title === '{_ASKING}'"
        await_that("the dialog has the keyboard", lambda: self._is(has_keyboard))
        return True

    def answer_shortcut_dialog(self):
        tree = self.session.tree

        def add():
            return tree.find("button", "Add", _ASKING_PROGRAM)

        for _ in range(10):
            button = add()
            if not button or button.is_focused():
                break
            self.press("Shift_L", "Tab")
            pump(0.3)
        if add():
            self.press("Return")
            tree.await_gone("button", "Add", _ASKING_PROGRAM)
        return "the desktop asks once, when Kelo is first started; a press and its release are told"


class Gnome43(Gnome):
    name = "gnome-43"
    title = "GNOME Shell"
    releases = ("bookworm",)
    sends_tokens = False  # but a time in the way of X11, which counts for nothing on Wayland

    def set_accent(self, name):
        raise NotHere("GNOME has accent colours since 47")

    def answer_shortcut_dialog(self):
        raise NotHere("GNOME's portal has global shortcuts since 48")
