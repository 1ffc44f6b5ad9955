"""Builds the stand-in of the font library, which the program loads by its fixed path."""

import os
import shutil
import subprocess
from typing import Optional

from .stage import Stage


def compiler() -> Optional[str]:
    for name in (os.environ.get("CXX"), "c++", "g++", "clang++"):
        if name and shutil.which(name):
            return name
    return None


def provide(stage: Stage, given: Optional[str], root: str) -> None:
    """Says in `stage` where the stand-in is, or why there is none."""
    if given is not None:
        if os.path.isfile(given):
            stage.standin = os.path.abspath(given)
        else:
            stage.no_standin = f"{given} is no file"
        return
    tool = compiler()
    if tool is None:
        stage.no_standin = "the stand-in of the font library needs a C++ compiler"
        return
    library = os.path.join(stage.scratch, "libfal.so.1")
    command = [
        tool, "-std=c++20", "-O1", "-shared", "-fPIC", "-I", os.path.join(root, "src"),
        "-I", os.path.join(root, "tests"), "-o", library,
        os.path.join(root, "tests/standin/font_library.cpp"),
    ]
    built = subprocess.run(command, capture_output=True, text=True, check=False)
    if built.returncode != 0:
        first = (built.stderr.strip() or "?").splitlines()[0]
        stage.no_standin = f"the stand-in of the font library does not build: {first}"
        return
    os.chmod(library, 0o755)
    stage.standin = library
