"""sway, as somebody sets it up who comes from another desktop: floating windows, waybar, mako, swaylock."""

import json
import os

from desktops.base import NotHere, Window
from desktops.wlroots import WlrootsDesktop
from drive.waiting import await_that

_CONFIGURATION = """
output * background #336699 solid_color
default_border normal 2
default_floating_border normal 2
for_window [app_id=".*"] floating enable
# Without this line sway marks a window as urgent that comes with an activation token, and leaves it where it is.
focus_on_window_activation focus
"""


class Sway(WlrootsDesktop):
    name = "sway"
    title = "sway"
    packages = "sway swaybg " + WlrootsDesktop.packages

    def _start_compositor(self):
        configuration = self.folder / "config"
        configuration.write_text(_CONFIGURATION, encoding="utf-8")
        self.run_compositor("sway", "--config", configuration)
        socket = await_that("sway can be asked", lambda: next(self.runtime.glob("sway-ipc.*.sock"), None))
        os.environ["SWAYSOCK"] = str(socket)

    def version(self):
        return self.ask("sway", "--version").split()[-1].partition("-")[0]

    def message(self, command):
        """One of sway's own commands."""
        self.ask("swaymsg", command)

    def windows(self):
        found = []
        self._gather(json.loads(self.ask("swaymsg", "-r", "-t", "get_tree")), found)
        return found

    def _gather(self, node, found):
        if node.get("pid") and node.get("visible"):
            frame, inner = node["rect"], node["window_rect"]
            found.append(
                Window(
                    title=node["name"] or "",
                    pid=node["pid"],
                    x=frame["x"] + inner["x"],
                    y=frame["y"] + inner["y"],
                    width=inner["width"],
                    height=inner["height"],
                    has_keyboard=node["focused"],
                    is_full_screen=node["fullscreen_mode"] != 0,
                    program=node.get("app_id") or "",
                    above=len(found),
                )
            )
        for child in node["nodes"] + node["floating_nodes"]:
            self._gather(child, found)

    # --- outputs -------------------------------------------------------------------------------------

    def add_output(self):
        """To the right of the others, as large as the first. Its name."""
        before = self.output_names()
        right = self.space()[0]
        self.message("create_output")
        name = await_that("there is another output", lambda: next(iter(self.output_names() - before), None))
        self.message(f"output {name} mode {self.width}x{self.height} position {round(right)} 0")
        return name

    def remove_output(self, name):
        self.message(f"output {name} unplug")
        await_that("the output is gone", lambda: name not in self.output_names())

    def output_names(self):
        return {one["name"] for one in json.loads(self.ask("swaymsg", "-r", "-t", "get_outputs"))}

    def answer_shortcut_dialog(self):
        raise NotHere("its portal, xdg-desktop-portal-wlr, has no global shortcuts")
