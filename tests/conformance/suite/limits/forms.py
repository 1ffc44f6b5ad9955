"""Form files: what they may hold; lengths as they are told to the printer."""

from .expected import (
    END, FORM_ERROR, LAST_FEED, PITCH_6, Theme, block, headed, job, page, sheet,
)

PITCHES = {
    2400: b'\x1c%"$ p', 1800: b"\x1c%!( p", 1200: b'\x1c%!" p', 900: b"\x1c%) p",
    600: b"\x1c%& p",
}


def top(lines: int, pitch: bytes = PITCH_6) -> bytes:
    """The top of a form down to a line."""
    return (pitch + b"\n") * (lines - 1) + pitch


def told(tenths: int, line: int = 1) -> bytes:
    """A page with -E or -R on a form of so many tenths of an inch; -q."""
    head = headed(b"PSZ=LP\nFFL=%d\n" % tenths, b"\x1bQ0;4;0!F\x1bQ10;;%05d;!\\" % tenths)
    return head + block("2", top(line) + b"A\f") + END


class Forms(Theme):
    def form(self, name: str, about: str, text: bytes, stdout: bytes, *options: str,
             stdin: bytes = b"A\f") -> None:
        self.add(name, about, stdin, stdout, "-n", "./SLIP", *options, files={"SLIP": text})

    def bad(self, name: str, about: str, text: bytes, *options: str) -> None:
        self.refuse(name, about, FORM_ERROR, "-n", "./SLIP", *options, files={"SLIP": text})


def walk(lines: int, pitch: bytes = PITCH_6) -> bytes:
    """A job on a form of so many lines, of top line 1: line feeds to its last line, and one more."""
    # The line feed that leaves the form becomes a form feed and the top, one piece in front of what
    # follows: it does not end in a form feed, and so ends no page.
    return sheet(pitch + b"A" + (b"\n" + pitch) * (lines - 1) + b"\f" + pitch + b"B\f")


def top_lines() -> Theme:
    to = Forms("the first line of a form", "top", "-q")
    to.form("1", "Printing starts on line 1.", b"print 1\n", sheet(top(1) + b"A\f"))
    to.form("2", "On line 2.", b"print 2\n", sheet(top(2) + b"A\f"))
    to.form("default", "Without a print line on line 4.", b"lpi 1200 66\n",
            sheet(top(4) + b"A\f"))
    to.form("empty", "An empty file: the same.", b"", sheet(top(4) + b"A\f"))
    to.form("66", "On line 66, the last of 11 inches.", b"print 66\n", sheet(top(66) + b"A\f"))
    to.bad("67", "Line 67 is none of 66.", b"print 67\n")
    to.form("240", "On line 240, the last of 20 inches of 600.",
            b"print 240 144000\nlpi 600 240\n", sheet(top(240, PITCHES[600]) + b"A\f"))
    to.bad("255", "On line 255: no form has so many.", b"print 255 144000\nlpi 600 240\n")
    to.bad("0", "Line 0 is none.", b"print 0\n")
    to.bad("256", "Line 256 is none.", b"print 256 144000\nlpi 600 240\n")
    to.bad("absent", "A print line without it.", b"print\n")
    to.bad("minus", "A sign is no digit.", b"print -1\n")
    to.bad("plus", "Nor is a plus.", b"print +1\n")
    to.bad("letter", "Nor a letter.", b"print 1x\n")
    to.form("zeros", "Leading zeros are read.", b"print 0001\n", sheet(top(1) + b"A\f"))
    to.form("of-lines", "The last of ten lines.", b"print 10\nlpi 1200 10\n",
            sheet(top(10) + b"A\f"))
    to.bad("behind-lines", "The eleventh of ten lines.", b"print 11\nlpi 1200 10\n")
    to.bad("twice", "Two print lines.", b"print 1\nprint 1\n")
    return to


def lengths() -> Theme:
    to = Forms("the length of a form", "height", "-q")

    def length(value: str, tenths: int, about: str, option: str = "-E") -> None:
        to.form(f"{value}{option}", about, b"print 1 " + value.encode() + b"\n", told(tenths),
                option)

    length("1", 10, "-E: less than an inch is an inch.")
    length("7199", 10, "-E: 7199 is an inch.")
    length("7200", 10, "-E: 7200 is an inch.")
    length("7201", 20, "-E: 7201 is rounded up to two.")
    length("14399", 20, "-E: 14399 is two inches.")
    length("14400", 20, "-E: 14400 is two inches.")
    length("14401", 30, "-E: 14401 is three.")
    length("79200", 110, "-E: 79200 is eleven.")
    length("143999", 200, "-E: 143999 is twenty.")
    length("144000", 200, "-E: 144000 is twenty.")
    length("144001", 200, "-E: more than twenty inches is twenty.")
    length("99999999999999999999", 200, "-E: a number of twenty digits is twenty inches.")
    length("144001x", 200, "-E: behind the digit that passes twenty inches nothing is read.")
    length("0", 10, "-E: 0 is an inch.")
    length("79200", 110, "-N: as -E.", "-N")
    length("1", 40, "-R: less than 3.5 inches is 3.5, which is rounded up.", "-R")
    length("25199", 40, "-R: 25199 is the same.", "-R")
    length("25200", 40, "-R: 25200 is 3.5 inches, rounded up.", "-R")
    length("28800", 40, "-R: 28800 is four inches.", "-R")
    length("28801", 50, "-R: 28801 is five.", "-R")
    length("100799", 140, "-R: 100799 is 14.", "-R")
    length("100800", 140, "-R: 100800 is 14.", "-R")
    length("100801", 140, "-R: more than 14 inches is 14.", "-R")
    to.form("absent", "-E: without a length 11 inches.", b"print 1\n", told(110), "-E")
    to.form("empty", "-E: an empty file is 11 inches.", b"", told(110, 4), "-E")
    to.bad("letter", "A letter in the length.", b"print 1 7200x\n")
    to.bad("minus", "A sign in the length.", b"print 1 -7200\n")
    to.form("third-word-ignored", "What follows the length is ignored.", b"print 1 79200 x y z\n",
            told(110), "-E")
    return to


def line_groups() -> Theme:
    to = Forms("the lines of a form", "group", "-q")
    for pitch, sequence in PITCHES.items():
        to.form(f"{pitch}", f"Lines of {pitch}.", b"print 2\nlpi %d 20\n" % pitch,
                sheet(top(2, sequence) + b"A\f"))
    for pitch in (0, 599, 601, 899, 901, 1000, 1199, 1201, 1799, 1801, 2399, 2401, 12000):
        to.bad(f"{pitch}", f"Lines of {pitch} are none.", b"lpi %d 20\n" % pitch)
    full = b"print 1 144000\n"
    to.form("255-lines", "255 lines, in one group.", full + b"lpi 600 240\nlpi 600 0\n",
            sheet(PITCHES[600] + b"A\f"))
    to.bad("255-of-600", "255 lines of 600 are taller than 20 inches.", full + b"lpi 600 255\n")
    to.bad("256", "A group of 256 lines.", full + b"lpi 600 256\n")
    to.bad("sum-256", "Groups of 256 lines together.", full + b"lpi 600 128\nlpi 600 128\n")
    to.form("sum-240", "Groups of 240 lines of 600 fill 20 inches.",
            full + b"lpi 600 120\nlpi 600 120\n", sheet(PITCHES[600] + b"A\f"))
    to.bad("sum-241", "One line more is too tall.", full + b"lpi 600 120\nlpi 600 121\n")
    to.form("zero", "A group of no lines.", b"print 1\nlpi 600 0\n", sheet(PITCH_6 + b"A\f"))
    to.form("zeros", "Leading zeros are read.", b"print 1\nlpi 01200 0010\n",
            sheet(PITCH_6 + b"A\f"))
    to.form("fills", "Lines as tall as the form.", b"print 1\nlpi 1200 66\n",
            sheet(PITCH_6 + b"A\f"))
    to.bad("too-tall", "A line too many.", b"print 1\nlpi 1200 67\n")
    to.bad("too-tall-by-half", "The same by half a line.", b"lpi 1200 66\nlpi 600 1\n")
    to.form("unrounded", "The height is not rounded: 30000 holds 25 lines.",
            b"print 1 30000\nlpi 1200 25\n", sheet(PITCH_6 + b"A\f"))
    to.bad("unrounded-26", "It does not hold 26.", b"print 1 30000\nlpi 1200 26\n")
    to.bad("no-pitch", "A group without anything.", b"lpi\n")
    to.bad("no-count", "A group without a count.", b"lpi 1200\n")
    to.bad("count-letter", "A letter in a count.", b"lpi 1200 1x\n")
    to.bad("count-minus", "A sign in a count.", b"lpi 1200 -1\n")
    to.bad("pitch-letter", "A letter in a pitch.", b"lpi 1200x 1\n")
    to.form("before-print", "A group before the print line.", b"lpi 900 20\nprint 1\n",
            sheet(PITCHES[900] + b"A\f"))
    for lines, text in ((66, b"print 1\n"), (72, b"print 1 86400\n"),
                        (10, b"print 1\nlpi 1200 10\n"), (1, b"print 1\nlpi 1200 1\n"), (2, b"print 1\nlpi 1200 2\n"),
                        (120, b"print 1 144000\n"), (6, b"print 1 7200\n")):
        to.form(f"walk-{lines}", f"A form of {lines} lines ends behind the last of them.", text,
                walk(lines), stdin=b"A" + b"\n" * lines + b"B\f")
    to.form("walk-rounded", "Without groups a form is filled to its rounded length: 5 inches.",
            b"print 1 30000\n", walk(30), stdin=b"A" + b"\n" * 30 + b"B\f")
    to.form("walk-mixed", "Each line gets its own pitch.",
            b"print 1\nlpi 1200 2\nlpi 900 1\nlpi 600 1\n",
            sheet(PITCHES[1200] + b"A\n" + PITCHES[1200] + b"\n" + PITCHES[900] + b"\n"
                  + PITCHES[600] + b"B\f"), stdin=b"A\n\n\nB\f")
    to.form("last-line-feed", "The line feed that ends the job has no pitch.", b"print 1\n",
            headed(b"") + block("2", PITCH_6 + b"A\n", 20) + LAST_FEED + END,
            stdin=b"A\n")
    to.form("page-length", "With a form -L says nothing.", b"print 1\n",
            sheet(PITCH_6 + b"A\n" + PITCH_6 + b"B\n" + PITCH_6 + b"C\f"), "-L", "1",
            stdin=b"A\nB\nC\f")
    to.form("two-pages", "The second page begins with the top of the form.", b"print 2\n",
            job(page(top(2) + b"A\f"), page(top(2) + b"B\f")), stdin=b"A\fB\f")
    return to


def syntax() -> Theme:
    to = Forms("the text of a form file", "syntax", "-q")
    good = sheet(PITCH_6 + b"A\f")

    def line(name: str, about: str, text: bytes) -> None:
        to.form(name, about, text, good)

    line("comment", "Comments and blank lines.", b"# a form\n\n  \t \n \t# x\nprint 1 # y\n")
    line("comment-joined", "A comment right behind a number.", b"print 1#x\n")
    line("no-line-feed", "A last line without its line feed.", b"print 1")
    line("blanks", "Blanks and tabs between the words, and in front.", b" \tprint \t 1 \t \n")
    line("more-words", "A fourth word and more are ignored.", b"print 1 79200 x y\n")
    line("comment-ends", "A comment ends the line: no length is read.", b"print 1#79200x\n")
    line("511", "A comment of 511 bytes with its line feed.", b"#" + b"x" * 509 + b"\nprint 1\n")
    line("511-blanks", "511 blanks in front of a word.", b" " * 511 + b"print 1\n")
    line("511-words", "Words up to the 511th byte.", b" " * 504 + b"print 1\n")
    to.bad("512-words", "Words up to the 512th are divided.", b" " * 505 + b"print 1\n")
    to.bad("512", "A comment of 512 bytes is read as two lines.", b"#" + b"x" * 511 +
           b"\nprint 1\n")
    line("512-blank", "A comment of 511 bytes and a comment.", b"#" + b"x" * 510 + b"#\nprint 1\n")
    to.bad("upper-case", "A keyword in upper case.", b"PRINT 1\n")
    to.bad("unknown", "An unknown keyword.", b"top 1\n")
    to.bad("prefix", "A keyword with a letter more.", b"prints 1\n")
    to.bad("shorter", "A keyword with a letter less.", b"prin 1\n")
    to.bad("cr", "A carriage return is a character like others.", b"print 1\r\n")
    to.bad("cr-alone", "On a line of its own, too.", b"\r\nprint 1\n")
    to.bad("nul", "A NUL in front of a keyword is not skipped as a blank is.", b"x\x00print 1\n")
    to.bad("form-feed", "A form feed is no blank.", b"print\f1\n")
    return to


CHECKS = [
    check
    for theme in (top_lines(), lengths(), line_groups(), syntax())
    for check in theme.checks
]
