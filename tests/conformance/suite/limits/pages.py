"""Text, pages and blocks: which bytes make a character, how many a block holds."""

from .expected import (
    DOUBLE_CARRIED, END, FIRST, LAST_FEED, SINGLE_CARRIED, TO_DOUBLE, TO_SINGLE, Theme, UNIT,
    block, job, page, sheet,
)

LEADS = (
    (0xC0, 1), (0xDF, 1), (0xE0, 2), (0xEF, 2), (0xF0, 3), (0xF7, 3), (0xF8, 4), (0xFB, 4),
    (0xFC, 5), (0xFD, 5),
)
NO_LEADS = (0x80, 0x8D, 0x8F, 0x9F, 0xA0, 0xBF, 0xFE, 0xFF)
WIDE = b"\xe3\x81\x82"


def characters() -> Theme:
    to = Theme("characters", "character", "-q")
    for lead, more in LEADS:
        rest = b"B" * 10
        character = bytes([lead]) + rest[:more]
        to.add(f"{lead:02x}", f"The byte {lead:02x} begins a character of {more + 1} bytes.",
               b"A" + bytes([lead]) + rest + b"\f",
               sheet(b"A" + TO_DOUBLE + character + TO_SINGLE + rest[more:] + b"\f",
                     SINGLE_CARRIED))
        proper = bytes([lead]) + b"\x80" * more
        to.add(f"{lead:02x}-proper", "The same with continuation bytes.",
               b"A" + proper + b"B\f",
               sheet(b"A" + TO_DOUBLE + proper + TO_SINGLE + b"B\f", SINGLE_CARRIED))
        to.add(f"{lead:02x}-cut", "Cut off by the end of the job it is an invalid one.",
               b"A" + proper[:-1],
               FIRST + block("2", b"A" + proper[:-1]) + LAST_FEED + END)
        to.add(f"{lead:02x}-prefixed", "Behind 8e it is one of the single-byte set.",
               WIDE + b"\x8e" + proper + b"B\f",
               sheet(TO_DOUBLE + WIDE + TO_SINGLE + proper + b"B\f", SINGLE_CARRIED))
        feed = proper[:-1] + b"\f"
        to.add(f"{lead:02x}-feed", "A form feed as its last byte ends the page.",
               b"A" + feed + b"B\f",
               job(page(b"A" + TO_DOUBLE + feed, DOUBLE_CARRIED),
                   page(TO_SINGLE + b"B\f", SINGLE_CARRIED)))
    for byte in NO_LEADS:
        to.add(f"{byte:02x}", f"The byte {byte:02x} is invalid, and printed as it is.",
               b"A" + bytes([byte]) + b"B\f", sheet(b"A" + bytes([byte]) + b"B\f"))
        to.add(f"{byte:02x}-behind-wide", "Behind double-byte text it selects the set alone.",
               WIDE + bytes([byte]) + b"B\f",
               sheet(TO_DOUBLE + WIDE + b"\x1b(H" + bytes([byte]) + b"B\f",
                     b"\x1b(H\x1bQ2 y"))
    for byte in (0x20, 0x21, 0x7E):
        to.add(f"{byte:02x}", f"The byte {byte:02x} is text.", WIDE + bytes([byte]) + b"\f",
               sheet(TO_DOUBLE + WIDE + TO_SINGLE + bytes([byte]) + b"\f", SINGLE_CARRIED))
    for byte in (0x00, 0x1F, 0x7F, 0x0A, 0x0D):
        to.add(f"{byte:02x}", f"The byte {byte:02x} is none: the set stays.",
               WIDE + bytes([byte]) + WIDE + b"\f",
               sheet(TO_DOUBLE + WIDE + bytes([byte]) + WIDE + b"\f", DOUBLE_CARRIED))
    for byte in (0x41, 0x80, 0xB1, 0xBF, 0xFE, 0x00, 0x7F):
        to.add(f"8e-{byte:02x}", f"8e and the byte {byte:02x}: that byte alone is printed.",
               b"A\x8e" + bytes([byte]) + b"B\f", sheet(b"A" + bytes([byte]) + b"B\f"))
    to.add("8e-8e", "A second 8e is the character of the first.", b"A\x8e\x8eB\f",
           sheet(b"A\x8eB\f"))
    to.add("8e-cut", "A 8e that the end cuts off is printed.", b"A\x8e",
           FIRST + block("2", b"A\x8e") + LAST_FEED + END)
    to.add("cut-behind-wide", "A character that the end cuts off selects the set alone.",
           WIDE + WIDE[:2],
           FIRST + block("2", TO_DOUBLE + WIDE + b"\x1b(H" + WIDE[:2]) + LAST_FEED + END)
    for byte in (0x09, 0x7F):
        to.add(f"{byte:02x}-of-many", f"The byte {byte:02x} amid much double-byte text.",
               WIDE * 50 + bytes([byte]) + WIDE * 50 + b"\f",
               sheet(TO_DOUBLE + WIDE * 50 + bytes([byte]) + WIDE * 50 + b"\f",
                     DOUBLE_CARRIED))
    to.add("set-once", "The set is switched where it changes.", WIDE + WIDE + b"AB" + WIDE + b"\f",
           sheet(TO_DOUBLE + WIDE + WIDE + TO_SINGLE + b"AB" + TO_DOUBLE + WIDE + b"\f",
                 DOUBLE_CARRIED))
    to.add("set-over-pages", "It stays over a page's end.", WIDE + b"\f" + WIDE + b"\f",
           job(page(TO_DOUBLE + WIDE + b"\f", DOUBLE_CARRIED), page(WIDE + b"\f")))
    return to


def blocks() -> Theme:
    to = Theme("blocks", "block", "-q")
    for size in (8191, 8192):
        to.add(f"{size}", f"{size} bytes without a form feed: one block.", b"A" * size,
               FIRST + block("2", b"A" * size, size + 12) + LAST_FEED + END)
        to.add(f"{size}-and-feed", f"{size} bytes and a form feed: one block.",
               b"A" * size + b"\f", FIRST + block("2", b"A" * size + b"\f", size + 13) + END)
    to.add("8193", "8193 bytes: the last one begins a block.", b"A" * 8193,
           FIRST + block("2", b"A" * 8192, 8204) + block("0", b"A", 13) + LAST_FEED + END)
    to.add("8193-and-feed", "8193 bytes and a form feed.", b"A" * 8193 + b"\f",
           FIRST + block("2", b"A" * 8192, 8204) + block("0", b"A\f", 14) + END)
    for size in (16384, 16385):
        last = block("0", b"A", 13) if size > 16384 else b""
        to.add(f"{size}", f"{size} bytes.", b"A" * size,
               FIRST + block("2", b"A" * 8192, 8204) + block("0", b"A" * 8192, 8204) + last
               + LAST_FEED + END)
    to.add("second-page", "The next page begins with its setup and a block of kind 2.",
           b"A" * 8193 + b"\fB\f",
           FIRST + block("2", b"A" * 8192, 8204) + block("0", b"A\f", 14) + UNIT
           + block("2", b"B\f", 14) + END)
    for size in (8189, 8190, 8191):
        room = size + 3 <= 8192
        first = b"A" * (size - 8) + TO_DOUBLE
        stdin = b"A" * (size - 8) + WIDE + b"\f"
        if room:
            stdout = FIRST + block("2", first + WIDE + b"\f", size + 16)
        else:
            # The switch and its character are one piece.
            stdout = (FIRST + block("2", b"A" * (size - 8), size + 4)
                      + block("6", b"\x1b$@\x1bQ2 y", 20)
                      + block("0", TO_DOUBLE + WIDE + b"\f", 24))
        behind = block("6", b"\x1b$@\x1bQ2 y", 20) if room else b""
        to.add(f"wide-at-{size}", f"A switch to be at its end at byte {size}, and a character.",
               stdin, stdout + behind + END)
    for size in (8189, 8190):
        stdin = WIDE + b"\f" + b"\n" * size + WIDE + b"\f"
        first = page(TO_DOUBLE + WIDE + b"\f", DOUBLE_CARRIED)
        if size == 8189:
            stdout = block("2", b"\n" * size + WIDE + b"\f", 8205)
        else:
            stdout = block("2", b"\n" * size, 8202) + block("0", WIDE + b"\f", 16)
        to.add(f"wide-behind-{size}", f"A character of three bytes behind {size}.", stdin,
               FIRST + first + UNIT + stdout + END)
    to.add("many-pages", "A thousand pages.", b"A\f" * 1000,
           FIRST + UNIT.join([block("2", b"A\f", 14)] * 1000) + END)
    to.add("large", "A page of a million bytes.", b"A" * 1000000 + b"\f",
           FIRST + block("2", b"A" * 8192) + block("0", b"A" * 8192) * 121
           + block("0", b"A" * (1000000 - 122 * 8192) + b"\f") + END)
    to.add("large-lines", "Lines of 100 bytes, 300 a page.",
           (b"x" * 99 + b"\n") * 300 + b"\f",
           FIRST + lines_in_blocks(30000) + END)
    return to


def lines_in_blocks(size: int) -> bytes:
    """A page of lines of 100 bytes, each byte a piece."""
    text = (b"x" * 99 + b"\n") * (size // 100) + b"\f"
    out = b""
    kind = "2"
    while len(text) > 8193:
        out += block(kind, text[:8192])
        text = text[8192:]
        kind = "0"
    return out + block(kind, text)


CHECKS = [check for theme in (characters(), blocks()) for check in theme.checks]
