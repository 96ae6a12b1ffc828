"""A message bus, with calls that wait for their reply."""

from gi.repository import Gio, GLib

from drive.waiting import await_that

PATIENCE = 10_000  # milliseconds


class Refused(Exception):
    """The other side answered with an error, or not at all."""


class Bus:
    def __init__(self, address):
        self.address = address
        self.connection = Gio.DBusConnection.new_for_address_sync(
            address,
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None,
            None,
        )

    def call(self, name, path, interface, method, arguments=None, patience=PATIENCE):
        """The reply as a tuple of Python values. `arguments` is a GLib.Variant of a tuple."""
        try:
            reply = self.connection.call_sync(
                name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, patience, None
            )
        except GLib.Error as error:
            raise Refused(f"{interface}.{method}: {error.message}") from error
        return reply.unpack()

    def get(self, name, path, interface, prop):
        arguments = GLib.Variant("(ss)", (interface, prop))
        return self.call(name, path, "org.freedesktop.DBus.Properties", "Get", arguments)[0]

    def put(self, name, path, interface, prop, value):
        arguments = GLib.Variant("(ssv)", (interface, prop, value))
        self.call(name, path, "org.freedesktop.DBus.Properties", "Set", arguments)

    def names(self):
        bus = "org.freedesktop.DBus"
        return self.call(bus, "/org/freedesktop/DBus", bus, "ListNames")[0]

    def await_name(self, name, deadline=60):
        await_that(f"{name} is on the bus", lambda: name in self.names(), deadline)

    def listen(self, handler, name=None, interface=None, signal=None, path=None):
        """Calls handler(path, signal, arguments) for each such signal, while the main loop runs."""
        self.connection.signal_subscribe(
            name,
            interface,
            signal,
            path,
            None,
            Gio.DBusSignalFlags.NONE,
            lambda _bus, _sender, where, _interface, what, arguments: handler(where, what, arguments.unpack()),
        )
