"""Tries Kelo on one real desktop.

    run.py NAME [CHECK...]     on this desktop, all checks or some
    run.py --names             the desktops of this release of Debian
    run.py --packages NAME...  what they need

Needs scripts/private-desktop around it, with no window manager. Leaves pictures and outcome.json in
build/desktops/NAME. The exit status is 1 where a check failed, and 77 where the desktop is not installed."""

import json
import os
import pathlib
import shutil
import sys
import traceback

import gi

gi.require_version("Gio", "2.0")
sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import checks  # noqa: E402
from desktops import known  # noqa: E402
from desktops.base import NotHere  # noqa: E402
from drive.kelo import Service, install  # noqa: E402
from drive.session import Session  # noqa: E402
from road import Road  # noqa: E402


def release():
    words = dict(line.split("=", 1) for line in pathlib.Path("/etc/os-release").read_text().splitlines() if "=" in line)
    return words.get("VERSION_CODENAME", "").strip('"')


def outcome_of(road, name, function):
    """What the check came to, as (outcome, note): works, not here, denied or failed."""
    try:
        return "works", function(road) or ""
    except NotHere as lack:
        return "not here", str(lack)
    except checks.Denied as denial:
        return "denied", str(denial)
    except Exception as error:
        traceback.print_exc()
        try:
            road.picture(f"{name}-FAILED")
            (road.pictures / f"{name}-FAILED.txt").write_text(road.desktop.session.tree.picture(), encoding="utf-8")
        except Exception:
            traceback.print_exc()
        return "failed", str(error)


def try_desktop(kind, wanted):
    build = pathlib.Path(os.environ.get("KELO_BUILD", "build/release")).resolve()
    pictures = pathlib.Path("build/desktops").resolve() / kind.name
    shutil.rmtree(pictures, ignore_errors=True)
    pictures.mkdir(parents=True)
    session = Session()
    service = None
    try:
        program = install(build, session)
        desktop = kind(session)
        desktop.start()
        service = Service(build, session.folder)
        road = Road(desktop, program, session.folder, pictures)
        found = {}
        for name, title, function in checks.ALL:
            if wanted and name not in wanted:
                continue
            found[name] = outcome_of(road, name, function)
            print(f"{kind.name}: {title}: {': '.join(filter(None, found[name]))}", flush=True)
        road.close_kelo()
        result = {"desktop": kind.title, "version": desktop.version(), "release": release(), "checks": found}
        (pictures / "outcome.json").write_text(json.dumps(result, indent=2) + "\n", encoding="utf-8")
        return 1 if any(outcome == "failed" for outcome, _note in found.values()) else 0
    finally:
        for log in session.folder.glob("*.log"):
            shutil.copy(log, pictures)
        if service:
            service.process.end()
        session.end()


def main(arguments):
    kinds = known()
    if arguments[:1] == ["--names"]:
        print(*[name for name, kind in kinds.items() if release() in kind.releases], sep="\n")
        return 0
    if arguments[:1] == ["--packages"]:
        print(*sorted({package for name in arguments[1:] for package in kinds[name].packages.split()}), sep="\n")
        return 0
    if not arguments or arguments[0] not in kinds:
        print(f"Say which desktop: {', '.join(kinds)}.", file=sys.stderr)
        return 2
    return try_desktop(kinds[arguments[0]], arguments[1:])


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
