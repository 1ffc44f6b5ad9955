"""Runs the program under test: in a fresh directory, with limits, its streams in memory."""

import dataclasses
import fcntl
import os
import resource
import select
import shutil
import signal
import stat
import struct
import subprocess
import sys
import tempfile
import termios
import time
from typing import Optional, Union

from . import check as checks
from .escaped import shown

MEBIBYTE = 1 << 20
BEFORE = 24  # bytes shown in front of a difference
BEHIND = 40
# Closes streams and becomes the program: what Popen starts always has three.
CLOSE_AND_RUN = b"""
import os, signal, sys
signal.signal(signal.SIGPIPE, signal.SIG_DFL)
for number in sys.argv[1].split(","):
    os.close(int(number))
os.execv(sys.argv[2], sys.argv[3:])
"""


@dataclasses.dataclass
class Limits:
    seconds: float = 10.0
    output: int = 64 * MEBIBYTE
    memory: int = 2048 * MEBIBYTE  # 0: none

    def take(self) -> None:
        """Limits this process, and so all that it starts. Its own needs are far below them."""
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        limits = {resource.RLIMIT_FSIZE: self.output, resource.RLIMIT_AS: self.memory}
        for what, most in limits.items():
            _, hard = resource.getrlimit(what)
            if most and (hard == resource.RLIM_INFINITY or most <= hard):
                resource.setrlimit(what, (most, hard))

    @staticmethod
    def give_back() -> None:
        """For what is built, and for the program of the fault tests, which has limits of its own."""
        for what in (resource.RLIMIT_FSIZE, resource.RLIMIT_AS):
            _, hard = resource.getrlimit(what)
            resource.setrlimit(what, (hard, hard))


@dataclasses.dataclass
class Outcome:
    stdout: bytes
    stderr: bytes
    status: int  # minus the signal's number when one ended it
    late: bool  # it was ended at the time limit


def memory_file(data: bytes = b"") -> int:
    descriptor = os.memfd_create("check")
    written = 0
    while written < len(data):
        written += os.write(descriptor, data[written:])
    os.lseek(descriptor, 0, os.SEEK_SET)
    return descriptor


def contents(descriptor: int) -> bytes:
    size = os.fstat(descriptor).st_size
    parts = []
    at = 0
    while at < size:
        part = os.pread(descriptor, size - at, at)
        if not part:
            break
        parts.append(part)
        at += len(part)
    return b"".join(parts)


def unread(pipe: int) -> int:
    """Bytes that stand in a pipe."""
    return int(struct.unpack("i", fcntl.ioctl(pipe, termios.FIONREAD, b"\0" * 4))[0])


def wait(process: subprocess.Popen, seconds: float) -> bool:
    """@return whether it ended in time."""
    try:
        handle = os.pidfd_open(process.pid)
    except (AttributeError, OSError):
        try:
            process.wait(seconds)
            return True
        except subprocess.TimeoutExpired:
            return False
    try:
        poll = select.poll()
        poll.register(handle, select.POLLIN)
        ended = bool(poll.poll(seconds * 1000))
    finally:
        os.close(handle)
    if ended:
        process.wait()
    return ended


def end(process: subprocess.Popen) -> None:
    """Ends the process and those that it started and left in its session."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


class Stage:
    """A program, and where it finds its files."""

    def __init__(self, program: str, called: str, limits: Limits, below: Optional[str]):
        self.program = program
        self.called = os.fsencode(called)
        self.limits = limits
        # The folder of the current directory in which the fixed paths are; None: they cannot be
        # given to the program, and why.
        self.below = below
        self.no_fixed_paths = ""
        self.standin: Optional[str] = None
        self.no_standin = "no stand-in for the font library was built"
        self.scratch = tempfile.mkdtemp(prefix="conformance-")
        os.chmod(self.scratch, 0o755)
        self.environment = {
            name: value
            for name, value in os.environ.items()
            if not name.startswith(("LC_", "LD_", "FAL_", "RLX_"))
            and name not in ("LANG", "LANGUAGE", "POSIXLY_CORRECT")
        }
        self.environment["LC_ALL"] = "C"

    def close(self) -> None:
        shutil.rmtree(self.scratch, ignore_errors=True)

    def why_not(self, check: checks.Check) -> str:
        """Why a check cannot be tried; "" when it can."""
        if check.at_fixed_paths() and self.below is None:
            return self.no_fixed_paths
        if check.fonts is not None and self.standin is None:
            return self.no_standin
        return ""

    def place(self, path: str) -> str:
        """Where a file of a check stands in the current directory of the run."""
        if path.startswith(checks.STANDIN) or not path.startswith(checks.FIXED):
            return path
        return (self.below or "sandbox") + "/" + path[len(checks.FIXED) :]

    def lay(self, check: checks.Check) -> str:
        """@return a fresh directory with the check's files."""
        directory = tempfile.mkdtemp(dir=self.scratch)
        os.chmod(directory, 0o755)
        files = dict(check.files)
        if check.fonts is not None:
            files[checks.STANDIN + "description"] = check.fonts
            files[checks.STANDIN + "log"] = b""
            link = os.path.join(directory, self.place(checks.FONT_LIBRARY))
            os.makedirs(os.path.dirname(link))
            os.symlink(self.standin, link)
        for path, data in files.items():
            place = os.path.join(directory, self.place(path))
            os.makedirs(os.path.dirname(place), exist_ok=True)
            with open(place, "wb") as file:
                file.write(data)
        return directory

    def start(
        self,
        options: list[bytes],
        directory: str,
        streams: tuple[Union[int, None], Union[int, None], Union[int, None]],
        ignore_broken_pipes: bool = False,
    ) -> subprocess.Popen:
        """Starts the program; a stream of None is closed. @throws OSError when it cannot be run."""
        closed = [number for number, stream in enumerate(streams) if stream is None]
        given = [subprocess.DEVNULL if stream is None else stream for stream in streams]
        arguments: list[bytes] = [self.called, *options]
        program = self.program
        if closed:
            numbers = ",".join(map(str, closed)).encode()
            launcher = [b"python3", b"-I", b"-S", b"-c", CLOSE_AND_RUN, numbers]
            arguments = [*launcher, os.fsencode(program), *arguments]
            program = sys.executable
        return subprocess.Popen(
            arguments,
            executable=program,
            stdin=given[0],
            stdout=given[1],
            stderr=given[2],
            cwd=directory,
            env=self.environment,
            start_new_session=True,
            restore_signals=not ignore_broken_pipes,
        )

    def finish(self, process: subprocess.Popen) -> bool:
        """Waits for a started program and ends what is left of it. @return whether it was late."""
        late = not wait(process, self.limits.seconds)
        end(process)
        return late

    def run(self, options: list[bytes], stdin: bytes, directory: str) -> Outcome:
        files = [memory_file(stdin), memory_file(), memory_file()]
        try:
            process = self.start(options, directory, (files[0], files[1], files[2]))
            late = self.finish(process)
            return Outcome(contents(files[1]), contents(files[2]), process.returncode, late)
        finally:
            for file in files:
                os.close(file)

    def run_slowly(self, options: list[bytes], stdin: bytes, directory: str) -> Outcome:
        job_from, job_to = os.pipe()
        files = [memory_file(), memory_file()]
        deadline = time.monotonic() + self.limits.seconds
        try:
            process = self.start(options, directory, (job_from, files[0], files[1]))
            os.close(job_from)
            for byte in stdin:
                try:
                    os.write(job_to, bytes([byte]))
                except BrokenPipeError:
                    break
                while unread(job_to) and time.monotonic() < deadline and process.poll() is None:
                    time.sleep(0)
            os.close(job_to)
            late = self.finish(process)
            return Outcome(contents(files[0]), contents(files[1]), process.returncode, late)
        finally:
            for file in files:
                os.close(file)

    def message(self, expected: bytes) -> bytes:
        """Messages with the name by which the program calls itself."""
        lines = expected.split(b"\n")
        return b"\n".join(
            self.called + line[6:] if line.startswith(b"filter:") else line for line in lines
        )

    def compare(self, check: checks.Check, outcome: Outcome) -> list[str]:
        """What differs from what must come out."""
        wrong = []
        if outcome.late:
            wrong.append(f"it did not end within {self.limits.seconds:g} seconds and was ended")
        if outcome.status != check.status and not outcome.late:
            wrong.append(f"exit status: expected {check.status}, got {ended_how(outcome.status)}")
        if max(len(outcome.stdout), len(outcome.stderr)) >= self.limits.output:
            wrong.append(f"it wrote more than {self.limits.output >> 20} MiB")
        wrong += difference("standard output", check.stdout, outcome.stdout)
        wrong += difference("standard error", self.message(check.stderr), outcome.stderr)
        return wrong

    def take(self, check: checks.Check) -> checks.Result:
        """Tries a check."""
        reason = self.why_not(check)
        if reason:
            return checks.Result(check, checks.NOT_TRIED, reason)
        start = time.monotonic()
        directory = self.lay(check)
        try:
            if check.own is not None:
                wrong = [text for text in [check.own(self, directory)] if text]
            else:
                run = self.run_slowly if check.slowly else self.run
                wrong = self.compare(check, run(check.options, check.stdin, directory))
                for path, expected in check.leaves.items():
                    wrong += difference(path, expected, file_bytes(directory, self.place(path)))
        except OSError as error:
            wrong = [f"it cannot be run: {error}"]
        finally:
            shutil.rmtree(directory, ignore_errors=True)
        verdict = checks.FAILS if wrong else checks.HOLDS
        return checks.Result(check, verdict, "\n".join(wrong), time.monotonic() - start)


def file_bytes(directory: str, path: str) -> bytes:
    try:
        with open(os.path.join(directory, path), "rb") as file:
            return file.read()
    except OSError:
        return b""


def ended_how(status: int) -> str:
    if status >= 0:
        return str(status)
    try:
        return f"signal {-status} ({signal.Signals(-status).name})"
    except ValueError:
        return f"signal {-status}"


def difference(what: str, expected: bytes, got: bytes) -> list[str]:
    """The first difference, in hex and text; nothing when there is none."""
    if expected == got:
        return []
    both = min(len(expected), len(got))
    at = next((i for i in range(both) if expected[i] != got[i]), both)
    start = max(0, at - BEFORE)
    lines = [f"{what}: the first difference is at byte {at}"]
    lines[0] += f" ({len(expected)} bytes expected, {len(got)} came)"
    if start < at:
        lines.append(f"  behind   {shown(expected[start:at])}")
    for name, data in (("expected", expected), ("got", got)):
        part = data[at : at + BEHIND]
        more = "..." if len(data) > at + BEHIND else ""
        if part:
            lines.append(f"  {name:8} {part[:16].hex(' ')}{'...' if len(data) > at + 16 else ''}")
            lines.append(f"           {shown(part)}{more}")
        else:
            lines.append(f"  {name:8} (the end)")
    return lines


def is_script(program: str) -> bool:
    with open(program, "rb") as file:
        return file.read(2) == b"#!"


def is_executable_file(program: str) -> bool:
    try:
        return stat.S_ISREG(os.stat(program).st_mode) and os.access(program, os.X_OK)
    except OSError:
        return False
