"""The desktops, a module for each kind."""

import importlib
import pathlib

from desktops.base import Desktop


def known():
    """All classes of desktops that have a name, by that name."""
    for file in sorted(pathlib.Path(__file__).parent.glob("*.py")):
        if file.stem not in ("__init__", "base"):
            importlib.import_module(f"desktops.{file.stem}")
    found = {}
    remaining = [Desktop]
    while remaining:
        kind = remaining.pop()
        remaining += kind.__subclasses__()
        if kind.name:
            found[kind.name] = kind
    return dict(sorted(found.items()))
