"""Uses Kelo like a person, on whichever desktop it runs."""

import os
import pathlib

from drive.processes import Process
from drive.tree import ROLES
from drive.waiting import Missed, await_that, pump

EMAIL, PASSWORD = "ada@example.org", "analytical engine"


class User:
    def __init__(self, kelo):
        self.kelo = kelo
        self.desktop = kelo.desktop
        self.tree = kelo.tree

    def insist(self, what, action, has_had_effect, attempts=20):
        """Does it again until it has had its effect: what has just appeared takes no answer."""
        for _ in range(attempts):
            action()
            try:
                await_that(what, has_had_effect, 1.5)
                return
            except Missed:
                pass
        raise Missed(f"Tried in vain until {what}.")

    def focused(self, *roles):
        """The object in Kelo's windows that has the keyboard, if it has one of the roles."""
        numbers = [ROLES[role] for role in roles]
        program = self.tree.program("kelo")
        everything = program.walk() if program else ()
        return next((one for one in everything if one.role() in numbers and one.is_focused()), None)

    def await_login_page(self):
        self.tree.await_one("entry", "Email*", "page", 60)
        self.tree.await_one("button", "Sign in with passkey")

    def type_into(self, role, name, text, program="kelo"):
        self.insist(
            f"{name} has the keyboard",
            lambda: self.kelo.click(role, name, program),
            lambda: (one := self.tree.find(role, name, program)) and one.is_focused(),
        )
        self.desktop.type(text)
        pump(0.3)

    def sign_in_with_password(self):
        self.type_into("entry", "Email*", EMAIL, "page")
        self.type_into("password", "Password*", PASSWORD, "page")
        self.kelo.click("button", "Sign in", "page")
        self.await_signed_in()

    def await_signed_in(self):
        self.tree.await_one("heading", "Welcome, Ada", "page")

    def focused_entry(self):
        return self.focused("menu item", "check menu item")

    def open_menu(self, menu):
        """With the mouse, in the main window's menu."""
        self.insist(
            f"the menu {menu} has the keyboard",
            lambda: self.focused_entry() or self.kelo.click("menu", menu),
            self.focused_entry,
        )

    def close_menu(self):
        self.desktop.press("Escape")
        await_that("the menu is closed", lambda: not self.focused_entry())

    def choose(self, menu, entry):
        """From the main window's menu: opened with the mouse, and gone through with the keyboard."""
        self.open_menu(menu)
        for _ in range(30):
            if (one := self.focused_entry()) and one.name() == entry:
                self.desktop.press("Return")
                return
            self.desktop.press("Down")
            pump(0.1)
        raise Missed(f"There is no {entry} in the menu {menu}.")

    def register_passkey(self):
        self.choose("Account", "Register a Passkey on This Mac…")
        self.tree.await_one("label", "Bevestig registratie")
        self.await_password_field()
        self.desktop.type(PASSWORD)
        self.insist(
            "the prompt is answered",
            lambda: self.tree.find("button", "Registreer") and self.kelo.click("button", "Registreer"),
            lambda: not self.tree.find("button", "Registreer"),
        )
        self.agree_on_sheet()
        self.tree.await_one("label", "Passkey registered on this Mac.")

    def await_password_field(self):
        await_that("a password field has the keyboard", lambda: self.focused("password"))

    def agree_on_sheet(self):
        self.tree.await_one("button", "Continue")
        self.insist(
            "the sheet is agreed to",
            lambda: self.tree.find("button", "Continue") and self.kelo.click("button", "Continue"),
            lambda: self.tree.find("label", "Password: "),
        )
        self.await_password_field()
        self.desktop.type(self.desktop.session.password)
        self.insist(
            "the password is taken",
            lambda: self.desktop.press("Return"),
            lambda: not self.tree.find("label", "Password: "),
        )

    def close_alert(self):
        self.insist(
            "the alert is closed",
            lambda: self.tree.find("button", "OK") and self.kelo.click("button", "OK"),
            lambda: not self.tree.find("button", "OK"),
        )


class OtherProgram:
    """See other.py."""

    TITLE = "Another program"

    def __init__(self, desktop, folder, command=()):
        self.desktop = desktop
        script = pathlib.Path(__file__).parent.parent / "other.py"
        log = folder / "other.log"
        log.unlink(missing_ok=True)
        desktop_environment = {**os.environ, **desktop.environment()}
        self.process = Process(["/usr/bin/python3", script, *command], log, desktop_environment)
        await_that("the other program has the keyboard", self.has_keyboard)

    def has_keyboard(self):
        said = [line for line in self.process.printed().splitlines() if line in ("active", "not active")]
        return bool(said) and said[-1] == "active"

    def text(self):
        said = [line for line in self.process.printed().splitlines() if line.startswith("text ")]
        return said[-1][5:] if said else ""

    def end(self):
        self.process.end()
