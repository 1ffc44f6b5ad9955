"""What a system can do to a program without any tools: bad streams, pauses, odd files.

Signals are sent to the program by its process number alone.
"""

import os
import select
import signal
import socket
import subprocess
import time
from typing import Callable, Optional

from .check import FIXED, Check
from .limits.expected import CARRIED, CONDITIONS, FORM_ERROR, job, page, sheet
from .limits.forms import told
from .limits.frames import EMPTY_END, cnt, end
from .stage import Outcome, Stage, contents, memory_file, unread

CHECKS: list[Check] = []

PLAIN = sheet(CONDITIONS + b"A\f", CARRIED)
LARGE_JOB = (b"x" * 99 + b"\n") * 50 + b"\f"
LARGE = job(page(CONDITIONS + LARGE_JOB, CARRIED), *[page(LARGE_JOB)] * 199)


def add(theme: str, name: str, about: str, own: Callable, needs_fixed_paths: bool = False,
        files: Optional[dict[str, bytes]] = None) -> None:
    CHECKS.append(Check(name=f"faults/{name}", about=about, theme=f"faults: {theme}", own=own,
                        files=files or {}, needs_fixed_paths=needs_fixed_paths))


def expect(stage: Stage, outcome: Outcome, stdout: bytes, stderr: bytes, status: int) -> str:
    """What differs."""
    check = Check("", "", "", stdout=stdout, stderr=stderr, status=status)
    return "\n".join(stage.compare(check, outcome))


# ---- Streams -----------------------------------------------------------------------------------


def with_streams(
    options: list[bytes],
    opened: Callable[[], tuple[Optional[int], Optional[int]]],
    stderr: bytes,
    status: int,
    ignore_broken_pipes: bool = False,
) -> Callable:
    """A run whose input and output are what `opened` returns; what reaches its output is not
    looked at. None is a closed stream."""

    def own(stage: Stage, directory: str) -> str:
        streams = opened()
        messages = memory_file()
        try:
            process = stage.start(options, directory, (*streams, messages), ignore_broken_pipes)
            late = stage.finish(process)
            outcome = Outcome(b"", contents(messages), process.returncode, late)
            return expect(stage, outcome, b"", stderr, status)
        finally:
            for stream in (*streams, messages):
                if stream is not None:
                    os.close(stream)

    return own


def to_full_device(stdin: bytes) -> Callable[[], tuple[int, int]]:
    return lambda: (memory_file(stdin), os.open("/dev/full", os.O_WRONLY))


def to_gone_reader(stdin: bytes) -> Callable[[], tuple[int, int]]:
    def opened() -> tuple[int, int]:
        reader, writer = os.pipe()
        os.close(reader)
        return memory_file(stdin), writer

    return opened


def to_file_for_reading(stdin: bytes) -> Callable[[], tuple[int, int]]:
    return lambda: (memory_file(stdin), os.open("/dev/null", os.O_RDONLY))


def from_file(path: str, flags: int) -> Callable[[], tuple[int, int]]:
    return lambda: (os.open(path, flags), memory_file())


def add_streams() -> None:
    theme = "standard input and output"
    full = [
        ("plain", "a job", [], b"A\f", b"write error"),
        ("large", "a job of a megabyte", [], LARGE_JOB * 200, b"write error"),
        ("framed", "a framed job", [b"-d"], end(b"AB"), b""),
    ]
    for name, what, options, stdin, message in full:
        add(theme, f"output-full-{name}", f"No room for the output of {what}: status 1.",
            with_streams(options, to_full_device(stdin), message, 1))
        add(theme, f"output-gone-{name}", f"Nobody reads the output of {what}: status 1.",
            with_streams(options, to_gone_reader(stdin), message, 1, True))
        add(theme, f"output-read-only-{name}", f"The output of {what} is a file for reading.",
            with_streams(options, to_file_for_reading(stdin), message, 1))
    add(theme, "output-gone-signal", "Nobody reads the output, and the signal is not ignored.",
        with_streams([], to_gone_reader(b"A\f"), b"", -signal.SIGPIPE))
    add(theme, "output-closed", "The output is closed: status 1.",
        with_streams([], lambda: (memory_file(b"A\f"), None), b"write error", 1))
    add(theme, "output-full-empty", "An empty job has nothing to write: it succeeds.",
        with_streams([], to_full_device(b""), b"", 0))
    wrong = [
        ("directory", "a directory", from_file("/", os.O_RDONLY), b"Is a directory\n"),
        ("write-only", "a file for writing", from_file("/dev/null", os.O_WRONLY),
         b"Bad file descriptor\n"),
        ("closed", "closed", lambda: (None, memory_file()), b"Bad file descriptor\n"),
    ]
    for name, what, opened, message in wrong:
        add(theme, f"input-{name}", f"The input is {what}: status 129.",
            with_streams([], opened, b"filter: " + message, 129))
        add(theme, f"input-{name}-framed", "So it is with a framed job, without a message.",
            with_streams([b"-d"], opened, b"", 129))

    def mute(options: list[bytes], stdout: bytes, status: int) -> Callable:
        def own(stage: Stage, directory: str) -> str:
            files = (memory_file(b"A\f"), memory_file(), None)
            try:
                process = stage.start(options, directory, files)
                late = stage.finish(process)
                outcome = Outcome(contents(files[1]), b"", process.returncode, late)
                return expect(stage, outcome, stdout, b"", status)
            finally:
                os.close(files[0])
                os.close(files[1])

        return own

    add(theme, "messages-closed", "A message that cannot be written changes nothing: status 1.",
        mute([b"-n", b"./none"], b"", 1))
    add(theme, "messages-closed-plain", "Nor in a job that has none.", mute([], PLAIN, 0))


# ---- Pipes -------------------------------------------------------------------------------------


class Pipes:
    """A run between two pipes: the job comes in portions, each when the one before has been taken,
    and the output is taken in portions."""

    def __init__(self, stage: Stage, directory: str, options: list[bytes], blocking: bool):
        self.stage = stage
        self.messages = memory_file()
        self.job_from, self.job_to = os.pipe()
        self.output_from, self.output_to = os.pipe()
        for descriptor in (self.job_from, self.output_to):
            os.set_blocking(descriptor, blocking)
        self.process: subprocess.Popen = stage.start(
            options, directory, (self.job_from, self.output_to, self.messages)
        )
        # The reading end of the job stays open here, to see what is not taken yet.
        os.close(self.output_to)
        os.set_blocking(self.job_to, False)
        self.deadline = time.monotonic() + stage.limits.seconds

    def run(self, stdin: bytes, portion: int, disturb: Callable[[int, int], None]) -> Outcome:
        left = memoryview(stdin)
        output = bytearray()
        turn = 0
        sending = True
        while time.monotonic() < self.deadline:
            turn += 1
            disturb(self.process.pid, turn)
            if sending and not unread(self.job_from):
                if left:
                    left = left[os.write(self.job_to, left[:portion]) :]
                else:
                    # Without a reader here the program sees the end.
                    os.close(self.job_to)
                    os.close(self.job_from)
                    sending = False
            ready, _, _ = select.select([self.output_from], [], [], 0.0002)
            if ready:
                part = os.read(self.output_from, max(portion, 512))
                if not part:
                    break
                output += part
                if len(output) > self.stage.limits.output:
                    break
        if sending:
            os.close(self.job_to)
            os.close(self.job_from)
        late = time.monotonic() >= self.deadline or self.stage.finish(self.process)
        if late:
            self.stage.finish(self.process)
        os.close(self.output_from)
        messages = contents(self.messages)
        os.close(self.messages)
        return Outcome(bytes(output), messages, self.process.returncode, late)


def undisturbed(process: int, turn: int) -> None:
    del process, turn


def stop_and_continue(process: int, turn: int) -> None:
    if turn % 4 == 1:
        try:
            os.kill(process, signal.SIGSTOP)
            os.kill(process, signal.SIGCONT)
        except ProcessLookupError:
            pass


SEQUENCES = (
    b"A\x1b[10`B\x1b[5e C\x1c$!p\x1b(H\x1bQ1;5!aab\fde\x1c%!( pD\x1b\x7f\x00\x00\x01\x06E\n\f"
)
WIDE = b"\xe3\x81\x82"
# Options, the job, and what it must become.
PIPED = [
    ("plain", "lines of text", [b"-q"], b"one\ntwo\n\fthree\f",
     job(page(b"one\ntwo\n\f"), page(b"three\f"))),
    ("wide", "text of both sets", [b"-q"], b"A" + WIDE + b"B" + WIDE + b"\f",
     sheet(b"A\x1bQ2 y\x1b$@" + WIDE + b"\x1bQ1 y\x1b(HB\x1bQ2 y\x1b$@" + WIDE + b"\f",
           b"\x1b$@\x1bQ2 y")),
    ("sequences", "sequences and their data", [b"-q"], SEQUENCES,
     sheet(SEQUENCES, b"\x1c$!p\x1b(H\x1c%!( p")),
    ("framed", "frames", [b"-d", b"-q"], cnt(b"A" + WIDE[:1]) + cnt(WIDE[1:] + b"\f") + EMPTY_END,
     # The character leaves with the frame that completes it.
     cnt(b"A\x1bQ2 y\x1b$@" + WIDE + b"\f") + EMPTY_END),
    ("printed", "a printed job", [], PLAIN, PLAIN),
]


def add_pipes() -> None:
    theme = "pipes and pauses"

    def piped(options: list[bytes], stdin: bytes, stdout: bytes, portion: int,
              blocking: bool = True, disturb: Callable[[int, int], None] = undisturbed) -> Callable:
        def own(stage: Stage, directory: str) -> str:
            pipes = Pipes(stage, directory, options, blocking)
            return expect(stage, pipes.run(stdin, portion, disturb), stdout, b"", 0)

        return own

    for name, what, options, stdin, stdout in PIPED:
        for portion in (1, 7):
            add(theme, f"pipe-{name}-{portion}", f"{what} in portions of {portion}.",
                piped(options, stdin, stdout, portion))
        add(theme, f"pipe-{name}-nonblocking", f"{what} between pipes that do not block.",
            piped(options, stdin, stdout, 3, blocking=False))
        add(theme, f"pipe-{name}-stopped", f"{what}, the program being stopped and continued.",
            piped(options, stdin, stdout, 1, disturb=stop_and_continue))
    for name, portion, blocking in (("4096", 4096, True), ("65536", 65536, True),
                                    ("nonblocking", 65536, False)):
        add(theme, f"pipe-large-{name}", "A megabyte, through pipes that are mostly full.",
            piped([], LARGE_JOB * 200, LARGE, portion, blocking))

    def full(blocking: bool) -> Callable:
        """The program has all its input at once, and fills its pipe before anything is read."""

        def own(stage: Stage, directory: str) -> str:
            reader, writer = os.pipe()
            os.set_blocking(writer, blocking)
            files = (memory_file(LARGE_JOB * 600), writer, memory_file())
            process = stage.start([], directory, files)
            os.close(writer)
            deadline = time.monotonic() + stage.limits.seconds
            time.sleep(0.2)
            output = bytearray()
            while select.select([reader], [], [], max(0.0, deadline - time.monotonic()))[0]:
                part = os.read(reader, 1000)
                if not part:
                    break
                output += part
            late = stage.finish(process)
            os.close(reader)
            outcome = Outcome(bytes(output), contents(files[2]), process.returncode, late)
            os.close(files[0])
            os.close(files[2])
            stdout = job(page(CONDITIONS + LARGE_JOB, CARRIED), *[page(LARGE_JOB)] * 599)
            return expect(stage, outcome, stdout, b"", 0)

        return own

    for name, blocking in (("blocking", True), ("nonblocking", False)):
        add(theme, f"pipe-full-{name}", "Three megabytes, a thousand bytes read at once.",
            full(blocking))
    add(theme, "pipe-large-stopped", "A megabyte, the program being stopped and continued.",
        piped([], LARGE_JOB * 200, LARGE, 65536, disturb=stop_and_continue))


# ---- Odd files ---------------------------------------------------------------------------------


def make_fifo(path: str) -> None:
    os.mkfifo(path)


def make_directory(path: str) -> None:
    os.mkdir(path)


def make_socket(path: str) -> None:
    # Socket names are short: by the name in its folder.
    folder = os.open(os.path.dirname(path), os.O_RDONLY)
    try:
        with socket.socket(socket.AF_UNIX) as end_of:
            end_of.bind(f"/proc/self/fd/{folder}/" + os.path.basename(path))
    finally:
        os.close(folder)


def make_loop(path: str) -> None:
    os.symlink(os.path.basename(path), path)


def make_dangling(path: str) -> None:
    os.symlink("nothing", path)


def make_device_link(path: str) -> None:
    os.symlink("/dev/zero", path)


def make_terminal_link(path: str) -> None:
    os.symlink("/dev/tty", path)


ODD = {
    "fifo": make_fifo, "directory": make_directory, "socket": make_socket, "loop": make_loop,
    "dangling": make_dangling, "device": make_device_link, "terminal": make_terminal_link,
}
ENVIRONMENT = FIXED + "etc/opt/PXLQwrmtk/wrmtk/wrmtkenv"
RANGE = FIXED + "etc/lp/g1gaiji"
LIBRARY = FIXED + "etc/opt/KOVAje/lib/libfal.so.1"
FORM = FIXED + "usr/local/lib/PXLQlp/fcbe/SLIP"


def add_odd_files() -> None:
    theme = "odd files"

    def odd(path: str, make: Callable[[str], None], options: list[bytes], stdout: bytes,
            stderr: bytes, status: int) -> Callable:
        def own(stage: Stage, directory: str) -> str:
            place = os.path.join(directory, stage.place(path))
            os.makedirs(os.path.dirname(place), exist_ok=True)
            make(place)
            return expect(stage, stage.run(options, b"A\f", directory), stdout, stderr, status)

        return own

    form = {"SLIP": b"print 1 30000\n"}
    by_form = [b"-q", b"-E", b"-n", b"./SLIP"]
    for kind, make in ODD.items():
        add(theme, f"form-{kind}", f"A {kind} in the place of a form: status 1.",
            odd("SLIP", make, [b"-n", b"./SLIP"], b"", FORM_ERROR, 1))
        add(theme, f"default-form-{kind}", f"A {kind} in the default directory: status 1.",
            odd(FORM, make, [b"-n", b"SLIP"], b"", FORM_ERROR, 1), True)
        add(theme, f"environment-{kind}", f"A {kind} as environment file counts as none.",
            odd(ENVIRONMENT, make, by_form, told(50), b"", 0), True, form)
        missing = kind == "dangling"
        add(theme, f"range-{kind}", f"A {kind} as range of characters: "
            + ("none." if missing else "status 1."),
            odd(RANGE, make, [], PLAIN if missing else b"",
                b"" if missing else b"filter: g1gaiji file error\n", 0 if missing else 1), True)
        add(theme, f"library-{kind}", f"A {kind} as font library counts as none.",
            odd(LIBRARY, make, [], PLAIN, b"", 0), True)

    def text_file(path: str) -> None:
        with open(path, "wb") as file:
            file.write(b"no library\n")

    add(theme, "library-text", "A text as font library counts as none.",
        odd(LIBRARY, text_file, [], PLAIN, b"", 0), True)

    def linked(path: str) -> None:
        target = path + "-elsewhere"
        with open(target, "wb") as file:
            file.write(b"print 1 30000\n")
        os.symlink(target, path + "-link")
        os.symlink(path + "-link", path)

    add(theme, "form-link", "A form behind two links is read.",
        odd("SLIP", linked, by_form, told(50), b"", 0))


add_streams()
add_pipes()
add_odd_files()
