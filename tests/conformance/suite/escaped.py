"""Bytes as text, as in tests/cases: \\n, \\f, \\e for ESC, \\s for FS, \\r, \\\\ and \\xHH.

Real line breaks mean nothing.
"""

NAMED = {"n": 0x0A, "f": 0x0C, "e": 0x1B, "s": 0x1C, "r": 0x0D, "\\": 0x5C}
LETTERS = {byte: letter for letter, byte in NAMED.items()}


def decode(text: str) -> bytes:
    """@throws ValueError when it is no escaped text."""
    out = bytearray()
    at = 0
    while at < len(text):
        character = text[at]
        at += 1
        if character == "\\":
            letter = text[at : at + 1]
            at += 1
            if letter == "x":
                digits = text[at : at + 2]
                if len(digits) != 2 or not set(digits) <= set("0123456789abcdef"):
                    raise ValueError(f"\\x{digits}")
                out.append(int(digits, 16))
                at += 2
            elif letter in NAMED:
                out.append(NAMED[letter])
            else:
                raise ValueError(f"\\{letter}")
        elif " " <= character <= "~":
            out.append(ord(character))
        elif character != "\n":
            raise ValueError(repr(character))
    return bytes(out)


def shown(data: bytes) -> str:
    """In one line."""
    text = []
    for byte in data:
        if byte in LETTERS:
            text.append("\\" + LETTERS[byte])
        elif 0x20 <= byte <= 0x7E:
            text.append(chr(byte))
        else:
            text.append(f"\\x{byte:02x}")
    return "".join(text)
