"""Waiting for what a desktop does in its own time."""

import time

from gi.repository import GLib

DEADLINE = 30.0  # seconds; long, because it passes only where something is broken


class Missed(Exception):
    """What was waited for did not come."""


def pump(seconds):
    """Lets the main loop run, with all signals of all buses."""
    context = GLib.MainContext.default()
    end = time.monotonic() + seconds
    # Keys are held no longer than said: a press of several is still a tap.
    tick = GLib.timeout_add(min(50, max(1, round(seconds * 1000))), lambda: True)
    try:
        while time.monotonic() < end:
            context.iteration(True)
    finally:
        GLib.source_remove(tick)


def await_that(what, condition, deadline=DEADLINE):
    """The first value of the condition that counts as true. Throws Missed with what the condition said
    last; `what` completes the sentence "Waited in vain until ..."."""
    end = time.monotonic() + deadline
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= end:
            raise Missed(f"Waited in vain until {what}.")
        pump(0.1)


def await_or_not(condition, seconds=5):
    """The first value of the condition that counts as true, or False when there was none in time."""
    try:
        return await_that("", condition, seconds)
    except Missed:
        return False
