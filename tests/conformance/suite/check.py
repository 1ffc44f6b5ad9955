"""What is checked, and what came of it."""

import dataclasses
from typing import Callable, Optional

HOLDS = "holds"
FAILS = "DOES NOT HOLD"
NOT_TRIED = "not tried"

# Where a check's files stand that the program looks up by fixed paths.
FIXED = "sandbox/"
# The folder in the current directory in which the stand-in of the font library has its description
# and its log, wherever the program looks for fixed paths.
STANDIN = "sandbox/standin/"
FONT_LIBRARY = FIXED + "etc/opt/KOVAje/lib/libfal.so.1"


@dataclasses.dataclass
class Check:
    """A line of the report."""

    name: str
    about: str
    theme: str
    # A run of the program: what goes in, and what must come out, to the byte.
    options: list[bytes] = dataclasses.field(default_factory=list)
    stdin: bytes = b""
    stdout: bytes = b""
    stderr: bytes = b""
    status: int = 0
    # Laid into the current directory before the run, and found there behind it.
    files: dict[str, bytes] = dataclasses.field(default_factory=dict)
    leaves: dict[str, bytes] = dataclasses.field(default_factory=dict)
    # The job comes a byte at a time, each when the one before has been taken.
    slowly: bool = False
    # The stand-in of the font library stands in its place; what it is told.
    fonts: Optional[bytes] = None
    # In place of all this: a function of the stage that returns what is wrong, "" for nothing.
    own: Optional[Callable] = None
    # Such a check may need the places of the fixed paths, too.
    needs_fixed_paths: bool = False

    def at_fixed_paths(self) -> bool:
        return (
            self.needs_fixed_paths
            or self.fonts is not None
            or any(path.startswith(FIXED) for path in self.files)
        )


@dataclasses.dataclass
class Result:
    check: Check
    verdict: str
    # Why it was not tried, or what does not hold, several lines perhaps.
    detail: str = ""
    seconds: float = 0.0
