"""The font access library: what it is asked for, and what its errors come to."""

from .expected import CARRIED, CONDITIONS, Theme, sheet
from .options import of_resolution
from .records import columns, command

# Dots, letter and offset of the fonts of each class, in the order in which they are asked for.
CLASSES = {
    "low": [(16, 16, 0), (24, 22, 1), (30, 28, 1), (32, 32, 0), (40, 36, 2)],
    "high": [(24, 22, 1), (40, 36, 2), (50, 48, 1), (60, 56, 2), (66, 62, 2)],
    "fine": [(32, 32, 0), (40, 36, 2), (50, 48, 1), (60, 56, 2), (66, 62, 2)],
    "fixed": [(24, 22, 1), (24, 24, 0)],
}
SETS = {2: "u90_01", 4: "u90_03"}
STYLES = {1: "mincho", 2: "gothic"}


def opened(fonts: str, styles: tuple[int, ...] = (1,)) -> tuple[str, str]:
    """@return what the library's log says of opening and of closing."""
    opens, closes = "", ""
    for style in styles:
        for code_set, name in SETS.items():
            for dots, letter, offset in CLASSES[fonts]:
                number = style * 100000 + code_set * 10000 + dots * 100 + letter
                opens += (
                    f"open style={style},{STYLES[style]} shape=1,zenkaku set={code_set},{name},"
                    f"{code_set} final=2 size={dots}x{dots} letter={letter}x{letter}"
                    f" offset={offset},{offset} mask=fffc LANG=ja FAL_LANG=ja_JP.U90"
                    f" -> {number}\n"
                )
                closes += f"close {number}\n"
    return opens, closes


def log(opens: str, closes: str) -> dict[str, bytes]:
    text = "load\n" + opens + closes + "unload\n"
    return {"sandbox/standin/log": text.encode()}


def library() -> Theme:
    to = Theme("the font library", "fonts")
    plain = sheet(CONDITIONS + b"A\f", CARRIED)
    every = b"every-font\n"
    to.add("low", "The fonts of 240 dots are opened, and closed once each.", b"A\f", plain,
           fonts=every, leaves=log(*opened("low")))
    to.add("low-gothic", "On a printer with g those of the second typeface, too.", b"A\f", plain,
           "-G", "g", fonts=every, leaves=log(*opened("low", (1, 2))))
    to.add("fixed", "With -E the fonts of the fixed form.", b"A\f", sheet(b"A\f"), "-E", "-q",
           fonts=every, leaves=log(*opened("fixed")))
    to.add("fine", "With -B the finest.", b"A\f", of_resolution("400", 43, 19), "-B", "-q",
           fonts=every, leaves=log(*opened("fine")))
    first = opened("low")
    second = opened("high")
    to.add("switch", "A record opens the fonts of a resolution of 400 dots.",
           command(columns()) + b"A\f", of_resolution("400", 43, 19), "-G", "D400", "-q",
           fonts=every, leaves=log(first[0] + first[1] + second[0], second[1]))
    # Of two fonts with one number one is closed.
    shared = b"every-font\nfont 1 2 16 16 7\nfont 1 4 40 36 7\n"
    opens, closes = opened("low")
    opens = opens.replace("-> 121616\n", "-> 7\n").replace("-> 144036\n", "-> 7\n")
    closes = closes.replace("close 121616\n", "close 7\n").replace("close 144036\n", "")
    to.add("shared", "A font that answers twice is closed once.", b"A\f", plain, fonts=shared,
           leaves=log(opens, closes))
    none = b"every-font\nno-font 1 2 16 16\n"
    opens, closes = opened("low")
    opens = opens.replace("-> 121616\n", "-> 0\n")
    closes = closes.replace("close 121616\n", "")
    to.add("none", "A font that is not there is no error.", b"A\f", plain, fonts=none,
           leaves=log(opens, closes))
    listed = b"every-font\nmissing-list\n"
    opens, closes = opened("low")
    with_lists = "".join(
        f"{line} list {number}\nfree-list {number}\n"
        for number, line in enumerate(opens.splitlines(), 1)
    )
    to.add("lists", "Each list of missing fonts is given back.", b"A\f", plain, fonts=listed,
           leaves=log(with_lists, closes))
    messages = {
        1: b"can't open fontfile\n", 2: b"can't read fontfile (42)\n", 3: b"can't get area\n",
        4: b"invalid PKEY\n", 5: b"parameter error (42)\n", 6: b"stat error (42)\n",
        7: b"broken fontfile\n", 8: b"can't open fontlist(42)\n", 9: b"can't read fontlist(42)\n",
        0: b"", 10: b"", -1: b"",
    }
    for number, message in messages.items():
        to.add(f"error-{number}", f"The library's error {number}: status 127.", b"A\f", b"",
               fonts=b"every-font\nopen-error 1 2 16 16 %d 42\n" % number,
               stderr=b"filter: " + message if message else b"", status=127)
    opens, closes = opened("low")
    lines = opens.splitlines(keepends=True)
    broken = lines[6].rsplit("-> ", 1)[0] + "-> -1\n"
    closed = "".join(closes.splitlines(keepends=True)[:6])
    to.add("error-later", "What is open already is closed then.", b"A\f", b"",
           fonts=b"every-font\nopen-error 1 4 24 22 2 5\n",
           stderr=b"filter: can't read fontfile (5)\n", status=127,
           leaves=log("".join(lines[:6]) + broken, closed))
    # Without their library -B on a printer of 240 dots ends at a record.
    to.add("no-class", "-B on a printer of 240 dots: a record ends the job with 255.",
           b"A" + command(columns()) + b"B\f", sheet(b"A\f"), "-B", "-q", "-G", "D240", status=255)
    to.add("class-without-record", "Without a record it is printed.", b"A\f", sheet(b"A\f"), "-B",
           "-q", "-G", "D240")
    return to


CHECKS = library().checks
