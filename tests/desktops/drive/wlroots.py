"""What compositors that are made with wlroots offer to any program: a keyboard and a pointer that others cannot tell
from real ones, and the list of windows. Requests are numbered as in virtual-keyboard-unstable-v1,
wlr-virtual-pointer-unstable-v1 and wlr-foreign-toplevel-management-unstable-v1."""

import ctypes
import os
import time

from drive.wayland import NEW, Descriptor

_FIXED_POINT = 64  # parts of a point that the pointer can be moved by


def _milliseconds():
    return int(time.monotonic() * 1000) & 0xFFFFFFFF


class _UsKeymap:
    """libxkbcommon's, because the one who plugs a virtual keyboard in also says what its keys mean, and which
    modifiers are down."""

    _DEPRESSED = 1
    _TEXT = 1

    def __init__(self):
        library = ctypes.CDLL("libxkbcommon.so.0")
        for name, result, *arguments in (
            ("xkb_context_new", ctypes.c_void_p, ctypes.c_int),
            ("xkb_keymap_new_from_names", ctypes.c_void_p, ctypes.c_void_p, ctypes.c_void_p, ctypes.c_int),
            ("xkb_keymap_get_as_string", ctypes.c_char_p, ctypes.c_void_p, ctypes.c_int),
            ("xkb_state_new", ctypes.c_void_p, ctypes.c_void_p),
            ("xkb_state_update_key", ctypes.c_int, ctypes.c_void_p, ctypes.c_uint32, ctypes.c_int),
            ("xkb_state_serialize_mods", ctypes.c_uint32, ctypes.c_void_p, ctypes.c_int),
        ):
            function = getattr(library, name)
            function.restype, function.argtypes = result, arguments
        self.library = library
        keymap = library.xkb_keymap_new_from_names(library.xkb_context_new(0), None, 0)
        self.text = library.xkb_keymap_get_as_string(keymap, self._TEXT)
        self.state = library.xkb_state_new(keymap)

    def turn(self, code, is_down):
        """Returns the modifiers that are down afterwards."""
        self.library.xkb_state_update_key(self.state, code + 8, int(is_down))
        return self.library.xkb_state_serialize_mods(self.state, self._DEPRESSED)


class Keyboard:
    def __init__(self, wayland):
        self.wayland = wayland
        self.keymap = _UsKeymap()
        manager = wayland.bind("zwp_virtual_keyboard_manager_v1")
        self.device = wayland.send(manager, 0, wayland.bind("wl_seat"), NEW)
        text = self.keymap.text + b"\0"
        file = os.memfd_create("keymap")
        os.write(file, text)
        wayland.send(self.device, 0, 1, Descriptor(file), len(text))
        os.close(file)
        wayland.round_trip()

    def turn(self, code, is_down):
        """`code` is the kernel's number."""
        self.wayland.send(self.device, 1, _milliseconds(), code, int(is_down))
        self.wayland.send(self.device, 2, self.keymap.turn(code, is_down), 0, 0, 0)
        self.wayland.round_trip()


class Pointer:
    def __init__(self, wayland):
        self.wayland = wayland
        manager = wayland.bind("zwlr_virtual_pointer_manager_v1")
        self.device = wayland.send(manager, 0, wayland.bind("wl_seat"), NEW)
        wayland.round_trip()

    def _end_of_frame(self):
        self.wayland.send(self.device, 4)
        self.wayland.round_trip()

    def move_to(self, x, y, width, height):
        """To a point of the space that all outputs take up together, whose size is given."""
        numbers = [round(number * _FIXED_POINT) for number in (x, y, width, height)]
        self.wayland.send(self.device, 1, _milliseconds(), *numbers)
        self._end_of_frame()

    def turn(self, button, is_down):
        self.wayland.send(self.device, 2, _milliseconds(), button, int(is_down))
        self._end_of_frame()


class Toplevel:
    """A window as its compositor tells of it to anybody: not where it is."""

    ACTIVATED = 2
    FULL_SCREEN = 3

    def __init__(self, number):
        self.number = number
        self.title = ""
        self.program = ""
        self.states = ()


class Toplevels:
    """All windows, without the surfaces of the layer shell."""

    def __init__(self, wayland):
        self.wayland = wayland
        self.shown = {}
        manager = wayland.bind("zwlr_foreign_toplevel_manager_v1", 3)
        wayland.listen(manager, self._appeared)
        wayland.round_trip()

    def now(self):
        self.wayland.round_trip()
        return list(self.shown.values())

    def _appeared(self, event):
        if event.number != 0:
            return
        one = Toplevel(event.unsigned())
        self.shown[one.number] = one
        self.wayland.listen(one.number, lambda told: self._changed(one, told))

    def _changed(self, one, event):
        if event.number == 0:
            one.title = event.text()
        elif event.number == 1:
            one.program = event.text()
        elif event.number == 4:
            states = event.array()
            one.states = tuple(int.from_bytes(states[at : at + 4], "little") for at in range(0, len(states), 4))
        elif event.number == 6:
            self.shown.pop(one.number, None)
            self.wayland.send(one.number, 7)
