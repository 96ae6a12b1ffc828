"""Keys by the numbers that the kernel gives them, as they lie on a US keyboard."""

CODES = {
    "Escape": 1, "BackSpace": 14, "Tab": 15, "Return": 28, "Control_L": 29, "Shift_L": 42, "Alt_L": 56,
    "space": 57, "F1": 59, "F2": 60, "F3": 61, "F4": 62, "F5": 63, "F6": 64, "F7": 65, "F8": 66, "F9": 67,
    "F10": 68, "F11": 87, "F12": 88, "Home": 102, "Up": 103, "Page_Up": 104, "Left": 105, "Right": 106,
    "End": 107, "Down": 108, "Page_Down": 109, "Insert": 110, "Delete": 111, "Super_L": 125, "Menu": 127,
}  # fmt: skip

_ROWS = [(2, "1234567890-=", "!@#$%^&*()_+"), (16, "qwertyuiop[]", "QWERTYUIOP{}"),
         (30, "asdfghjkl;'`", "ASDFGHJKL:\"~"), (43, "\\zxcvbnm,./", "|ZXCVBNM<>?"), (57, " ", " ")]  # fmt: skip
_CHARACTERS = {}
for _first, _plain, _shifted in _ROWS:
    for _offset, _character in enumerate(_plain):
        _CHARACTERS.setdefault(_character, (_first + _offset, False))
    for _offset, _character in enumerate(_shifted):
        _CHARACTERS.setdefault(_character, (_first + _offset, True))

BUTTONS = {"left": 0x110, "right": 0x111, "middle": 0x112}


def code(name):
    """Of a named key, or of one that writes a character."""
    return CODES[name] if name in CODES else _CHARACTERS[name][0]


def strokes(text):
    """For each character, the key's number and whether Shift is held."""
    return [_CHARACTERS[character] for character in text]
