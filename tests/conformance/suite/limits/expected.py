"""What the printer's jobs are made of, written out; the checks put their own bytes between.

Counts are given by hand where a check is about them; `block` counts the rest.
"""

from typing import Optional

from ..check import Check

PARAMETERS = b"\x1bQ0;0000000043/`%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nMAK=UNIX\n"
START = b"\x1bQ9;0000000018/a\x1b\x7f\x00\x00\x01\x06"
DENSITY = b"\x1bQ8;0000000019/a\x1bQ240!A"
UNIT = b"\x1bQ9;0000000022/a\x1bQ1;7200!C"
FIRST = PARAMETERS + START + DENSITY + UNIT
LAST_FEED = b"\x1bQ0;0000000013/a\f"
END = b"\x1bQ0;0000000020/a\x1bc\x1b\x7f\x00\x00\x01\x00"

STATE = b'\x1c(`q\x1c(ap\x1c%!" p\x1bQ1 y\x1bQ1;!f'
RESET = b"\x1b$@\x1b(H"
SPACING = b"\x1c&! u"
PITCH_6 = b'\x1c%!" p'
CONDITIONS = STATE + RESET + SPACING + PITCH_6
CARRIED = STATE + RESET + SPACING

TO_DOUBLE = b"\x1bQ2 y\x1b$@"
TO_SINGLE = b"\x1bQ1 y\x1b(H"
SINGLE_CARRIED = b"\x1b(H\x1bQ1 y"
DOUBLE_CARRIED = b"\x1b$@\x1bQ2 y"

FORM_ERROR = b"filter: FCB data error\n"


def block(kind: str, payload: bytes, count: Optional[int] = None) -> bytes:
    """A block; its count is 12 more than its payload has bytes."""
    number = len(payload) + 12 if count is None else count
    return b"\x1bQ%s;%010d/a" % (kind.encode(), number) + payload


def carried(settings: bytes) -> bytes:
    return block("6", settings) if settings else b""


def page(payload: bytes, settings: bytes = b"") -> bytes:
    """A page of one block, without what stands in front of it."""
    return block("2", payload) + carried(settings)


def job(*pages: bytes) -> bytes:
    """Pages, each as `page` makes it, and all around them."""
    return FIRST + UNIT.join(pages) + END


def sheet(payload: bytes, settings: bytes = b"") -> bytes:
    """A job of one page."""
    return job(page(payload, settings))


def headed(lines: bytes, formats: bytes = b"", setup: bytes = b"") -> bytes:
    """What stands in front of a first page with more to tell: lines behind DCH, page formats, and
    what the page setup has besides the unit."""
    text = b"%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\n" + lines + b"MAK=UNIX\n"
    head = b"\x1bQ0;%010d/`" % len(text) + text + START + DENSITY
    if formats:
        head += block("7", formats)
    return head + block("9", b"\x1bQ1;7200!C" + setup)


class Theme:
    """Gathers the checks of a theme."""

    def __init__(self, theme: str, prefix: str, *options: str):
        self.theme = "limits: " + theme
        self.prefix = "limits/" + prefix
        self.options = list(options)
        self.checks: list[Check] = []

    def add(
        self,
        name: str,
        about: str,
        stdin: bytes,
        stdout: bytes,
        *options: str,
        stderr: bytes = b"",
        status: int = 0,
        files: Optional[dict[str, bytes]] = None,
        leaves: Optional[dict[str, bytes]] = None,
        fonts: Optional[bytes] = None,
    ) -> None:
        given = [*self.options, *options]
        self.checks.append(
            Check(
                name=f"{self.prefix}-{name}",
                about=about,
                theme=self.theme,
                options=[option.encode("latin-1") for option in given],
                stdin=stdin,
                stdout=stdout,
                stderr=stderr,
                status=status,
                files=files or {},
                leaves=leaves or {},
                fonts=fonts,
            )
        )

    def refuse(
        self, name: str, about: str, stderr: bytes, *options: str,
        stdin: bytes = b"A\f", files: Optional[dict[str, bytes]] = None,
    ) -> None:
        """A job that does not start."""
        self.add(name, about, stdin, b"", *options, stderr=stderr, status=1, files=files)
