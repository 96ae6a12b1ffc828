"""Another program, as a user has it beside Kelo: a window that keeps what is typed into it. Prints each text as it
stands. F5 starts the command that it was started with, as a launcher does: with a token that lets the new program
come to the front. F11 fills the screen, and leaves it."""

import sys

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import Gdk, Gio, Gtk  # noqa: E402


class Other(Gtk.ApplicationWindow):
    def __init__(self, application):
        super().__init__(application=application, title="Another program", default_width=900, default_height=600)
        self.text = Gtk.TextView(monospace=True, top_margin=12, left_margin=12)
        self.text.get_buffer().connect("changed", self._changed)
        self.set_child(self.text)
        keys = Gtk.EventControllerKey(propagation_phase=Gtk.PropagationPhase.CAPTURE)
        keys.connect("key-pressed", self._pressed)
        self.add_controller(keys)
        self.connect("notify::is-active", lambda *_: print("active" if self.is_active() else "not active", flush=True))

    def _changed(self, buffer):
        print("text " + buffer.get_text(*buffer.get_bounds(), False), flush=True)

    def _pressed(self, _keys, value, *_more):
        if value == Gdk.KEY_F5:
            launcher = Gio.AppInfo.create_from_commandline(
                " ".join(sys.argv[1:]), "Kelo", Gio.AppInfoCreateFlags.SUPPORTS_STARTUP_NOTIFICATION
            )
            launcher.launch([], self.get_display().get_app_launch_context())
            return True
        if value == Gdk.KEY_F11:
            (self.unfullscreen if self.is_fullscreen() else self.fullscreen)()
            return True
        return False


application = Gtk.Application(application_id="app.example.Other")
application.connect("activate", lambda one: Other(one).present())
application.run([])
