"""Framed jobs: the counts of frames, in and out, and what is wrong with a header."""

from .expected import Theme

CNT = b"CNT_PRN_DAT\x00"
LAST = b"END_PRN_DAT\x00"
EMPTY_CNT = b"0000" + CNT
EMPTY_END = b"0000" + LAST


def cnt(data: bytes) -> bytes:
    return b"%04d" % len(data) + CNT + data


def end(data: bytes) -> bytes:
    return b"%04d" % len(data) + LAST + data


def sizes() -> Theme:
    to = Theme("the size of frames", "frame", "-d", "-q")
    for size in (1, 9, 10, 11, 99, 100, 101, 999, 1000, 1001, 4095, 4096):
        to.add(f"{size}", f"An END frame of {size} bytes leaves as one.", end(b"x" * size),
               b"%04dEND_PRN_DAT\x00" % size + b"x" * size)
        to.add(f"{size}-cnt", f"A CNT frame of {size} bytes leaves as one.",
               cnt(b"x" * size) + EMPTY_END, cnt(b"x" * size) + EMPTY_END)
    to.add("4097", "An END frame of 4097 bytes leaves as 4096 in a CNT frame, and one.",
           b"4097END_PRN_DAT\x00" + b"x" * 4097,
           b"4096CNT_PRN_DAT\x00" + b"x" * 4096 + b"0001END_PRN_DAT\x00x")
    to.add("4097-cnt", "A CNT frame of 4097 bytes: the same under its own marker.",
           b"4097CNT_PRN_DAT\x00" + b"x" * 4097 + EMPTY_END,
           b"4096CNT_PRN_DAT\x00" + b"x" * 4096 + b"0001CNT_PRN_DAT\x00x" + EMPTY_END)
    to.add("8192", "8192 bytes leave as two frames.", b"8192END_PRN_DAT\x00" + b"x" * 8192,
           b"4096CNT_PRN_DAT\x00" + b"x" * 4096 + b"4096END_PRN_DAT\x00" + b"x" * 4096)
    to.add("9999", "9999 bytes, the largest frame, leave as three.",
           b"9999END_PRN_DAT\x00" + b"x" * 9999,
           b"4096CNT_PRN_DAT\x00" + b"x" * 4096 + b"4096CNT_PRN_DAT\x00" + b"x" * 4096
           + b"1807END_PRN_DAT\x00" + b"x" * 1807)
    wide = b"\xe3\x81\x82"
    switched = b"\x1bQ2 y\x1b$@" + wide
    to.add("piece-4096", "A character that still fits into 4096 bytes.",
           end(wide + b"\n" * 4082 + wide + b"\n" * 10),
           b"4096CNT_PRN_DAT\x00" + switched + b"\n" * 4082 + wide + b"0010END_PRN_DAT\x00"
           + b"\n" * 10)
    to.add("piece-4097", "One that does not begins the next frame.",
           end(wide + b"\n" * 4083 + wide + b"\n" * 10),
           b"4094CNT_PRN_DAT\x00" + switched + b"\n" * 4083 + b"0013END_PRN_DAT\x00" + wide
           + b"\n" * 10)
    data = b"\x1bQ1;4086!a" + b"d" * 4086
    to.add("4096-of-one-piece", "A sequence of 4096 bytes with its data leaves as one frame.",
           end(data), end(data))
    to.add("bytes", "Any bytes, NUL and form feed too.", end(b"\x00\f\r\n\x7f\x01"),
           end(b"\x00\f\r\n\x7f\x01"))
    to.add("many", "A thousand frames.", cnt(b"x") * 1000 + EMPTY_END,
           cnt(b"x") * 1000 + EMPTY_END)
    return to


def resets() -> Theme:
    to = Theme("what stands in front of framed text", "reset", "-d")
    reset = b"\x1b$@\x1b(H\x1bQ1 y"
    to.add("2", "The first text has the reset in front of it.", end(b"AB"), end(reset + b"AB"))
    to.add("1", "When it is the frame's last byte, in a frame of its own.", end(b"A"),
           end(reset) + end(b"A"))
    to.add("once", "It is sent once.", cnt(b"AB") + end(b"CD"), cnt(reset + b"AB") + end(b"CD"))
    to.add("off", "With -q not at all.", end(b"AB"), end(b"AB"), "-q")
    return to


def headers() -> Theme:
    to = Theme("the headers of frames", "header", "-d", "-q")
    wrong = {
        "letter": b"000x" + LAST + b"A", "blank": b"   1" + LAST + b"A",
        "sign": b"-001" + LAST + b"A", "plus": b"+001" + LAST + b"A",
        "slash": b"000/" + LAST + b"A", "colon": b"000:" + LAST + b"A",
        "marker-case": b"0001end_prn_dat\x00A", "marker-other": b"0001CNT_PRN_DAX\x00A",
        "marker-first": b"0001XNT_PRN_DAT\x00A", "marker-no-nul": b"0001END_PRN_DAT A",
        "marker-lf": b"0001CNT_PRN_DAT\nA",
    }
    for name, frame in wrong.items():
        to.add(f"{name}-first", "As the first header: nothing is written, status 1.", frame, b"",
               status=1)
        to.add(f"{name}-later", "Behind a CNT frame: an empty END frame, status 1.",
               cnt(b"AB") + frame, cnt(b"AB") + EMPTY_END, status=1)
    for size in (1, 2, 3, 4, 5, 15):
        to.add(f"short-{size}-first", f"A header of {size} bytes: status 1.", end(b"A")[:size],
               b"", status=1)
        to.add(f"short-{size}-later", "Behind a CNT frame: an empty END frame, status 1.",
               cnt(b"AB") + end(b"A")[:size], cnt(b"AB") + EMPTY_END, status=1)
    to.add("no-data", "A whole header without its data.", end(b"A")[:16], b"", status=1)
    to.add("short-data", "Data that lacks a byte.", end(b"ABC")[:-1], b"", status=1)
    to.add("short-data-later", "The same behind a CNT frame.", cnt(b"AB") + end(b"ABC")[:-1],
           cnt(b"AB") + EMPTY_END, status=1)
    to.add("empty-input", "No frame at all: a clean end.", b"", b"")
    to.add("no-end", "A CNT frame and no END frame: an empty one closes, status 0.", cnt(b"AB"),
           cnt(b"AB") + EMPTY_END)
    to.add("empty-cnt", "An empty CNT frame, and no END frame.", EMPTY_CNT, EMPTY_CNT + EMPTY_END)
    to.add("empty-end", "An empty END frame.", EMPTY_END, EMPTY_END)
    to.add("empties", "Empty frames are answered with empty frames.",
           EMPTY_CNT + cnt(b"A") + EMPTY_CNT + EMPTY_END,
           EMPTY_CNT + cnt(b"A") + EMPTY_CNT + EMPTY_END)
    to.add("behind-end", "Behind an END frame nothing is read.", end(b"A") + b"000x", end(b"A"))
    to.add("behind-empty-end", "Behind an empty one neither.", EMPTY_END + b"000x", EMPTY_END)
    to.add("end-cuts-wide", "An END frame cuts a character: it is sent as far as it goes.",
           end(b"A\xe3\x81"), end(b"A\xe3\x81"))
    to.add("wide-over-frames", "A character over two frames leaves behind the second.",
           cnt(b"A\xe3") + cnt(b"\x81\x82") + EMPTY_END,
           cnt(b"A\x1bQ2 y\x1b$@\xe3\x81\x82") + EMPTY_END)
    return to


CHECKS = [check for theme in (sizes(), resets(), headers()) for check in theme.checks]
