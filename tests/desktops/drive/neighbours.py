"""Several desktops are installed side by side where they are tried. Some start parts of themselves in the sessions of
others: at login, or when somebody asks the bus for a service that each of them has."""

import os
import pathlib
import re
import shutil

_SERVICES = pathlib.Path("/usr/share/dbus-1/services")
_SHARED = ("*ScreenSaver*.service", "*Notifications*.service")
_AT_LOGIN = (
    "light-locker.desktop",
    "lxqt-xscreensaver-autostart.desktop",
    "nm-applet.desktop",
    "pulseaudio.desktop",
    "xapp-sn-watcher.desktop",
    "xscreensaver.desktop",
)


def keep_away(session, own, own_at_login=()):
    """Lets nothing start but what a system with this desktop alone would. `own` and `own_at_login`: its files for the
    bus and for the start of a session."""
    folder = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "autostart"
    folder.mkdir(parents=True, exist_ok=True)
    for entry in set(_AT_LOGIN) - set(own_at_login):
        (folder / entry).write_text("[Desktop Entry]\nType=Application\nName=x\nHidden=true\n", encoding="utf-8")
    services = pathlib.Path(os.environ["XDG_DATA_HOME"]) / "dbus-1" / "services"
    services.mkdir(parents=True, exist_ok=True)
    kept = {}
    for file in sorted({file for pattern in _SHARED for file in _SERVICES.glob(pattern)}):
        name = re.search(r"^Name=(.+)$", file.read_text(encoding="utf-8"), re.MULTILINE)[1]
        kept[name] = file if file.name in own else kept.get(name)
    for name, file in kept.items():
        ours = services / f"{name}.service"
        if file:
            shutil.copy(file, ours)
        else:
            ours.write_text(f"[D-BUS Service]\nName={name}\nExec=/bin/false\n", encoding="utf-8")
    session.bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig")
