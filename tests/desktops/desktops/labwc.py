"""labwc, which stacks windows as openbox does. It tells nobody where they are: a rule puts each at the same place,
without a title bar of labwc's that would shift its contents, and the tree of accessibility knows how large it is."""

import os
import pathlib

from desktops.base import NotHere, Window
from desktops.wlroots import WlrootsDesktop
from drive.wlroots import Toplevel

_CORNER = 200, 60
_SECOND = "HEADLESS-2"
_CONFIGURATION = """<?xml version="1.0"?>
<labwc_config>
  <windowRules>
    <windowRule identifier="*" serverDecoration="no"><action name="MoveTo" x="{0}" y="{1}"/></windowRule>
  </windowRules>
  <keyboard>
    <keybind key="W-m"><action name="MoveTo" x="{0}" y="{1}"/></keybind>
  </keyboard>
</labwc_config>
"""
# Debian's own asks any portal. On a system with labwc alone that is the one for GTK, and other desktops that are
# installed beside it bring more.
_PORTALS = """[preferred]
default=wlr;gtk
org.freedesktop.impl.portal.Inhibit=none
"""


class Labwc(WlrootsDesktop):
    name = "labwc"
    title = "labwc"
    packages = "labwc " + WlrootsDesktop.packages
    outputs = 2

    def arrange_outputs(self):
        # Outputs can be turned off and on again, but none can be added.
        self.remove_output(_SECOND)
        super().arrange_outputs()

    def _start_compositor(self):
        (self.folder / "rc.xml").write_text(_CONFIGURATION.format(*_CORNER), encoding="utf-8")
        portals = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "xdg-desktop-portal"
        portals.mkdir(parents=True, exist_ok=True)
        (portals / "labwc-portals.conf").write_text(_PORTALS, encoding="utf-8")
        self.run_compositor("labwc", "--config-dir", self.folder)

    def version(self):
        return self.ask("labwc", "--version").split()[1]

    def windows(self):
        sizes = self._sizes()
        found = []
        for one in self.toplevels.now():
            width, height = sizes.get(one.title, (0, 0))
            is_full_screen = Toplevel.FULL_SCREEN in one.states
            x, y = (0, 0) if is_full_screen else _CORNER
            found.append(
                Window(
                    title=one.title,
                    pid=_process_of(one.program),
                    x=x,
                    y=y,
                    width=width,
                    height=height,
                    has_keyboard=Toplevel.ACTIVATED in one.states,
                    is_full_screen=is_full_screen,
                    program=one.program,
                    above=len(found),
                )
            )
        return found

    def _sizes(self):
        """By title, of all windows that the tree knows."""
        programs = self.session.tree.programs()
        return {window.name(): tuple(window.extents()[2:]) for one in programs for window in one.children()}

    # --- outputs -------------------------------------------------------------------------------------

    def add_output(self):
        """To the right of the first, as large as that. Its name."""
        size = f"{self.width}x{self.height}"
        self.randr("--output", _SECOND, "--on", "--custom-mode", size, "--pos", f"{self.width},0")
        return _SECOND

    def remove_output(self, name):
        self.randr("--output", name, "--off")

    def set_scale(self, factor):
        """A window that has become too large for its output, labwc puts elsewhere."""
        super().set_scale(factor)
        self.press("Super_L", "m")

    def answer_shortcut_dialog(self):
        raise NotHere("its portal, xdg-desktop-portal-wlr, has no global shortcuts")


def _process_of(program):
    """The oldest process of the name that an application's identifier ends with, or 0."""
    name = program.rpartition(".")[2].lower()
    numbers = sorted(int(one) for one in os.listdir("/proc") if one.isdigit())
    for number in numbers:
        try:
            if pathlib.Path(f"/proc/{number}/comm").read_text(encoding="utf-8").strip() == name:
                return number
        except OSError:
            continue  # it has ended meanwhile
    return 0
