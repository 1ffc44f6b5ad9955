"""The environment file and the range of user-defined characters."""

from .expected import CARRIED, CONDITIONS, Theme, sheet
from .forms import told

ENVIRONMENT = "sandbox/etc/opt/PXLQwrmtk/wrmtk/wrmtkenv"
RANGE = "sandbox/etc/lp/g1gaiji"
COMMON = b"*COMMON\n"
HALF = b"FCBPRINT:2\n"


def environment() -> Theme:
    to = Theme("the environment file", "environment", "-q", "-E", "-n", "./SLIP")

    def rounds(name: str, about: str, text: bytes, half: bool) -> None:
        # 30000 is 4.17 inches: 4 by half inches, 5 by inches.
        to.add(name, about, b"A\f", told(40 if half else 50),
               files={"SLIP": b"print 1 30000\n", ENVIRONMENT: text})

    to.add("absent", "Without it lengths are rounded up to inches.", b"A\f", told(50),
           files={"SLIP": b"print 1 30000\n"})
    rounds("half", "FCBPRINT:2 rounds down to half inches.", COMMON + HALF, True)
    to.add("half-odd", "41000 is 5.5 inches then.", b"A\f", told(55),
           files={"SLIP": b"print 1 41000\n", ENVIRONMENT: COMMON + HALF})
    to.add("half-of-R", "With -R 3.5 inches stay so.", b"A\f", told(35), "-R",
           files={"SLIP": b"print 1 25199\n", ENVIRONMENT: COMMON + HALF})
    rounds("empty", "An empty file.", b"", False)
    rounds("no-section", "Before the first section nothing counts.", HALF + COMMON, False)
    rounds("other-section", "Nor in another one.", b"*OTHER\n" + HALF, False)
    rounds("other-behind", "Another section ends this one.", COMMON + b"*OTHER\n" + HALF, False)
    rounds("second-section", "A second section of the name counts.",
           COMMON + b"*OTHER\n" + COMMON + HALF, True)
    rounds("longer-name", "*COMMONS is this section, too.", b"*COMMONS\n" + HALF, True)
    rounds("shorter-name", "*COMMO is not.", b"*COMMO\n" + HALF, False)
    rounds("lower-case", "*common is not.", b"*common\n" + HALF, False)
    rounds("value-1", "The value 1.", COMMON + b"FCBPRINT:1\n", False)
    rounds("value-3", "The value 3.", COMMON + b"FCBPRINT:3\n", False)
    rounds("value-20", "Of 20 the first digit counts.", COMMON + b"FCBPRINT:20\n", True)
    rounds("value-02", "Of 02, too.", COMMON + b"FCBPRINT:02\n", False)
    rounds("last-wins", "The last value counts.", COMMON + HALF + b"FCBPRINT:1\n", False)
    rounds("last-wins-2", "Also when it is 2.", COMMON + b"FCBPRINT:1\n" + HALF, True)
    rounds("no-value", "No value leaves the one before.", COMMON + HALF + b"FCBPRINT:\n", True)
    rounds("no-colon", "So does a line without a colon.", COMMON + HALF + b"FCBPRINT\n", True)
    rounds("colon-2", "Behind the first colon all is value.", COMMON + b"FCBPRINT::2\n", False)
    rounds("other-key", "Another key.", COMMON + b"FCBPRINTS:2\n", False)
    rounds("lower-key", "The key in lower case.", COMMON + b"fcbprint:2\n", False)
    rounds("blanks", "Blanks and control bytes do not count, wherever they stand.",
           b" *COM\tMON\r\n F C B\x01PRINT : \xff2\r\n", True)
    rounds("comment", "A comment behind the value.", COMMON + b"FCBPRINT:2# x\n", True)
    rounds("commented", "A line that is a comment.", COMMON + b"#FCBPRINT:2\n", False)
    rounds("commented-value", "A value that is a comment.", COMMON + b"FCBPRINT:#2\n", False)
    rounds("no-line-feed", "A last line without its line feed.", COMMON + b"FCBPRINT:2", True)
    for size in (511, 512):
        rounds(f"line-{size}", f"A line of {size} characters.",
               COMMON + b"FCBPRINT:2" + b"x" * (size - 10) + b"\n", True)
    rounds("line-513", "One of 513 is dropped.", COMMON + b"FCBPRINT:2" + b"x" * 503 + b"\n",
           False)
    rounds("line-of-blanks", "Of 2000 blanks and ten characters all counts.",
           COMMON + b" " * 2000 + b"FCBPRINT:2\n", True)
    rounds("long-comment", "A comment goes on over 512 bytes to the line's end.",
           COMMON + b"#" + b"x" * 1000 + b"\nFCBPRINT:2 #" + b"*" * 2000 + b"\n", True)
    rounds("header-513", "A header of 513 characters is dropped.",
           b"*COMMON" + b"x" * 506 + b"\n" + HALF, False)
    rounds("header-512", "One of 512 is not.", b"*COMMON" + b"x" * 505 + b"\n" + HALF, True)
    return to


def character_range() -> Theme:
    to = Theme("the range of user-defined characters", "range")
    plain = sheet(CONDITIONS + b"A\f", CARRIED)

    def good(name: str, about: str, text: bytes) -> None:
        to.add(name, about, b"A\f", plain, files={RANGE: text})

    def bad(name: str, about: str, text: bytes) -> None:
        to.refuse(name, about, b"filter: g1gaiji code error\n", files={RANGE: text})

    good("whole", "F4A7 to FEFE.", b"F4A7-FEFE\n")
    bad("f4a6", "F4A6 is below the lowest.", b"F4A6-FEFE\n")
    bad("feff", "FEFF is above the highest.", b"F5A1-FEFF\n")
    bad("ff00", "So is FF00.", b"F5A1-FFA1\n")
    good("low-a1", "A low byte of A1.", b"F5A1-F5A1\n")
    bad("low-a0", "A low byte of A0.", b"F5A0-FEFE\n")
    good("low-fe", "A low byte of FE.", b"F5FE-F6A1\n")
    bad("low-ff", "A low byte of FF.", b"F5FF-FEFE\n")
    bad("last-a0", "A0 as the last code's low byte.", b"F5A1-F6A0\n")
    bad("last-ff", "FF as the last code's low byte.", b"F5A1-F6FF\n")
    good("one", "One code.", b"F5A1-F5A1\n")
    bad("order", "The first above the last.", b"F5A2-F5A1\n")
    bad("five-digits", "More than FFFF.", b"1F5A1-FEFE\n")
    good("lower-case", "Lower-case digits.", b"f5a1-fefe\n")
    good("prefix", "0x in front.", b"0xF5A1-0XFEFE\n")
    good("blanks", "Blanks and a sign in front.", b" \tF5A1- +FEFE\n")
    good("zeros", "Leading zeros.", b"0000F5A1-0000FEFE\n")
    bad("blank-behind", "A blank behind the first code.", b"F5A1 -FEFE\n")
    bad("blank-at-end", "A blank behind the last.", b"F5A1-FEFE \n")
    bad("cr", "A carriage return behind the last.", b"F5A1-FEFE\r\n")
    bad("no-line-feed", "No line feed.", b"F5A1-FEFE")
    bad("one-code-only", "No second code.", b"F5A1\n")
    bad("no-last", "Nothing behind the hyphen.", b"F5A1-\n")
    bad("no-first", "Nothing before it.", b"-FEFE\n")
    bad("letters", "Letters that are no digits.", b"G5A1-FEFE\n")
    bad("blank-line", "A blank line.", b"\nF5A1-FEFE\n")
    bad("comment", "A comment is none.", b"# range\nF5A1-FEFE\n")
    good("second-line", "Only the first line counts.", b"F5A1-FEFE\nnothing\n")
    good("empty", "An empty file is no range.", b"")
    good("510", "A line of 510 digits, 511 bytes with its line feed.",
         b"0" * 501 + b"F5A1-FEFE\n")
    bad("512", "One of 512 bytes is cut.", b"0" * 502 + b"F5A1-FEFE\n")
    return to


CHECKS = [check for theme in (environment(), character_range()) for check in theme.checks]
