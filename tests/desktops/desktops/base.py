"""What a check may ask of a desktop, whichever it is."""

from dataclasses import dataclass

from drive import keys
from drive.waiting import pump


class NotHere(Exception):
    """This desktop has no such thing, or nothing that a program can reach. The text says so to a reader of the
    table."""


@dataclass(frozen=True)
class Window:
    """A window as the compositor or the window manager sees it, in points of the whole screen. The rectangle is
    that of what the program draws, without a shadow."""

    title: str
    pid: int
    x: float
    y: float
    width: float
    height: float
    has_keyboard: bool = False
    is_full_screen: bool = False
    program: str = ""  # app_id, WM_CLASS or the like
    above: int = 0  # its place in the stack: the greatest is on top


class Desktop:
    """A desktop without a screen, made for one run: start() brings up compositor or window manager, tray, portal
    and what else belongs to it, all with the environment of `session`. Every process ends with this one."""

    name = ""  # in file names and on the command line
    title = ""  # for the table
    packages = ""  # of Debian, separated by blanks
    releases = ()  # of Debian, by code name, where it is tried
    width, height = 1280, 800
    hands_on_tokens = True  # whether a click in the tray lets the program come to the front
    asks_for_password = True  # on the lock screen; for the user who runs this
    tells_of_lock = True  # whether programs can learn that the screen is locked
    sends_tokens = True  # with a click on a notification: what lets the window come to the front
    panel_status = ""  # a part of what `kelo --hotkey-status` says of the voice panel here

    def __init__(self, session):
        self.session = session

    def start(self):
        raise NotImplementedError

    def version(self):
        """For the table, for instance "48.4"."""
        raise NotImplementedError

    def environment(self):
        """What Kelo's environment has here besides the session's."""
        return {}

    # --- input, as from real devices -------------------------------------------------------------

    def turn_key(self, code, is_down):
        """`code` is the kernel's number."""
        raise NotImplementedError

    def turn_button(self, code, is_down):
        raise NotImplementedError

    def move_to(self, x, y):
        """In points of the whole screen."""
        raise NotImplementedError

    def press(self, *names, hold=0.03):
        """All of these keys at once ("Control_L", "Alt_L"), held for some seconds."""
        codes = [keys.code(name) for name in names]
        for code in codes:
            self.turn_key(code, True)
            pump(0.02)
        pump(hold)
        for code in reversed(codes):
            self.turn_key(code, False)
            pump(0.02)

    def type(self, text):
        for code, is_shifted in keys.strokes(text):
            if is_shifted:
                self.turn_key(keys.CODES["Shift_L"], True)
            self.turn_key(code, True)
            self.turn_key(code, False)
            if is_shifted:
                self.turn_key(keys.CODES["Shift_L"], False)
            pump(0.02)

    def click(self, x, y, button="left"):
        self.move_to(x, y)
        pump(0.15)
        self.turn_button(keys.BUTTONS[button], True)
        pump(0.05)
        self.turn_button(keys.BUTTONS[button], False)
        pump(0.15)

    # --- looking -----------------------------------------------------------------------------------

    def picture(self, file):
        """Writes the whole screen as PNG."""
        raise NotImplementedError

    def windows(self):
        """All that are shown, as Window."""
        raise NotImplementedError

    def space(self):
        """Width and height of the whole screen, in points."""
        return self.width, self.height

    def work_area(self):
        """x, y, width and height in points of what panels and docks leave free."""
        return 0, 0, self.width, self.height

    # --- the desktop's own settings and parts. A desktop that lacks one raises NotHere. ----------------

    def tray_icon(self, program="Kelo"):
        """x and y of the middle of the program's icon in the tray, or None while there is none."""
        raise NotHere("no tray")

    def tray_menu(self):
        """The entries of the tray's menu, once it is open: (text, x, y) each."""
        raise NotHere("no tray")

    def without_tray(self):
        """Takes the tray away, as on a desktop that was installed without one."""
        raise NotHere("no tray")

    def move_panel(self, edge):
        """Moves the desktop's main panel to the "top", "bottom" or "left" edge of the screen, and returns when the
        work area follows."""
        raise NotHere("the panel stays where it is")

    def notifications(self):
        """The notifications that are shown: (title, body, x, y) each."""
        raise NotHere("no notifications")

    def set_dark(self, is_dark):
        raise NotHere("no dark mode")

    def set_accent(self, name):
        """"green" or "blue"."""
        raise NotHere("no accent colour")

    def set_scale(self, factor):
        """1, 1.25, 1.5 or 2. Windows are where they were afterwards, or have moved."""
        raise NotHere("no scale")

    def lock(self):
        """Shows the lock screen, and returns when it is there."""
        raise NotHere("no lock screen")

    def unlock(self):
        raise NotHere("no lock screen")

    def await_shortcut_dialog(self):
        """Waits for the dialog in which the desktop asks, at Kelo's first start, whether it may have its shortcut.
        False where there is none."""
        return False

    def answer_shortcut_dialog(self):
        """In the dialog of the desktop in which a program asks for a global shortcut: looks, agrees."""
        raise NotHere("no portal for global shortcuts")
