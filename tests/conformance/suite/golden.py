"""The golden jobs of tests/cases, and what they print as jobs in the printer's language."""

import os
import re

from .check import FIXED, Check
from .escaped import decode

# By the first word of a job's name.
THEMES = {
    "block": "blocks",
    "carried": "settings that are carried",
    "character": "pitches",
    "counted": "counted data",
    "drawing": "blocks",
    "empty": "text and pages",
    "extended": "sequences",
    "form": "forms",
    "framed": "framed jobs",
    "g1": "forms and other files of the site",
    "line": "pitches",
    "modes": "options",
    "no": "print conditions",
    "one": "text and pages",
    "option": "options",
    "options": "options",
    "page": "page length",
    "pass": "jobs in the printer's language",
    "record": "print conditions",
    "resolution": "options",
    "sequence": "sequences",
    "sequences": "sequences",
    "settings": "settings that are carried",
    "text": "text and pages",
}
# ESC Q kind ; ten digits / and the letter of a job parameter block.
PARAMETER_BLOCK = re.compile(rb"\x1bQ\d;\d{10}/`")


def text_of(folder: str, name: str) -> str:
    try:
        with open(os.path.join(folder, name), encoding="ascii") as file:
            return file.read()
    except FileNotFoundError:
        return ""


def files_of(folder: str) -> dict[str, bytes]:
    files = {}
    top = os.path.join(folder, "files")
    for place, _, names in os.walk(top):
        for name in names:
            path = os.path.join(place, name)
            with open(path, "rb") as file:
                files[os.path.relpath(path, top)] = file.read()
    return files


def one_line(text: str) -> str:
    return " ".join(text.split())


def load(cases: str) -> list[Check]:
    checks = []
    for name in sorted(os.listdir(cases)):
        folder = os.path.join(cases, name)
        theme = THEMES.get(name.split("_")[0], "others")
        about = one_line(text_of(folder, "about"))
        stdout = decode(text_of(folder, "stdout.esc"))
        files = files_of(folder)
        checks.append(
            Check(
                name=f"golden/{name}",
                about=about,
                theme=f"golden jobs: {theme}",
                options=[decode(line) for line in text_of(folder, "options").splitlines()],
                stdin=decode(text_of(folder, "stdin.esc")),
                stdout=stdout,
                stderr=decode(text_of(folder, "stderr.esc")),
                status=int(text_of(folder, "status") or 0),
                files=files,
                # It may look there, and must not find what the machine has.
                needs_fixed_paths=any(path.startswith(FIXED) for path in files),
            )
        )
        if PARAMETER_BLOCK.match(stdout):
            checks.append(
                Check(
                    name=f"printed/{name}",
                    about=f"What {name} printed passes through unchanged.",
                    theme="golden jobs: printed jobs that pass through",
                    stdin=stdout,
                    stdout=stdout,
                )
            )
    return checks
