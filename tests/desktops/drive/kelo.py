"""Kelo as built, and the service that it is for."""

import fnmatch
import os
import pathlib
import shutil
import subprocess

from drive.processes import Process
from drive.tree import ROLES
from drive.waiting import await_that

APPLICATION = ROLES["application"]
_IDENTIFIER = "app.kelo.Kelo"


def install(build, session):
    """Puts Kelo into a folder of the session and tells all programs of it. The folder with the program. Desktops know
    a program, its icons and its windows by the entry that comes with it."""
    prefix = session.folder / "installed"
    log = (session.folder / "install.log").open("wb")
    command = ["cmake", "--install", build, "--prefix", prefix, "--component", "Unspecified"]
    subprocess.run(command, check=True, stdout=log, stderr=log)
    # Of what a package adds for the whole system, all but the PAM service: the session has its own.
    data = pathlib.Path(__file__).parents[3] / "data"
    services = pathlib.Path(os.environ["XDG_DATA_HOME"]) / "dbus-1" / "services"
    for folder in (prefix / "share" / "applications", services):
        folder.mkdir(parents=True, exist_ok=True)
    shutil.copy(data / f"{_IDENTIFIER}.desktop", prefix / "share" / "applications")
    service = (data / f"{_IDENTIFIER}.service.in").read_text(encoding="utf-8")
    service = service.replace("@kelo_installed_program@", str(prefix / "bin" / "kelo"))
    (services / f"{_IDENTIFIER}.service").write_text(service, encoding="utf-8")
    session.bus.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ReloadConfig")
    others = os.environ.get("XDG_DATA_DIRS", "/usr/local/share:/usr/share")
    session.export(XDG_DATA_DIRS=f"{prefix}/share:{others}", PATH=f"{prefix}/bin:{os.environ['PATH']}")
    return prefix / "bin"


class Service:
    """The demo service, at the origin that is compiled into Kelo, with the gallery of pages."""

    def __init__(self, build, folder):
        self.process = Process(
            [
                *(build / "kelo-demo-service", "--authority", build / "demo-authority", "--port", "8443"),
                *("--gallery", pathlib.Path(__file__).parents[2] / "pages"),
            ],
            folder / "service.log",
        )
        self.process.await_printed("Listening on")


class Kelo:
    """A start of Kelo. `data` is the folder with what it keeps: the next start with it is the same user's."""

    def __init__(self, desktop, build, data, arguments=(), environment=None):
        self.desktop = desktop
        self.tree = desktop.session.tree
        self.build = pathlib.Path(build)
        self.variables = {**os.environ, **desktop.environment(), **(environment or {})}
        self.variables.pop("KELO_PRIVATE_DESKTOP_PASSWORD", None)
        for variable, name in (("DATA", "data"), ("CACHE", "cache"), ("CONFIG", "config"), ("STATE", "state")):
            (data / name).mkdir(parents=True, exist_ok=True)
            self.variables[f"XDG_{variable}_HOME"] = str(data / name)
        self.log = data / "kelo.log"
        self.process = Process([self.build / "kelo", *arguments], self.log, self.variables)

    def run(self, *arguments, environment=None):
        """A second start beside it, for instance `kelo --widget`. Its exit status, and what it printed."""
        log = self.log.with_name("second.log")
        log.unlink(missing_ok=True)
        second = Process([self.build / "kelo", *arguments], log, {**self.variables, **(environment or {})})
        await_that("the second start has ended", lambda: not second.is_running())
        return second.child.returncode, second.printed()

    def windows(self):
        return [one for one in self.desktop.windows() if one.pid == self.process.pid]

    def await_window(self, title):
        """The title may have an asterisk at its beginning or its end, for any text."""

        def look():
            return next((one for one in self.windows() if fnmatch.fnmatchcase(one.title, title)), None)

        return await_that(f'the window "{title}" is there', look)

    def area(self, role, name, program="kelo"):
        """x, y, width and height of an object, in points of the screen. The tree knows places in a window, and the
        compositor where the window is: the two meet by its title."""
        one = self.tree.await_one(role, name, program)
        holder = self.tree.main_window() if program == "page" else one
        while program != "page" and (parent := holder.parent()) and parent.role() != APPLICATION:
            holder = parent
        window = self.await_window(holder.name())
        x, y, width, height = one.place(holder)
        return window.x + x, window.y + y, width, height

    def place(self, role, name, program="kelo"):
        """The middle of it."""
        x, y, width, height = self.area(role, name, program)
        return x + width / 2, y + height / 2

    def click(self, role, name, program="kelo", button="left"):
        await_that(
            f'the {role} "{name}" can be clicked',
            lambda: (one := self.tree.find(role, name, program)) and one.is_sensitive(),
        )
        self.desktop.click(*self.place(role, name, program), button)

    def end(self):
        self.process.end()
        await_that("the pages of the ended Kelo are gone", lambda: not self.tree.pages())
