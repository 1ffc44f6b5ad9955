"""Print-condition commands and form parameters: their columns and their numbers."""

from typing import Optional

from .expected import (
    END, FORM_ERROR, PITCH_6, RESET, SPACING, START, STATE, Theme, UNIT, block, headed, job, page,
    sheet,
)

# The third byte of the data is the layout digit; columns are counted from it.
LAYOUT = 2


def columns(layout: str = "0", length: int = 100, **texts: str) -> bytes:
    """The data of a command: `c12="003"` puts a text at column 12."""
    data = bytearray(b" " * length)
    data[LAYOUT : LAYOUT + 1] = layout.encode()
    for name, text in texts.items():
        at = LAYOUT + int(name[1:])
        data[at : at + len(text)] = text.encode()
    return bytes(data)


def command(data: bytes, number: Optional[str] = None, first: str = "1") -> bytes:
    count = str(len(data)) if number is None else number
    return b"\x1bQ" + first.encode() + b";" + count.encode() + b" n" + data


def told() -> Theme:
    to = Theme("columns of a print-condition command", "record", "-q")

    def tells(name: str, about: str, data: bytes, lines: bytes, formats: bytes = b"",
              setup: bytes = b"", *options: str) -> None:
        to.add(name, about, command(data) + b"A\f",
               headed(lines, formats, setup) + page(b"A\f") + END, *options)

    plain = sheet(b"A\f")
    to.add("blank", "A blank record tells nothing.", command(columns()) + b"A\f", plain)
    for layout in "012":
        to.add(f"layout-{layout}", f"The layout {layout} is one.",
               command(columns(layout, c12="005")) + b"A\f",
               headed(b"CPS=5\n") + page(b"A\f") + END)
    for layout in "/3 ":
        to.add(f"layout-{ord(layout):02x}", f'The layout "{layout}" is none: it tells nothing.',
               command(columns(layout, c12="005")) + b"A\f", plain)
    tells("overlay-4", "Layout 0 has an overlay of four characters.",
          columns("0", c1="ABCDEFG", c9="   "), b"FOV=ABCD\n")
    tells("overlay-8", "Layout 2 has one of eight.", columns("2", c1="ABCDEFGH"),
          b"FOV=ABCDEFGH\n")
    tells("overlay-blank", "Blanks and signs in it are dropped.", columns("2", c1="A B-C_D."),
          b"FOV=ABCD\n")
    tells("overlay-last", "Letters and digits: their ends.", columns("2", c1="AZaz09@["),
          b"FOV=AZaz09\n")
    tells("count-1", "An overlay count of 1.", columns("2", c9="001"), b"OVS=1\n")
    tells("count-999", "An overlay count of 999.", columns("2", c9="999"), b"OVS=999\n")
    to.add("count-0", "One of 0 is not told.", command(columns("2", c9="000")) + b"A\f", plain)
    tells("count-copies", "With an overlay the copies take its place.",
          columns("2", c1="ABCD", c9="000", c12="007"), b"FOV=ABCD\nOVS=7\nCPS=7\n")
    tells("count-own", "But not when there is one.", columns("2", c1="ABCD", c9="001", c12="007"),
          b"FOV=ABCD\nOVS=1\nCPS=7\n")
    tells("copies-999", "999 copies.", columns(c12="999"), b"CPS=999\n")
    tells("copies-blank", "A blank in front of a number.", columns(c12=" 12"), b"CPS=12\n")
    tells("copies-junk", "What follows a number is ignored.", columns(c12="1x2"), b"CPS=1\n")
    tells("form-code", "A form code of four characters, the fifth is none.",
          columns(c35="ABCDE"), b"FRM=ABCD\n")
    paper = b"\x1bQ0;4;%d!F"
    for code, value, digit, behind in (
        ("P ", 0, 0, b""), ("L ", 1, 1, b""), ("PZ", 2, 0, b"\x1bQ66;66!I"),
        ("LZ", 3, 1, b"\x1bQ66;66!I"), ("LP", 4, 0, b"\x1bQ66;80!I"),
    ):
        tells(f"orientation-{code.strip()}", f"The orientation {code}.", columns(c57=code),
              b"ORT=%d\n" % value, b"\x1bQ100;100!I" + paper % digit + behind)
    head = headed(b"", b"\x1bQ100;100!I" + paper % 1)
    to.add("orientation-unknown", "One that is none: no line, but a format.",
           command(columns(c57="X ")) + b"A\f", head + page(b"A\f") + END)
    for size, line, digits in (
        ("A4 ", b"A4", b"0;4"), ("A3 ", b"A3", b"0;3"), ("A5 ", b"A5", b"0;5"),
        ("B4 ", b"B4", b"1;4"), ("B5 ", b"B5", b"1;5"), ("LTR", b"LT", b"3;4"),
        ("LT ", b"LT", b"0;4"), ("A6 ", b"A6", b"0;4"), ("35 ", b"35", b"0;3"),
    ):
        tells(f"paper-{size.strip()}", f"The paper {size}.", columns(c59=size),
              b"PSZ=" + line + b"\n", b"\x1bQ" + digits + b";0!F")
    for tray, line, sequence in (
        ("P1", b"BIN=1\n", b"\x1bQ0;4;0;0!@"), ("P2", b"BIN=2\n", b"\x1bQ0;4;1;0!@"),
        ("P3", b"BIN=3\n", b"\x1bQ0;4;3;0!@"), ("P4", b"BIN=4\n", b"\x1bQ0;4;4;0!@"),
        ("P ", b"BIN=A\n", b"\x1bQ0;4;0!F"), ("P5", b"", b"\x1bQ0;4;0!F"),
        ("P0", b"", b"\x1bQ0;4;0!F"),
    ):
        tells(f"tray-{tray.strip()}", f"The tray {tray}.", columns(c62=tray), line, sequence)
    tells("duplex", "Duplex, with an edge and a margin.",
          columns(c66="B", c69="U", c73="00500"), b"DUP=1\n", b"", b"\x1bQ2;2;00500;00000!W")
    tells("duplex-landscape", "In landscape edge and offsets stand elsewhere.",
          columns(c57="L ", c66="B", c71="U", c73="00500", c88="01440"), b"DUP=1\nORT=1\n",
          b"\x1bQ100;100!I" + paper % 1, b"\x1bQ2;2;00500;00000!W\x1bQ1440;;;!H")
    tells("duplex-left", "The left edge.", columns(c66="B", c69="L", c73="99999"), b"DUP=1\n", b"",
          b"\x1bQ2;0;99999;00000!W")
    tells("duplex-other", "Another edge: no margin.", columns(c66="B", c69="R", c73="00500"),
          b"DUP=1\n", b"", b"\x1bQ2;0;00000;00000!W")
    tells("simplex", "Simplex.", columns(c66="F", c73="00500"), b"DUP=0\n", b"", b"\x1bQ0;;;!W")
    tells("simplex-D", "Simplex with -D.", columns(c66="F", c73="00500", c69="U"), b"DUP=0\n",
          b"", b"\x1bQ0;2;00000;00000!W", "-D")
    tells("offset-1440", "A first offset of 1440.", columns(c78="01440"), b"",
          b"", b"\x1bQ1440;;;!H")
    tells("offset-1439", "One of 1439 is told as none.", columns(c78="01439"), b"", b"",
          b"\x1bQ;;;!H")
    tells("offset-99999", "One of 99999.", columns(c78="99999"), b"", b"", b"\x1bQ99999;;;!H")
    tells("second-1440", "A second offset of 1440.", columns(c83="01440"), b"", b"",
          b"\x1bQ;1440;;!H")
    tells("second-1439", "One of 1439 is told as none.", columns(c83="01439"), b"", b"",
          b"\x1bQ;;;!H")
    tells("both", "Both.", columns(c78="01440", c83="02000"), b"", b"", b"\x1bQ1440;2000;;!H")
    setup = block("9", b"\x1bQ1;7200!C\x1bQ;;;!H")
    to.add("offset-again", "One below 1440 comes again on every page.",
           command(columns(c78="01439")) + b"A\fB\f",
           headed(b"", b"", b"\x1bQ;;;!H") + page(b"A\f") + setup + page(b"B\f") + END)
    setup = block("9", b"\x1bQ1;7200!C\x1bQ;1440;;!H")
    to.add("second-again", "So does a second offset of 1440.",
           command(columns(c83="01440")) + b"A\fB\f",
           headed(b"", b"", b"\x1bQ;1440;;!H") + page(b"A\f") + setup + page(b"B\f") + END)
    to.add("offset-once", "One of 1440 does not.", command(columns(c78="01440")) + b"A\fB\f",
           headed(b"", b"", b"\x1bQ1440;;;!H") + page(b"A\f") + UNIT + page(b"B\f") + END)
    to.add("told-once", "What is told already is not told again.",
           command(columns(c12="005")) + b"A\f" + command(columns(c12="005")) + b"B\f",
           headed(b"CPS=5\n") + page(b"A\f") + UNIT + page(b"B\f") + END)
    to.add("count-back-to-0", "An overlay count that goes back to 0 is not told.",
           command(columns("2", c9="005")) + b"A\f" + command(columns("2")) + b"B\f",
           headed(b"OVS=5\n") + page(b"A\f") + UNIT + page(b"B\f") + END)
    text = b"%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=240\nCPS=5\nMAK=UNIX\n"
    changed = b"%%%=Pji,0101,UNIC\nEMU=RLX\nCPS=0\nMAK=UNIX\n"
    to.add("told-zero", "Copies that go back to none are told.",
           command(columns(c12="005")) + b"A\f" + command(columns()) + b"B\f",
           b"\x1bQ0;%010d/`" % len(text) + text + START + b"\x1bQ8;0000000019/a\x1bQ240!A" + UNIT
           + page(b"A\f") + b"\x1bQ0;%010d/`" % len(changed) + changed + UNIT + page(b"B\f")
           + END)
    return to


def shape() -> Theme:
    to = Theme("the shape of a print-condition command", "shape", "-q")
    to.add("17", "Data of 17 bytes is the long kind.",
           command(columns(length=17, c12="005")) + b"A\f",
           headed(b"CPS=5\n") + page(b"A\f") + END)
    to.add("16", "Data of 16 bytes is the short kind, which names no form: status 1.",
           command(columns(length=16)) + b"A\f", b"", stderr=FORM_ERROR, status=1)
    to.add("16-behind-page", "A page before it is printed.",
           b"B" + command(columns(length=16)) + b"A\f", sheet(b"B\f"), stderr=FORM_ERROR,
           status=1)
    to.add("0016", "Zeros in front of the number do not make it longer.",
           b"B" + command(columns(length=16), "0016") + b"A\f", sheet(b"B\f"), stderr=FORM_ERROR,
           status=1)
    to.add("0017", "Nor do they shorten it.",
           command(columns(length=17, c12="005"), "0017") + b"A\f",
           headed(b"CPS=5\n") + page(b"A\f") + END)
    to.add("no-number", "No number: said twice, status 1.", b"B\x1bQ1; nA\f", sheet(b"B\f"),
           stderr=FORM_ERROR * 2, status=1)
    to.add("name-bad", "A form name with a sign.", b"B" + command(columns(c11="A-BC")) + b"A\f",
           sheet(b"B\f"), stderr=b"filter: FCB name error\n", status=1)
    to.add("name-unknown", "A form that is not there.", b"B" + command(columns(c11="ABCD")) +
           b"A\f", sheet(b"B\f"), stderr=FORM_ERROR, status=1)
    slip = {"forms/fcbe/SLIP": b"print 1\n", "forms/fcbe/SL": b"print 2\n"}
    # Columns 11 to 14 lie over the counts, 12 to 14 being the copies.
    to.add("name-4", "A form by four letters.", command(columns(c11="SLIP")) + b"A\f",
           sheet(PITCH_6 + b"A\f"), "-p", "forms", files=slip)
    to.add("name-2", "A form by two letters and a blank.", command(columns(c11="SL P")) + b"A\f",
           sheet(PITCH_6 + b"\n" + PITCH_6 + b"A\f"), "-p", "forms", files=slip)
    to.add("name-layout-2", "In layout 2 its name stands four columns on.",
           command(columns("2", c15="SLIP")) + b"A\f", sheet(PITCH_6 + b"A\f"), "-p", "forms",
           files=slip)
    to.add("after-text", "A record behind text ends the page.", b"A" + command(columns()) + b"B\f",
           job(page(b"A\f"), page(b"B\f")))
    to.add("after-feed", "Behind a form feed it does not.", b"A\f" + command(columns()) + b"B\f",
           job(page(b"A\f"), page(b"B\f")))
    to.add("twice", "Two in a row end it once.", b"A" + command(columns()) * 2 + b"B\f",
           job(page(b"A\f"), page(b"B\f")))
    for name, sequence in (("x", b"\x1bQ1!x"), ("del", b"\x1bQ1;0!\x7f"), ("wide", b"\x80")):
        to.add(f"after-{name}", "So does one behind what is drawn.",
               sequence + command(columns()) + b"B\f", job(page(sequence + b"\f"), page(b"B\f")))
    for name, sequence in (
        ("c", b"\x1bc"), ("del4", b"\x1b\x7f1234"), ("at", b"\x1bQ1!@"), ("A", b"\x1bQ1!A"),
        ("H", b"\x1bQ1!H"), ("F", b"\x1bQ1!F"), ("W", b"\x1bQ1!W"), ("bar", b"\x1bQ1/|"),
        ("backslash", b"\x1bQ1!\\"), ("bracket", b"\x1bQ1!]"), ("brace", b"\x1bQ1/}"),
        ("I", b"\x1bQ1!I"),
    ):
        to.add(f"behind-{name}", "Text, a sequence that starts a new state, a record: no feed.",
               b"A" + sequence + command(columns()) + b"B\f", sheet(b"A" + sequence + b"B\f"))
    for name, sequence in (("C", b"\x1bQ1!C"), ("D", b"\x1bQ1!D"), ("J", b"\x1cJ"), ("cr", b"\r"),
                           ("lf", b"\n"), ("X", b"\x1bQ1!X"), ("R", b"\x1bQ1/H")):
        kept = sequence if name == "J" else b""
        to.add(f"between-{name}", "Another sequence between them: a feed.",
               b"A" + sequence + command(columns()) + b"B\f",
               job(page(b"A" + sequence + b"\f", kept), page(b"B\f")))
    to.add("short-name-4", "ESC Q 2 ... n tells nothing to the printer.",
           b"A" + command(columns("0", c7="ABCD"), first="2") + b"B\f",
           job(page(b"A\f"), page(b"B\f")))
    to.add("pending", "A record at the job's end prints nothing.", b"A\f" + command(columns()),
           sheet(b"A\f"))
    to.add("pending-change", "Nor does it tell what it changes.",
           b"A\f" + command(columns(c12="005")), sheet(b"A\f"))
    to.add("pending-told", "It does when settings follow it, behind the job's end.",
           b"A\f" + command(columns(c12="005")) + b"\x1cJ",
           sheet(b"A\f") + b"\x1bQ0;0000000041/`%%%=Pji,0101,UNIC\nEMU=RLX\nCPS=5\nMAK=UNIX\n")
    return to


def form_parameter(kind: int, length: int, data: bytes, first: bytes = b"6") -> bytes:
    body = bytes([kind]) + length.to_bytes(4, "big") + data
    return b"\x1bQ" + first + b";%d o" % len(body) + body


def parameters() -> Theme:
    to = Theme("form parameters", "parameter")
    spacing_4 = b'\x1c&!"p'

    def sent(data: bytes, spacing: bytes) -> bytes:
        kept = STATE + RESET + data + spacing
        return sheet(kept + PITCH_6 + b"A\f", kept)

    for kind, spacing in ((1, SPACING), (2, SPACING), (3, spacing_4)):
        to.add(f"kind-{kind}", f"A form parameter of kind {kind}.",
               form_parameter(kind, 3, b"abc") + b"A\f", sent(b"abc", spacing))
    for kind in (0, 4, 255):
        to.add(f"kind-{kind}", f"The kind {kind} is none.",
               form_parameter(kind, 3, b"abc") + b"A\f", sent(b"", SPACING))
    for length in (0, 1, 99, 100):
        to.add(f"length-{length}", f"Form data of {length} bytes.",
               form_parameter(1, length, b"d" * length) + b"A\f", sent(b"d" * length, SPACING))
    for length in (101, 256):
        to.add(f"length-{length}", f"Form data of {length} bytes is refused.",
               form_parameter(1, length, b"d" * length) + b"A\f", sent(b"", SPACING))
    to.add("length-65636", "The length has four bytes.",
           form_parameter(1, 65536 + 100, b"d" * 100) + b"A\f", sent(b"", SPACING))
    to.add("kind-3-refused", "Of refused data the spacing of its kind holds.",
           form_parameter(3, 101, b"d" * 101) + b"A\f", sent(b"", spacing_4))
    to.add("other-field", "A first field other than 6.",
           form_parameter(1, 3, b"abc", b"5") + b"A\f", sent(b"", SPACING))
    to.add("zeros", "Zeros in front of the 6.", form_parameter(1, 3, b"abc", b"006") + b"A\f",
           sent(b"abc", SPACING))
    kept = STATE + RESET + b"abc"
    to.add("kind-2-g", "Kind 2 on a printer with g: no spacing.",
           form_parameter(2, 3, b"abc") + b"A\f", sheet(kept + PITCH_6 + b"A\f", kept), "-G", "g")
    to.add("kind-1-g", "Kind 1 there: spacing.", form_parameter(1, 3, b"abc") + b"A\f",
           sent(b"abc", SPACING), "-G", "g")
    to.add("feed-in-data", "Form data that ends with a form feed ends the page.",
           form_parameter(1, 3, b"ab\f") + b"A\f",
           job(page(STATE + RESET + b"ab\f", STATE + RESET),
               page(SPACING + PITCH_6 + b"A\f", b"ab\f" + SPACING)))
    return to


CHECKS = [check for theme in (told(), shape(), parameters()) for check in theme.checks]
