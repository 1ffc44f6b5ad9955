"""Options: which there are, how long their values may be, which numbers they take."""

from .expected import (
    CARRIED, CONDITIONS, END, FIRST, FORM_ERROR, LAST_FEED, PARAMETERS, PITCH_6, RESET, SPACING,
    START, STATE, Theme, UNIT, block, job, page, sheet,
)

LETTERS = "AcLlwnpbFJdjekmfqrEBCGMNPQRSiD"
WITH_VALUE = "clLwnpbFJjerGM"
TOP_1 = b"print 1\n"
WITH_FORM = sheet(PITCH_6 + b"A\f")


def which() -> Theme:
    to = Theme("options that there are", "option")
    for code in [*range(ord("A"), ord("Z") + 1), *range(ord("a"), ord("z") + 1)]:
        letter = chr(code)
        if letter not in LETTERS:
            to.refuse(
                f"{letter}-unknown",
                f"-{letter} is none: both passes over the command line say so.",
                b"filter: invalid option -- '%c'\n" % code * 2,
                f"-{letter}",
            )
        elif letter in WITH_VALUE:
            to.refuse(
                f"{letter}-needs-value",
                f"-{letter} without its value: both passes say so.",
                b"filter: option requires an argument -- '%c'\n" % code * 2,
                f"-{letter}",
            )
    plain = sheet(CONDITIONS + b"A\f", CARRIED)
    for letter in "ACDPQRSfikm":
        to.add(f"{letter}-alone", f"-{letter} changes nothing in a job of a line.", b"A\f", plain,
               f"-{letter}")
    for letter in "FJMbjw":
        to.add(f"{letter}-no-effect", f"-{letter} with a value changes nothing.", b"A\f", plain,
               f"-{letter}", "x")
    for length in (255, 256, 100000):
        for letter in "FJMbjw":
            to.add(f"{letter}-of-{length}", f"-{letter} with a value of {length} bytes.", b"A\f",
                   plain, f"-{letter}", "x" * length)
    without_spacing = sheet(STATE + RESET + PITCH_6 + b"A\f", STATE + RESET)
    for letter in "EN":
        to.add(f"{letter}-no-spacing", f"-{letter}: no character spacing is sent.", b"A\f",
               without_spacing, f"-{letter}")
    return to


def names() -> Theme:
    to = Theme("forms and directories of the command line", "name", "-q")
    long_name = "x" * 255
    to.add("form-255", "A form name of 255 bytes.", b"A\f", WITH_FORM, "-p", "forms", "-n",
           long_name, files={"forms/fcbe/" + long_name: TOP_1})
    to.refuse("form-256", "A form name of 256 bytes is refused.", FORM_ERROR, "-p", "forms", "-n",
              long_name + "x")
    to.add("path-255", "The path of a form of 255 bytes.", b"A\f", WITH_FORM, "-n",
           "forms/" + "x" * 249, files={"forms/" + "x" * 249: TOP_1})
    to.refuse("path-256", "The path of a form of 256 bytes is refused, though there is one.",
              FORM_ERROR, "-n", "forms/" + "x" * 250, files={"forms/" + "x" * 250: TOP_1})
    deep = "d" * 120 + "/" + "e" * 120 + "/"
    to.add("directory-255", "A directory of 255 bytes.", b"A\f", WITH_FORM, "-p",
           deep + "f" * 13, "-n", "SLIP", files={deep + "f" * 13 + "/fcbe/SLIP": TOP_1})
    to.refuse("directory-256", "A directory of 256 bytes is refused, though there is one.",
              FORM_ERROR, "-p", deep + "f" * 14, "-n", "SLIP",
              files={deep + "f" * 14 + "/fcbe/SLIP": TOP_1})
    to.refuse("directory-256-without-form", "So it is in a job without a form.", FORM_ERROR,
              "-p", deep + "f" * 14)
    here = {"forms/fcbe/SLIP": TOP_1}
    to.add("directories-128", "The 128th directory is searched.", b"A\f", WITH_FORM, "-p",
           "a:" * 127 + "forms", "-n", "SLIP", files=here)
    to.refuse("directories-129", "The 129th directory is not.", FORM_ERROR, "-p",
              "a:" * 128 + "forms", "-n", "SLIP", files=here)
    to.add("directories-64-and-64", "Directories of two options are one list, 128 in all.", b"A\f",
           WITH_FORM, "-p", "a:" * 64, "-p", "b:" * 63 + "forms", "-n", "SLIP", files=here)
    to.refuse("directories-64-and-65", "The 129th of two options is not searched.", FORM_ERROR,
              "-p", "a:" * 64, "-p", "b:" * 64 + "forms", "-n", "SLIP", files=here)
    default = {"sandbox/usr/local/lib/PXLQlp/fcbe/SLIP": TOP_1}
    to.add("default-alone", "Without -p the default directory is searched.", b"A\f", WITH_FORM,
           "-n", "SLIP", files=default)
    to.add("default-behind-127", "The default directory has the 128th place.", b"A\f", WITH_FORM,
           "-p", "a:" * 127, "-n", "SLIP", files=default)
    to.refuse("default-behind-128", "Behind 128 directories it is not searched.", FORM_ERROR,
              "-p", "a:" * 128, "-n", "SLIP", files=default)
    to.add("empty-directories", "Empty directories in the list are skipped.", b"A\f", WITH_FORM,
           "-p", "::" + "a:" * 127 + ":forms::", "-n", "SLIP", files=here)
    to.add("first-directory", "Of two forms of a name the first directory's is taken.", b"A\f",
           WITH_FORM, "-p", "forms:later", "-n", "SLIP",
           files={"forms/fcbe/SLIP": TOP_1, "later/fcbe/SLIP": b"print 2\n"})
    to.add("before-default", "A directory of -p comes before the default one.", b"A\f", WITH_FORM,
           "-p", "forms", "-n", "SLIP", files={**here, "sandbox/usr/local/lib/PXLQlp/fcbe/SLIP":
                                               b"print 2\n"})
    to.refuse("broken-form-first", "A broken form is not looked for elsewhere.", FORM_ERROR,
              "-p", "forms:later", "-n", "SLIP",
              files={"forms/fcbe/SLIP": b"broken\n", "later/fcbe/SLIP": TOP_1})
    return to


def character_pitch() -> Theme:
    to = Theme("characters per inch", "pitch")
    illegal = b"filter: illegal option c\n"

    def takes(name: str, value: str, sequence: bytes, double: bytes, about: str) -> None:
        stdout = sheet(STATE + RESET + SPACING + sequence + double + PITCH_6 + b"A\f",
                       CARRIED + double + sequence)
        to.add(name, about, b"A\f", stdout, "-c", value)

    takes("1", "1", b"\x1bQ0;7200/G", b"\x1c$!$$ p", "-c 1: 7200 units, and 14400.")
    takes("2", "2", b"\x1bQ0;3600/G", b"\x1c$'\"\x20p", "-c 2: 3600 units, and 7200.")
    takes("720", "720", b"\x1bQ0;0010/G", b'\x1c$"p', "-c 720: 10 units, and 20.")
    takes("721", "721", b"\x1bQ0;0009/G", b"\x1c$!x", "-c 721: 9 units, and 18.")
    takes("1440", "1440", b"\x1bQ0;0005/G", b"\x1c$!p", "-c 1440: 5 units, and 10.")
    takes("1441", "1441", b"\x1bQ0;0004/G", b"\x1c$x", "-c 1441: 4 units, and 8.")
    takes("7200", "7200", b"\x1bQ0;0001/G", b"\x1c$r", "-c 7200: 1 unit, and 2.")
    takes("junk", "10x", b"\x1bQ0;0720/G", b"\x1c$!$$p", "What follows the number is ignored.")
    takes("blank", " +10", b"\x1bQ0;0720/G", b"\x1c$!$$p", "A blank and a sign may stand first.")
    none = sheet(CONDITIONS + b"A\f", CARRIED)
    to.add("7201", "-c 7201: a pitch that comes to nothing is not sent.", b"A\f", none, "-c",
           "7201")
    to.add("2147483647", "-c 2147483647.", b"A\f", none, "-c", "2147483647")
    for value in ("0", "-1", "", "x", "-2147483648"):
        to.refuse(f"{value or 'empty'}-refused", f'-c "{value}" is refused.', illegal, "-c", value)
    return to


def page_length() -> Theme:
    to = Theme("page length", "lines", "-q")
    text = b"A\nB\nC\nD\f"
    to.add("1", "-L 1: a form feed after every line feed.", text,
           job(page(b"A\n\f"), page(b"B\n\f"), page(b"C\n\f"), page(b"D\f")), "-L", "1")
    to.add("2", "-L 2: after every second one.", text, job(page(b"A\nB\n\f"), page(b"C\nD\f")),
           "-L", "2")
    to.add("3", "-L 3: after the third one.", text, job(page(b"A\nB\nC\n\f"), page(b"D\f")), "-L",
           "3")
    for value in ("4", "0", "-1", "2147483647", "", "x"):
        to.add(value or "empty", f'-L "{value}": none in a page of three.', text, sheet(text),
               "-L", value)
    to.add("64", "-L 64: 63 line feeds are no page, the 64th is one.", b"A" + b"\n" * 64 + b"B\f",
           job(page(b"A" + b"\n" * 64 + b"\f"), page(b"B\f")), "-L", "64")
    to.add("65", "-L 65: 64 line feeds are none.", b"A" + b"\n" * 64 + b"B\f",
           sheet(b"A" + b"\n" * 64 + b"B\f"), "-L", "65")
    to.add("restart", "A form feed of the job starts the count anew.", b"A\n\fB\nC\n\f",
           job(page(b"A\n\f"), page(b"B\nC\n\f"), page(b"\f")), "-L", "2")
    return to


def line_pitch() -> Theme:
    to = Theme("lines per inch", "lpi")
    sent = {3: b'\x1c%"$ p', 4: b"\x1c%!( p", 6: b'\x1c%!" p', 8: b"\x1c%) p", 12: b"\x1c%& p"}
    for number in [0, 1, *range(2, 15), 24, 72]:
        if number in sent:
            pitch = sent[number]
            about = f"-l {number}: the pitch is sent and carried."
            stdout = sheet(CARRIED + pitch + b"A\nB\f", CARRIED + pitch)
        else:
            about = f"-l {number}: no pitch is sent."
            stdout = sheet(CARRIED + b"A\nB\f", CARRIED)
        to.add(str(number), about, b"A\nB\f", stdout, "-l", str(number))
        behind = sent[number] if number in (3, 4, 6) else b""
        about = "each line feed is followed by it" if behind else "none follows a line feed"
        to.add(f"{number}-counted", f"-l {number} with -L: {about}.", b"A\nB\nC\f",
               sheet(b"A\n" + behind + b"B\n" + behind + b"C\f"), "-q", "-l", str(number), "-L",
               "9")
    to.add("with-page", "-l 6 with -L 2: the pitch stands in front of the form feed.",
           b"A\nB\nC\f", job(page(b"A\n" + PITCH_6 + b"B\n" + PITCH_6 + b"\f"), page(b"C\f")),
           "-q", "-l", "6", "-L", "2")
    to.add("junk", "-l 6x is 6.", b"A\nB\f", sheet(CONDITIONS + b"A\nB\f", CARRIED + PITCH_6),
           "-l", "6x")
    return to


def of_resolution(dots: str, count: int, density_count: int) -> bytes:
    """A line of text at a resolution, the counts by hand."""
    text = b"%%%=Pji,0101,UNIC\nEMU=RLX\nDCH=" + dots.encode() + b"\nMAK=UNIX\n"
    return (b"\x1bQ0;%010d/`" % count + text + START
            + b"\x1bQ8;%010d/a\x1bQ" % density_count + dots.encode() + b"!A" + UNIT
            + page(b"A\f") + END)


def resolution() -> Theme:
    to = Theme("resolutions and capabilities", "dots", "-q")
    many = "!".join(f"D{number}" for number in range(101, 126))

    def takes(name: str, about: str, dots: str, *options: str) -> None:
        width = len(dots)
        to.add(name, about, b"A\f", of_resolution(dots, 40 + width, 16 + width), *options)

    takes("24th", "The 24th resolution of the printer may be asked for.", "124", "-G", many, "-e",
          "124")
    takes("25th", "The 25th is not kept: the first one is taken.", "101", "-G", many, "-e", "125")
    takes("two-lists", "Two lists of the printer are one.", "301", "-G", "D240", "-G", "D300!D301",
          "-e", "301")
    takes("first-of-two", "The first of both is the usual one.", "300", "-G", "D300", "-G", "D240")
    takes("listed", "A listed resolution.", "400", "-G", "D240!D400", "-e", "400")
    takes("below", "One less is not listed.", "240", "-G", "D240!D400", "-e", "399")
    takes("above", "One more is not listed.", "240", "-G", "D240!D400", "-e", "401")
    takes("no-list", "Without a list -e says nothing.", "240", "-e", "400")
    takes("zero", "-e 0 is none.", "300", "-G", "D300!D240", "-e", "0")
    takes("one-digit", "Resolutions are as long as they are.", "9", "-G", "D9")
    takes("two-digits", "A resolution of two digits.", "99", "-G", "D99")
    takes("four-digits", "A resolution of four digits.", "1000", "-G", "D1000")
    takes("empty-tokens", "Empty tokens are skipped.", "300", "-G", "!!D300!!")
    takes("unknown-tokens", "Tokens that are none are skipped.", "300", "-G",
          "L5!f3!x!sa4!Sback!m71!D300!isubs!J")
    takes("order", "-e before -G.", "400", "-e", "400", "-G", "D240!D400")
    takes("fine", "-B is 400 dots.", "400", "-B")
    takes("fine-listed", "-B with a list: its first one.", "240", "-B", "-G", "D240!D400")
    takes("long-list", "A list of 100000 bytes.", "300", "-G", "x" * 100000 + "!D300")
    return to


def undefined_pattern() -> Theme:
    to = Theme("undefined characters", "pattern")
    for text in ("space", "ubar"):
        to.add(text, f"-r {text} is accepted.", b"A\f", sheet(CONDITIONS + b"A\f", CARRIED), "-r",
               text)
    for text in ("", "Space", "spac", "spaces", "UBAR", "uba", "ubars", " space"):
        to.refuse(f"{text.strip() or 'empty'}-refused", f'-r "{text}" is refused.',
                  b"filter: undefgaiji pattern error\n", "-r", text)
    return to


def conditions_off() -> Theme:
    to = Theme("print conditions", "conditions")
    to.add("on", "Without -q they stand in front of the first text.", b"A\f",
           sheet(CONDITIONS + b"A\f", CARRIED))
    to.add("off", "With -q they do not.", b"A\f", sheet(b"A\f"), "-q")
    to.add("at-line-feed", "They stand in front of a line feed, too.", b"\nA\f",
           sheet(CONDITIONS + b"\nA\f", CARRIED))
    to.add("at-form-feed", "And of a form feed.", b"\f", sheet(CONDITIONS + b"\f", CARRIED))
    to.add("once", "They are sent once.", b"A\fB\f",
           job(page(CONDITIONS + b"A\f", CARRIED), page(b"B\f")))
    to.add("no-content", "A job of settings alone: the parameters, and no page.", b"\x1cJ",
           PARAMETERS, "-q")
    to.add("line-feed-alone", "A line feed alone: the same.", b"\n", PARAMETERS, "-q")
    to.add("one-byte", "A job of one byte.", b"A",
           FIRST + block("2", b"A", 13) + LAST_FEED + END, "-q")
    return to


CHECKS = [
    check
    for theme in (which(), names(), character_pitch(), page_length(), line_pitch(), resolution(),
                  undefined_pattern(), conditions_off())
    for check in theme.checks
]
