"""Sequences: which there are, how long they may be, how much data they may have."""

from .expected import END, FIRST, LAST_FEED, PARAMETERS, Theme, block, job, page, sheet

ESC = b"\x1b"
FS = b"\x1c"


def whole(payload: bytes) -> bytes:
    """A job of one page that no form feed ended: what it carries is not written."""
    return FIRST + block("2", payload) + LAST_FEED + END


# ESC Q final bytes without data: with which of space, ! and / they are known.
FINALS = {
    "@": "!", "A": "!", "C": "!", "D": "!", "E": "/", "F": "!/", "G": "/", "H": "!/", "I": "!/",
    "R": "!", "U": "/", "V": "/", "W": "!/", "X": "!/", "Y": "!", "\\": "!", "]": "!", "b": "!/",
    "c": "!", "f": "!", "j": "!", "k": "!", "l": "!", "m": "!", "q": "!", "s": "!", "u": "!",
    "v": "!", "x": " !", "y": " !", "z": "!", "|": "/", "}": "/",
    "B": "", "J": "", "K": "", "L": "", "M": "", "N": "", "O": "", "P": "", "Q": "", "S": "",
    "T": "", "Z": "", "[": "", "^": "", "_": "", "d": "", "e": "", "g": "", "h": "", "i": "",
    "r": "", "t": "", "w": "", "{": "",
}
# Those of them that are carried.
KEPT = ("y ", "f!", "E/", "F/", "G/", "R!")


def finals() -> Theme:
    to = Theme("ESC Q sequences that there are", "final", "-q")
    for final, known in FINALS.items():
        stdin, payload, kept = b"A", b"A", b""
        for separator in " !/#":
            sequence = ESC + b"Q1" + (separator + final).encode()
            stdin += sequence + b"B"
            payload += (sequence if separator in known else b"") + b"B"
            if final + separator in KEPT:
                kept += sequence
        names = {" ": "a space", "!": '"!"', "/": '"/"'}
        how = " or ".join(names[separator] for separator in known)
        about = f"ESC Q ... {final} is known with {how} before it." if known else (
            f"ESC Q ... {final} is none.")
        name = {"@": "at", "\\": "backslash", "]": "bracket", "|": "bar", "}": "brace",
                "[": "open-bracket", "^": "caret", "_": "underscore", "{": "open-brace"}
        case = "upper-" if final.isupper() else ""
        to.add(case + name.get(final, final.lower()), about, stdin + b"\f",
               sheet(payload + b"\f", kept))
    return to


def others() -> Theme:
    to = Theme("ESC, FS and ESC [ sequences that there are", "sequence", "-q")

    def line(name: str, about: str, sequence: bytes, kept: bytes = b"") -> None:
        to.add(name, about, b"A" + sequence + b"B\f", sheet(b"A" + sequence + b"B\f", kept))

    def dropped(name: str, about: str, sequence: bytes) -> None:
        to.add(name, about, b"A" + sequence + b"B\f", sheet(b"AB\f"))

    for byte in range(0x21, 0x40):
        second = bytes([byte])
        if second in b'"$%&(*':
            settings = FS + second + b"!p"
            line(f"fs-{byte:02x}", f"FS {chr(byte)} and parameters.", settings,
                 settings if second in b"$%&*" else b"")
        else:
            dropped(f"fs-{byte:02x}", f"FS {chr(byte)} is none.", FS + second + b"!p")
    for letter in "JK":
        line(f"fs-{letter}", f"FS {letter} is carried.", FS + letter.encode(),
             FS + letter.encode())
    for letter in "@ILMop~\x7f":
        code = ord(letter)
        dropped(f"fs-{code:02x}", f"FS and the byte {code:02x} is none and ends there.",
                FS + letter.encode())
    for third, kept in (("`", True), ("a", True), ("_", False), ("b", False), ("!", False)):
        sequence = FS + b"(" + third.encode() + b"p"
        line(f"fs-paren-{ord(third):02x}",
             f"FS ( {third} is {'carried' if kept else 'not carried'}.", sequence,
             sequence if kept else b"")
    for last in "pqrstuvwxy":
        to.add(f"fs-ends-{last}", f"A FS sequence ends with {last}.", b"A" + FS + b'"' +
               last.encode(), whole(b"A" + FS + b'"' + last.encode()))
    for last in "oz~@\x7f":
        to.add(f"fs-goes-on-{ord(last):02x}", f"It goes on behind the byte {ord(last):02x}.",
               b"A" + FS + b'"' + last.encode(), whole(b"A"))
    for letter, known in (("`", True), ("a", True), ("d", True), ("e", True), ("_", False),
                          ("b", False), ("c", False), ("f", False), ("@", False), ("~", False)):
        sequence = ESC + b"[12" + letter.encode()
        if known:
            line(f"csi-{ord(letter):02x}", f"ESC [ ... {letter}.", sequence)
        else:
            dropped(f"csi-{ord(letter):02x}", f"ESC [ ... {letter} is none.", sequence)
    line("csi-E", "ESC [ ... SP E is carried.", ESC + b"[1 E", ESC + b"[1 E")
    dropped("csi-E-without-space", "ESC [ ... E without the space is none.", ESC + b"[1E")
    dropped("csi-E-mark", 'ESC [ ... ! E is none.', ESC + b"[1!E")
    line("esc-c", "ESC c.", ESC + b"c")
    line("esc-dollar", "ESC $ @ is carried.", ESC + b"$@", ESC + b"$@")
    line("esc-paren", "ESC ( H is carried.", ESC + b"(H", ESC + b"(H")
    dropped("esc-dollar-wrong", "ESC $ and another byte is none.", ESC + b"$A")
    dropped("esc-paren-wrong", "ESC ( and another byte is none.", ESC + b"(I")
    for byte in (0x40, 0x41, 0x50, 0x52, 0x5A, 0x5C, 0x62, 0x64, 0x7E):
        dropped(f"esc-{byte:02x}", f"ESC and the byte {byte:02x} is none and ends there.",
                ESC + bytes([byte]))
    dropped("esc-3f", "ESC ? goes on up to a byte from 40 to 7e.", ESC + b"?1;\x80\xff@")
    dropped("esc-long", "ESC % 1 2 and A is none.", ESC + b"%12A")
    dropped("esc-del-inside", "A DEL does not end it.", ESC + b"%\x7f~")
    dropped("fs-del-inside", "Nor an unknown FS sequence, behind its second byte.",
            FS + b"1\x7f~")
    line("esc-del", "ESC DEL has four bytes of any value.", ESC + b"\x7f\x1b\f\x00\xff")
    to.add("esc-del-feed", "A form feed as the last of them ends the page.",
           b"A" + ESC + b"\x7f123\f" + b"B\f",
           job(page(b"A" + ESC + b"\x7f123\f"), page(b"B\f")))
    line("esc-del-third-feed", "As the third it is data.", ESC + b"\x7f12\f4")
    to.add("esc-del-cut", "One of three bytes is dropped.", b"A" + ESC + b"\x7f123", whole(b"A"))
    to.add("esc-del-whole", "One of four is not.", b"A" + ESC + b"\x7f1234",
           whole(b"A" + ESC + b"\x7f1234"))
    for byte in (0x00, 0x07, 0x08, 0x09, 0x0B, 0x0D, 0x0E, 0x0F, 0x1A, 0x1D, 0x1F, 0x7F):
        line(f"control-{byte:02x}", f"The control byte {byte:02x} is printed as it is.",
             bytes([byte]))
    return to


def lengths() -> Theme:
    to = Theme("how long a sequence may be", "length", "-q")

    def pair(name: str, about: str, front: bytes, back: bytes, kept: bool = False) -> None:
        room = 4096 - len(front) - len(back)
        sequence = front + b"1" * room + back
        to.add(f"{name}-4096", f"{about} of 4096 bytes.", b"A" + sequence + b"B\f",
               sheet(b"A" + sequence + b"B\f", sequence if kept else b""))
        sequence = front + b"1" * (room + 1) + back
        to.add(f"{name}-4097", f"{about} of 4097 bytes is dropped.", b"A" + sequence + b"B\f",
               sheet(b"AB\f"))

    pair("q", "An ESC Q sequence", ESC + b"Q", b"!C")
    pair("csi", "An ESC [ sequence", ESC + b"[", b"d")
    pair("csi-space", "An ESC [ ... SP E sequence", ESC + b"[", b" E")
    pair("fs", 'A FS " sequence', FS + b'"', b"p")
    pair("fs-carried", "A carried FS & sequence", FS + b"&", b"p", True)
    to.add("far-above", "One of 100000 bytes is dropped up to its end.",
           b"A" + ESC + b"Q" + b"1" * 100000 + b"!CB\f", sheet(b"AB\f"))
    return to


def slots() -> Theme:
    to = Theme("how long a carried setting may be", "carried", "-q")
    for name, front, back in (
        ("csi", ESC + b"[", b" E"), ("y", ESC + b"Q", b" y"), ("f", ESC + b"Q", b"!f"),
        ("p", ESC + b"Q", b" p"), ("E", ESC + b"Q", b"/E"), ("F", ESC + b"Q", b"/F"),
        ("G", ESC + b"Q", b"/G"), ("percent", FS + b"%", b"p"), ("grave", FS + b"(`", b"p"),
        ("a", FS + b"(a", b"p"),
    ):
        room = 19 - len(front) - len(back)
        short, long = front + b"1" * room + back, front + b"1" * (room + 1) + back
        to.add(f"{name}-19", "A setting of 19 bytes is carried.", short + b"A\f",
               sheet(short + b"A\f", short))
        to.add(f"{name}-19-later", "So it is behind text.", b"A" + short + b"B\f",
               sheet(b"A" + short + b"B\f", short))
        to.add(f"{name}-20", "One of 20 is written, but not carried.", long + b"A\f",
               sheet(long + b"A\f"))
        to.add(f"{name}-20-later", "Nor behind text.", b"A" + long + b"B\f",
               sheet(b"A" + long + b"B\f"))
        to.add(f"{name}-last", "The last one of a kind is carried.", short + front + back + b"A\f",
               sheet(short + front + back + b"A\f", front + back))
    for name, front, back in (
        ("amp", FS + b"&", b"p"), ("dollar", FS + b"$", b"p"), ("star", FS + b"*", b"p"),
        ("R", ESC + b"Q", b"!R"),
    ):
        long = front + b"1" * (20 - len(front) - len(back)) + back
        to.add(f"{name}-20", "A setting of those that add up may be longer.", long + b"A\f",
               sheet(long + b"A\f", long))
        to.add(f"{name}-twice", "They add up.", long + b"A" + long + b"\f",
               sheet(long + b"A" + long + b"\f", long + long))
    big = FS + b"&" + b"1" * 4093 + b"p"
    to.add("two-of-4096", "Carried settings of 8192 bytes.", big + big + b"\f",
           FIRST + block("2", big + big + b"\f", 8205) + block("6", big + big, 8204) + END)
    to.add("three-of-4096", "The third begins a block, and is carried behind it.",
           big * 3 + b"\f",
           FIRST + block("2", big + big, 8204) + block("6", big + big, 8204)
           + block("0", big + b"\f", 4109) + block("6", big, 4108) + END)
    to.add("order", "Slots are written in their order, what adds up first.",
           b"\x1c%1p\x1bQ1/G\x1c&1p\x1c(a1p\x1cJ\x1b(HA\f",
           sheet(b"\x1c%1p\x1bQ1/G\x1c&1p\x1c(a1p\x1cJ\x1b(HA\f",
                 b"\x1c&1p\x1b(H\x1cJ\x1c(a1p\x1bQ1/G\x1c%1p"))
    to.add("j-then-k", "FS J and FS K are of one kind.", FS + b"J" + FS + b"KA\f",
           sheet(FS + b"J" + FS + b"KA\f", FS + b"K"))
    to.add("per-block", "They are carried behind the block in which they stood, once.",
           FS + b"%1pA\fB\f", job(page(FS + b"%1pA\f", FS + b"%1p"), page(b"B\f")))
    return to


def counts() -> Theme:
    to = Theme("counted data", "count", "-q")

    def line(name: str, about: str, sequence: bytes) -> None:
        to.add(name, about, b"A" + sequence + b"B\f", sheet(b"A" + sequence + b"B\f"))

    a = ESC + b"Q1;%d!a"
    line("0", "No data.", a % 0)
    line("1", "One byte of data, a form feed inside the sequence's end is none.",
         ESC + b"Q1;2!a\fx")
    to.add("feed-last", "A form feed as the last byte of the data ends the page.",
           b"A" + a % 2 + b"x\f" + b"B\f", job(page(b"A" + a % 2 + b"x\f"), page(b"B\f")))
    line("leading-zeros", "Leading zeros do not count as digits.",
         ESC + b"Q1;00000000000000000003!aabc")
    line("7-digits-of-zero", "Nor do those of 0.", ESC + b"Q1;0000000000!a")
    to.add("9999999", "Seven digits: as much of the data as there is.", a % 9999999 + b"abc",
           whole(a % 9999999 + b"abc"))
    to.add("10000000", "Eight digits are none; what follows is text.", b"A" + a % 10000000 +
           b"abc\f", sheet(b"Aabc\f"))
    to.add("no-digit", "Another byte than a digit in the count: none.", b"A" + ESC + b"Q1;1:!abc\f", sheet(b"Abc\f"))
    to.add("minus", "A sign in the count: none.", b"A" + ESC + b"Q1;-1!abc\f", sheet(b"Abc\f"))
    line("no-field", "Without a ; there is no data.", ESC + b"Q15!a")
    # ESC Q1;4086!a has 10 bytes.
    data = b"x" * 100 + b"\f" + b"y" * 3985
    assert len(a % 4086) == 10 and len(data) == 4086
    line("4086", "4096 bytes with their data: a form feed inside is data.", a % 4086 + data)
    data += b"y"
    to.add("4087", "One more: a form feed inside ends the page there.",
           b"A" + a % 4087 + data + b"B\f",
           job(page(b"A" + a % 4087 + b"x" * 100 + b"\f"), page(b"y" * 3986 + b"B\f")))
    to.add("4086-cut", "Data that the record holds, cut off by the end: all is dropped.",
           b"A" + a % 4086 + b"x" * 4085, whole(b"A"))
    to.add("4087-cut", "Data that it does not hold: as much is printed as there is.",
           b"A" + a % 4087 + b"x" * 4086, whole(b"A" + a % 4087 + b"x" * 4086))
    to.add("piece", "Data of a record is not divided between blocks.",
           b"A" * 4100 + a % 4086 + b"x" * 4086 + b"\f",
           FIRST + block("2", b"A" * 4100, 4112) + block("0", a % 4086 + b"x" * 4086 + b"\f", 4109)
           + END)
    to.add("bytes", "Larger data is divided where the block is full.",
           b"A" * 4100 + a % 4087 + b"x" * 4087 + b"\f",
           FIRST + block("2", b"A" * 4100 + a % 4087 + b"x" * 4082, 8204)
           + block("0", b"x" * 5 + b"\f", 18) + END)
    to.add("room-of-1", "Larger data begins where the block has room for a byte.",
           b"A" * 8181 + a % 4087 + b"x" * 4087 + b"\f",
           FIRST + block("2", b"A" * 8181 + a % 4087 + b"x", 8204)
           + block("0", b"x" * 4086 + b"\f", 4099) + END)
    # 32 bytes behind ESC Q ... !p.
    data = b"d" * 30 + b"\f" + b"e"
    line("p-32", "ESC Q ... !p has 32 bytes of data: a form feed as the 31st is data.",
         ESC + b"Q1!p" + data)
    to.add("p-feed", "As the 32nd it ends the page.", ESC + b"Q1!p" + b"d" * 31 + b"\fB\f",
           job(page(ESC + b"Q1!p" + b"d" * 31 + b"\f"), page(b"B\f")))
    to.add("p-31", "With 31 bytes it is cut off.", b"A" + ESC + b"Q1!p" + b"d" * 31, whole(b"A"))
    to.add("p-whole", "With 32 it is whole.", b"A" + ESC + b"Q1!p" + b"d" * 32,
           whole(b"A" + ESC + b"Q1!p" + b"d" * 32))
    sequence = ESC + b"Q1 p"
    to.add("p-space", "ESC Q ... SP p has no data and is carried.", b"A" + sequence + b"B\f",
           sheet(b"A" + sequence + b"B\f", sequence))
    line("p-slash", "ESC Q ... /p has none and is not carried.", ESC + b"Q1/p")
    # ESC Q field ; count ! DEL.
    line("del", "ESC Q ... !DEL with its data.", ESC + b"Q1;3!\x7f\x1b\f\x00")
    line("del-two-fields", "Its count may end with ; as well.", ESC + b"Q1;3;7!\x7fabc")
    to.add("del-no-field", "Without a ; it is none.", b"A" + ESC + b"Q13!\x7fabc\f",
           sheet(b"Aabc\f"))
    line("del-parameter", "A DEL without ! before it is a parameter.", ESC + b"Q1\x7f2!C")
    # ESC Q f;f;f;f;count /~ with -C, -N and -P.
    tilde = ESC + b"Q1;2;3;4;%d/~"
    to.add("tilde-off", "ESC Q ... /~ and its data are dropped.", b"A" + tilde % 3 + b"abcB\f",
           sheet(b"AB\f"))
    for option in ("-C", "-P"):
        to.add(f"tilde{option}", f"With {option} they are not.", b"A" + tilde % 3 + b"abcB\f",
               sheet(b"A" + tilde % 3 + b"abcB\f"), option)
    to.add("tilde-N", "Nor with -N.", b"A" + tilde % 3 + b"abcB\f",
           sheet(b"A" + tilde % 3 + b"abcB\f"), "-N")
    to.add("tilde-large-off", "5000 bytes of data are dropped.",
           b"A" + tilde % 5000 + b"x" * 5000 + b"B\f", sheet(b"AB\f"))
    to.add("tilde-four-fields", "With four fields it is none, with -P too.",
           b"A" + ESC + b"Q1;2;3;3/~abc\f", sheet(b"Aabc\f"), "-P")
    line("tilde-space", "ESC Q ... SP ~ has no data.", ESC + b"Q1 ~")
    line("tilde-mark", "Nor has ESC Q ... !~.", ESC + b"Q1!~")
    line("n-mark", "ESC Q ... !n has none.", ESC + b"Q1!n")
    line("n-9", "ESC Q 9 ... SP n has data and is written.", ESC + b"Q9;3 nabc")
    to.add("o-short", "A form parameter that is none is dropped with its data.",
           b"A" + ESC + b"Q5;3 oabcB\f", sheet(b"AB\f"))
    return to


def content() -> Theme:
    to = Theme("what makes a page", "content", "-q")
    printing = {
        "a": ESC + b"Q1!a", "x": ESC + b"Q1!x", "y": ESC + b"Q1!y", "z": ESC + b"Q1!z",
        "del": ESC + b"Q1;0!\x7f", "text": b"A", "double": b"\xe3\x81\x82", "invalid": b"\x80",
    }
    for name, sequence in printing.items():
        payload = sequence if name != "double" else b"\x1bQ2 y\x1b$@" + sequence
        to.add(name, "It makes a page when nothing else is on it.", sequence, whole(payload))
        to.add(f"{name}-later", "So it does behind a page.", b"A\f" + sequence,
               job(page(b"A\f"), block("2", payload) + LAST_FEED))
    only = PARAMETERS
    silent = {
        "x-space": ESC + b"Q1 x", "y-space": ESC + b"Q1 y", "p": ESC + b"Q1 p", "j": ESC + b"Q1!j",
        "F": ESC + b"Q1!F", "csi": ESC + b"[1d", "csi-grave": ESC + b"[1`", "fs": FS + b"&1p",
        "cr": b"\r", "nul": b"\x00", "del-byte": b"\x7f", "lf": b"\n", "ESC-c": ESC + b"c",
        "Y": ESC + b"Q1!Y",
    }
    for name, sequence in silent.items():
        to.add(f"{name}-none", "It makes none, and is dropped at the job's end.", sequence, only)
        to.add(f"{name}-none-later", "So it is behind a page.", b"A\f" + sequence + b"\r",
               job(page(b"A\f")))
    to.add("unknown-none", "Unknown sequences write nothing at all.", ESC + b"x" + FS + b"L", b"")
    to.add("behind-page", "Settings behind the last page are dropped.", b"A\f" + FS + b"&1p\n",
           job(page(b"A\f")))
    return to


CHECKS = [
    check
    for theme in (finals(), others(), lengths(), slots(), counts(), content())
    for check in theme.checks
]
