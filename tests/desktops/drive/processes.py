"""Processes of ours, which end with us."""

import ctypes
import os
import signal
import subprocess

from drive.waiting import await_that

_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None)


def _die_with_parent():
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)


class Process:
    """A program with its output in a file."""

    def __init__(self, command, log, environment=None, **more):
        self.command = [str(word) for word in command]
        self.log = log
        with open(log, "ab") as output:
            self.child = subprocess.Popen(
                self.command,
                env=environment or dict(os.environ),
                stdin=subprocess.DEVNULL,
                stdout=output,
                stderr=output,
                preexec_fn=_die_with_parent,
                **more,
            )

    @property
    def pid(self):
        return self.child.pid

    def is_running(self):
        return self.child.poll() is None

    def printed(self):
        with open(self.log, encoding="utf-8", errors="replace") as output:
            return output.read()

    def await_printed(self, text):
        await_that(f"{self.command[0]} prints {text}", lambda: text in self.printed() or not self.is_running())
        if text not in self.printed():
            raise RuntimeError(f"{self.command[0]} ended:\n{self.printed()}")

    def end(self):
        if self.is_running():
            self.child.terminate()
            try:
                self.child.wait(10)
            except subprocess.TimeoutExpired:
                self.child.kill()
                self.child.wait()
