"""Writes what was seen on the desktops into docs/DESKTOPS.md: a line for each desktop, and notes below.

    table.py

Takes build/desktops/*/outcome.json; a desktop without one keeps the line that it has."""

import json
import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import checks  # noqa: E402

PAGE = pathlib.Path("docs/DESKTOPS.md")
BEGIN, END = "<!-- table -->\n", "<!-- end of table -->\n"
RELEASES = {"bookworm": "Debian 12", "trixie": "Debian 13"}
WORDS = {"works": "yes", "denied": "**no**", "not here": "–", "failed": "**fails**"}


def line(result):
    cells = [f"{result['desktop']} {result['version']}", RELEASES[result["release"]]]
    cells += [WORDS[result["checks"][name][0]] if name in result["checks"] else "" for name, _title, _f in checks.ALL]
    return f"| {' | '.join(cells)} |"


def notes(result):
    said = []
    for name, title, _function in checks.ALL:
        outcome, note = result["checks"].get(name, ("works", ""))
        if note and outcome != "failed":
            said.append(f"{title[0].lower()}{title[1:]}: {note}")
    return f"* **{result['desktop']} {result['version']}**: {'; '.join(said)}." if said else ""


def cells_of(row):
    return [cell.strip() for cell in row.strip("|").split("|")]


def kept_lines(table, titles):
    """By the desktop that they are about. What has become a check since has not been tried there."""
    rows = [cells_of(row) for row in table.splitlines() if row.startswith("| ")]
    for row in rows[1:]:
        known = dict(zip(rows[0], row))
        yield row[0], f"| {' | '.join([*row[:2], *[known.get(title, '') for title in titles]])} |"


def main():
    page = PAGE.read_text(encoding="utf-8")
    before, rest = page.split(BEGIN)
    table, after = rest.split(END)
    titles = [title for _name, title, _function in checks.ALL]
    lines = dict(kept_lines(table, titles))
    said = {match[1]: match[0] for match in re.finditer(r"^\* \*\*([^*]+)\*\*.*$", table, re.MULTILINE)}
    for file in sorted(pathlib.Path("build/desktops").glob("*/outcome.json")):
        result = json.loads(file.read_text(encoding="utf-8"))
        if set(result["checks"]) != {name for name, _title, _function in checks.ALL}:
            continue  # some checks only
        desktop = f"{result['desktop']} {result['version']}"
        lines[desktop] = line(result)
        said[desktop] = notes(result)
    head = [f"| Desktop | System | {' | '.join(titles)} |", "|" + "---|" * (len(titles) + 2)]
    body = [lines[name] for name in sorted(lines)]
    below = [said[name] for name in sorted(said) if said[name]]
    new = "\n".join([*head, *body, "", *below, ""])
    PAGE.write_text(before + BEGIN + new + END + after, encoding="utf-8")


if __name__ == "__main__":
    main()
