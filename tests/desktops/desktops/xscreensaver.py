"""The lock screen of desktops that have none of their own."""

import os
import shutil
import subprocess
import tempfile

from drive.waiting import await_that, pump

_OTHER_USER = "games"


class XScreenSaver:
    """It locks nothing for root, so that it is another user's there: one that every Debian has, and who has not got the
    session's bus."""

    def start_locker(self):
        self.as_user = ()
        if os.getuid() == 0:
            home = tempfile.mkdtemp(prefix=f"{_OTHER_USER}-")
            shutil.chown(home, _OTHER_USER, _OTHER_USER)
            self.as_user = (
                *("setpriv", f"--reuid={_OTHER_USER}", f"--regid={_OTHER_USER}", "--clear-groups"),
                *("env", f"HOME={home}", f"XDG_RUNTIME_DIR={home}", "--unset=DBUS_SESSION_BUS_ADDRESS"),
            )
        self.locker = self.session.run(*self.as_user, "xscreensaver", "-no-splash", log="xscreensaver")

    def lock(self):
        def lock():
            """For a while after its start it does not answer."""
            subprocess.run([*self.as_user, "xscreensaver-command", "-lock"], check=False)
            pump(2)
            return self.covered_by("xscreensaver")

        await_that("the lock screen covers the screen", lock)

    def unlock(self):
        """Without a question: it takes no password for users of the system's own."""
        self.locker.end()
        await_that("the lock screen is gone", lambda: not self.covered_by("xscreensaver"))
        self.start_locker()
