"""What KWin offers to programs that it lets: input like that of devices, and the list of windows by way of its scripts.
Pictures are those of the X server that it is drawn by. Requests are numbered as in the protocol fake-input of KDE."""

import ctypes
import json
import pathlib
import struct
import zlib

from gi.repository import Gio, GLib

from drive.bus import Refused
from drive.waiting import await_that

KWIN = "org.kde.KWin"


class FakeInput:
    """Real input to everything above the devices' drivers: shortcuts, focus and grabs included."""

    _AUTHENTICATE, _BUTTON, _MOVE, _KEY = 0, 2, 9, 10

    def __init__(self, wayland):
        self.wayland = wayland
        self.device = wayland.bind("org_kde_kwin_fake_input", 4)
        self._send(self._AUTHENTICATE, "tests", "tries a program on this desktop")

    def _send(self, request, *arguments):
        self.wayland.send(self.device, request, *arguments)
        self.wayland.round_trip()

    def turn_key(self, code, is_down):
        self._send(self._KEY, code, int(is_down))

    def turn_button(self, code, is_down):
        self._send(self._BUTTON, code, int(is_down))

    def move_to(self, x, y):
        self._send(self._MOVE, float(x), float(y))


def write_png(file, width, height, rows):
    """`rows`: for each, 3 bytes a pixel: red, green and blue."""

    def chunk(kind, content):
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

    head = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    body = zlib.compress(b"".join(b"\0" + row for row in rows), 6)
    content = b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", body) + chunk(b"IEND", b"")
    pathlib.Path(file).write_bytes(content)


def write_picture(file, width, height, stride, pixels):
    """`pixels`: 4 bytes each: blue, green, red, and one that does not count."""

    def row(number):
        line = pixels[number * stride : number * stride + 4 * width]
        colours = bytearray(3 * width)
        colours[0::3], colours[1::3], colours[2::3] = line[2::4], line[1::4], line[0::4]
        return bytes(colours)

    write_png(file, width, height, [row(number) for number in range(height)])


def read_xvfb(file):
    """Width, height, bytes a line and pixels of the screen that Xvfb keeps in this file, as xwd writes it."""
    content = pathlib.Path(file).read_bytes()
    numbers = struct.unpack(">25I", content[:100])
    header, width, height, stride, colours = numbers[0], numbers[4], numbers[5], numbers[12], numbers[19]
    begin = header + 12 * colours
    return width, height, stride, content[begin : begin + stride * height]


class X11Pointer:
    """The pointer of the X server that a nested KWin is drawn by."""

    def __init__(self, name):
        self.library = ctypes.CDLL("libX11.so.6")
        for function in ("XOpenDisplay", "XDefaultRootWindow"):
            getattr(self.library, function).restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.library.XOpenDisplay(name.encode()))
        self.root = ctypes.c_void_p(self.library.XDefaultRootWindow(self.display))

    def move_to(self, x, y):
        self.library.XWarpPointer(self.display, None, self.root, 0, 0, 0, 0, x, y)
        self.library.XSync(self.display, 0)


_WINDOWS = """
const all = workspace.windowList ? workspace.windowList() : workspace.clientList();
const active = workspace.windowList ? workspace.activeWindow : workspace.activeClient;
const isShown = one => !one.minimized && !one.deleted && !one.hidden;
// Without the frame that KWin draws around what the program draws, and without the shadow that the program draws.
const inside = one => {
    const frame = one.frameGeometry, drawn = one.bufferGeometry;
    return drawn.width <= frame.width && drawn.height <= frame.height ? drawn : frame;
};
const told = all.filter(isShown).map(one => {
    const place = inside(one);
    return { title: one.caption, pid: one.pid, x: place.x, y: place.y, width: place.width, height: place.height,
             active: one === active, full: one.fullScreen, program: String(one.resourceClass),
             above: one.stackingOrder, dock: one.dock, notice: one.notification || one.criticalNotification };
});
"""
_WORK_AREA = """
const screen = workspace.windowList ? workspace.activeScreen : 0;
const { x, y, width, height } = workspace.clientArea(KWin.MaximizeArea, screen, workspace.currentDesktop);
const told = [x, y, width, height];
"""
_TELLING = """
callDBus("%(name)s", "%(path)s", "%(interface)s", "Told", "%(token)s", JSON.stringify(told));
"""
_INTERFACE = "app.example.Windows"
_PATH = "/windows"
_DESCRIPTION = f"""<node><interface name="{_INTERFACE}"><method name="Told"><arg type="s" direction="in"/>
<arg type="s" direction="in"/></method></interface></node>"""


class WindowList:
    """Asks KWin for its windows, and what they have for themselves, with a script that it is given each time."""

    def __init__(self, bus, folder):
        self.bus = bus
        self.script = folder / "windows.js"
        self.count = 0
        self.told = {}
        interface = Gio.DBusNodeInfo.new_for_xml(_DESCRIPTION).interfaces[0]
        bus.connection.register_object(_PATH, interface, self._called, None, None)

    def _called(self, _bus, _sender, _path, _interface, _method, arguments, invocation):
        token, text = arguments.unpack()
        self.told[token] = json.loads(text)
        invocation.return_value(None)

    def now(self):
        """As dictionaries."""
        return self._ask(_WINDOWS)

    def work_area(self):
        return tuple(self._ask(_WORK_AREA))

    def _ask(self, code):
        self.count += 1
        token = f"windows{self.count}"
        words = {"name": self.bus.connection.get_unique_name(), "path": _PATH, "interface": _INTERFACE, "token": token}
        self.script.write_text(code + _TELLING % words, encoding="utf-8")
        arguments = GLib.Variant("(ss)", (str(self.script), token))
        number = self._scripting("loadScript", arguments)[0]
        self._run(number)
        try:
            await_that("KWin lists its windows", lambda: token in self.told)
            return self.told.pop(token)
        finally:
            self._scripting("unloadScript", GLib.Variant("(s)", (token,)))

    def _scripting(self, method, arguments):
        return self.bus.call(KWIN, "/Scripting", "org.kde.kwin.Scripting", method, arguments)

    def _run(self, number):
        for path in (f"/Scripting/Script{number}", f"/{number}"):  # of version 6, of version 5
            try:
                return self.bus.call(KWIN, path, "org.kde.kwin.Script", "run")
            except Refused:
                continue
        raise Refused("KWin does not run its script")
