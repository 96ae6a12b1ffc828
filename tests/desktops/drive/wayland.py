"""The wire of a Wayland compositor: messages out and in, and descriptors beside them. What the objects mean is up to
who uses it: interfaces are named, requests and events are the numbers that they have in the protocol's file."""

import os
import pathlib
import socket
import struct

from drive.waiting import DEADLINE

NEW = object()  # among the arguments of a request: the number of the object that it makes
_DISPLAY = 1
_HEADER = struct.Struct("=II")


class Descriptor(int):
    """An open file that goes with a request. It stays the caller's, who may close it afterwards."""


class WireError(Exception):
    """The compositor has refused a request, lacks what was asked for, or is gone."""


def _padded(content):
    return struct.pack("=I", len(content)) + content + b"\0" * (-len(content) % 4)


def _encoded(argument):
    """Integers of either sign and objects are 32 bits, a float is the protocol's fixed-point number, None is no
    object, bytes are an array."""
    if argument is None:
        return struct.pack("=I", 0)
    if isinstance(argument, str):
        return _padded(argument.encode() + b"\0")
    if isinstance(argument, bytes):
        return _padded(argument)
    number = round(argument * 256) if isinstance(argument, float) else int(argument)
    return struct.pack("=I", number & 0xFFFFFFFF)


class Event:
    """What the compositor tells of an object. The arguments are read in their order, each by its type."""

    def __init__(self, number, content):
        self.number = number
        self.content = content

    def _take(self, size):
        taken, self.content = self.content[:size], self.content[size:]
        return taken

    def unsigned(self):
        return struct.unpack("=I", self._take(4))[0]

    def signed(self):
        return struct.unpack("=i", self._take(4))[0]

    def fixed(self):
        return self.signed() / 256

    def array(self):
        size = self.unsigned()
        return self._take(size + -size % 4)[:size]

    def text(self):
        return self.array()[:-1].decode()


class WaylandConnection:
    """A client of the compositor. Nothing is read behind the caller's back: events arrive during round_trip()."""

    def __init__(self, path=None):
        """`path`: the socket; without it, the one that the environment names."""
        default = pathlib.Path(os.environ.get("XDG_RUNTIME_DIR", "/")) / os.environ.get("WAYLAND_DISPLAY", "wayland-0")
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.settimeout(DEADLINE)
        self.socket.connect(str(path or default))
        self.received = b""
        self.last = _DISPLAY
        self.free = []
        self.handlers = {_DISPLAY: self._display_event}
        self.globals = {}  # number: (interface, version), in the order in which they came
        self.registry = self.send(_DISPLAY, 1, NEW)
        self.handlers[self.registry] = self._registry_event
        self.round_trip()

    def close(self):
        self.socket.close()

    def send(self, target, request, *arguments):
        """Returns the number of the object that the request makes, if it makes one."""
        content = b""
        descriptors = []
        made = None
        for argument in arguments:
            if isinstance(argument, Descriptor):
                descriptors.append(argument)
                continue
            if argument is NEW:
                argument = made = self._new_number()
            content += _encoded(argument)
        message = _HEADER.pack(target, (_HEADER.size + len(content)) << 16 | request) + content
        sent = socket.send_fds(self.socket, [message], descriptors) if descriptors else 0
        self.socket.sendall(message[sent:])
        return made

    def listen(self, target, handler):
        """Calls handler(event) for each event of this object."""
        self.handlers[target] = handler

    def named(self, interface):
        """The numbers of all globals of this kind that are there now, in the order in which they came."""
        return [number for number, (name, _version) in self.globals.items() if name == interface]

    def bind(self, interface, version=1, number=None):
        """An object for a global: for the first of its kind, unless `number` says which."""
        offered = self.named(interface)
        if number is None and not offered:
            raise WireError(f"The compositor has no {interface}.")
        number = number or offered[0]
        version = min(version, self.globals[number][1])
        return self.send(self.registry, 0, number, interface, version, NEW)

    def round_trip(self):
        """Returns when the compositor has dealt with all requests so far, and handlers with what it has said."""
        answered = []
        callback = self.send(_DISPLAY, 0, NEW)
        self.listen(callback, answered.append)
        while not answered:
            self._read()

    def _new_number(self):
        if self.free:
            return self.free.pop()
        self.last += 1
        return self.last

    def _read(self):
        content, descriptors, _flags, _from = socket.recv_fds(self.socket, 65536, 28)
        # None of the objects that are used here needs one.
        for descriptor in descriptors:
            os.close(descriptor)
        if not content:
            raise WireError("The compositor has closed the connection.")
        self.received += content
        while len(self.received) >= _HEADER.size:
            target, word = _HEADER.unpack_from(self.received)
            size = word >> 16
            if len(self.received) < size:
                return
            event = Event(word & 0xFFFF, self.received[_HEADER.size : size])
            self.received = self.received[size:]
            self.handlers.get(target, lambda _event: None)(event)

    def _display_event(self, event):
        number = event.unsigned()
        if event.number == 0:
            raise WireError(f"The compositor refuses object {number}, code {event.unsigned()}: {event.text()}")
        # An object is gone, and its number may be used anew.
        self.handlers.pop(number, None)
        self.free.append(number)

    def _registry_event(self, event):
        number = event.unsigned()
        if event.number == 0:
            self.globals[number] = (event.text(), event.unsigned())
        else:
            self.globals.pop(number, None)
