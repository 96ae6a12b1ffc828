"""The session around a desktop: home, buses, keyring. scripts/private-desktop has made most of it."""

import os
import pathlib
import sys

from gi.repository import GLib

from drive.bus import Bus
from drive.processes import Process
from drive.tree import Tree
from drive.waiting import await_that

_POLICY = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
    <allow user="*"/>
  </policy>
</busconfig>
"""


class Session:
    """Has `bus` (the session's), `system` (a system bus of its own, with logind on it), `tree`, `folder` for
    files that go with it, and `password`, which the lock screen and PAM take."""

    def __init__(self):
        if "KELO_PRIVATE_DESKTOP_PASSWORD" not in os.environ:
            sys.exit("Start this through scripts/private-desktop: it types and clicks, and must not do so on a "
                     "desktop that somebody uses.")  # fmt: skip
        self.password = os.environ["KELO_PRIVATE_DESKTOP_PASSWORD"]
        self.folder = pathlib.Path(os.environ["KELO_PRIVATE_DESKTOP_FOLDER"])
        self.processes = []
        self.bus = Bus(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        self.system = self._make_system_bus()
        self._tree = None

    @property
    def tree(self):
        """Made when it is first asked for: a desktop may want to be up before the accessibility bus."""
        self._tree = self._tree or Tree(self.bus)
        return self._tree

    def _make_system_bus(self):
        socket = self.folder / "system-bus"
        configuration = self.folder / "system-bus.conf"
        configuration.write_text(_POLICY.format(socket=socket), encoding="utf-8")
        self.run("dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile")
        address = f"unix:path={socket}"

        def connect():
            try:
                return Bus(address)
            except GLib.Error:  # the socket is there before anybody listens
                return None

        bus = await_that("the system bus is there", connect)
        self.export(DBUS_SYSTEM_BUS_ADDRESS=address)
        self.run("/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind")
        bus.await_name("org.freedesktop.login1")
        return bus

    def run(self, *command, environment=None, log=None):
        """Starts a part of the desktop; it ends with us. `environment` is added to ours."""
        name = log or pathlib.Path(str(command[0])).name
        process = Process(command, self.folder / f"{name}.log", {**os.environ, **(environment or {})})
        self.processes.append(process)
        return process

    def export(self, **variables):
        """For everything that is started from now on, by us or by the session's bus."""
        os.environ.update(variables)
        arguments = GLib.Variant("(a{ss})", (variables,))
        bus = "org.freedesktop.DBus"
        self.bus.call(bus, "/org/freedesktop/DBus", bus, "UpdateActivationEnvironment", arguments)

    def end(self):
        for process in reversed(self.processes):
            process.end()
