"""The fault tests of tests/faults for any program: a preloaded library makes its calls fail.

Their program is a GoogleTest program; the lines of the report are its tests.
"""

import json
import os
import re
import shutil
import subprocess
from fnmatch import fnmatchcase
from typing import Iterator, Optional

from .check import FAILS, HOLDS, NOT_TRIED, Check, Result
from .fixed_paths import BELOW
from .stage import Stage, is_script

# What only this project's filter promises, and why it says nothing of another program.
LEFT_OUT = {
    "Imports": "it looks at what the filter takes from the C library",
    "LogFaults": "no job reaches the log: its writer is tested in a program of its own",
    "PipesOfLargeJobs": "it counts how often the filter asks for wider pipes",
}
LEFT_OUT_ABOUT = {
    "Imports": "nothing is called that no fault is tried on",
    "LogFaults": "every call of the log's writer fails in each way",
    "PipesOfLargeJobs": "pipes need not become wider",
}
THEME = "faults of the system, by a preloaded library"
RUNS = "Undisturbed.RunsToItsEnd"
SEEN = "Undisturbed.MovesItsBytesWhereTheShimSeesIt"
# The tests, by suite and name, in plain words.
ABOUT = {
    RUNS: "without a fault the job runs to its end",
    SEEN: "the preloaded library sees the program read and write",
    "SmallJob.ReadAndWrittenWhole": "every call fails once, in every way",
    "LargeJob.ReadAndWrittenWhole": "every call fails once, in every way",
    "SmallJob.InPieces": "the same while transfers come in pieces",
    "EveryPlace.AFailedWriteBehindEveryByte": "a write fails behind every byte",
    "EveryPlace.AFailedReadBehindEveryByte": "a read fails behind every byte",
    "EveryPlace.AFailedReadBehindEveryByteWhilePagesLeaveAtOnce":
        "the same while pages leave at once",
    "EveryPlace.AFailedWaitIsAFailedTransfer": "a wait for a transfer fails",
    "EveryPlace.AnInterruptedWaitIsTriedAgain": "a signal interrupts a wait",
    "EveryPlace.AReadErrorWhoseOutputCannotBeWrittenIsAWriteError":
        "a read fails, and the write behind it",
    "EveryPlace.AReadErrorWhoseOutputCannotBeClosedIsAWriteError":
        "a read fails, and the close of the output",
    "EveryPlace.AMessageThatCannotBeWrittenChangesNothing": "a message cannot be written",
    "SmallJobInShort.EveryTransferOfEverySize": "each transfer is short once, by every size",
    "SmallJobInShort.AllTransfersOfEverySize": "all transfers are short, of every size",
    "LargeJobInShort.AllTransfersOfSizesAroundTheBuffers":
        "all transfers are short, of sizes around those of buffers",
    "Pauses.OfThePrinter": "the printer does not take anything for a while",
    "Pauses.OfTheProgram": "the program is stopped and continued",
    "Pauses.BySignals": "signals interrupt it",
    "Pauses.OfPipesThatDoNotBlock": "the pipes do not block",
    "Pauses.OfAllKinds": "all that together",
    "ShortOfDescriptors.OneFreeIsEnough": "one free descriptor is enough",
    "ShortOfDescriptors.NoneFreeIsAFormThatCannotBeRead": "without one a form cannot be read",
    "FileAtPlace.IsRefusedWithoutWaitingWhenItIsHostile": "an odd file is refused at once",
    "FileAtPlace.MayBeReachedByLinks": "a file behind links is read",
    "FormByPath.IsRefusedWithoutWaitingWhenItIsHostile": "an odd file is refused at once",
    "FaultCorners.AFormThatCannotBeJudgedIsNotLookedForElsewhere":
        "a form that cannot be judged is not looked for elsewhere",
    "FaultCorners.AMissingEndFrameDoesNotHideAFailingClose":
        "a missing END frame does not hide a close that fails",
    "FaultCorners.ACopyThatFailsKeepsItsTextAndStatusWhenTheCloseFailsToo":
        "a copy fails, and the close behind it",
}
MOST_LINES = 12


def listed(text: str) -> list[str]:
    """The tests of a GoogleTest program's list."""
    names = []
    suite = ""
    for line in text.splitlines():
        if line.startswith("  "):
            names.append(suite + line.split("#")[0].strip())
        elif re.fullmatch(r"[\w/]+\.(\s+#.*)?", line):
            suite = line.split()[0]
    return names


def test_of(name: str) -> tuple[str, str]:
    """@return the suite and the test, without what stands around them, and the job."""
    parts = name.split("/")
    place = next(i for i, part in enumerate(parts) if "." in part)
    return parts[place], "/".join(parts[place + 1 :])


def check_of(name: str) -> Check:
    test, job = test_of(name)
    words = re.sub(r"(?<!^)(?=[A-Z])", " ", test.split(".")[1]).lower()
    about = ABOUT.get(test, words)
    return Check(name=f"shim/{name}", about=f"{about} ({job})" if job else about,
                 theme=THEME)


class Tests:
    """To be made before the limits of the runs are taken: what is built here needs more."""

    def __init__(self, stage: Stage, given: Optional[str], root: str, jobs: int):
        self.stage = stage
        self.jobs = jobs
        self.names: list[str] = []
        self.program: Optional[str] = None
        self.why_not = self.find(given, root)
        if self.program is not None:
            self.names = listed(self.output("--gtest_list_tests"))

    def find(self, given: Optional[str], root: str) -> str:
        """@return why the tests cannot be tried."""
        if self.stage.below is None:
            return self.stage.no_fixed_paths
        if self.stage.below != BELOW:
            return f"they lay their files below {BELOW}/: see --paths-below"
        if is_script(self.stage.program):
            return "a script is run by another program, which the library would disturb"
        if self.stage.called != b"filter":
            return "they call the program filter"
        if given is not None:
            self.program = os.path.abspath(given)
            return "" if os.access(given, os.X_OK) else f"{given} is no program"
        if not shutil.which("cmake"):
            return "they are built with cmake, which is not here"
        return self.build(root)

    def build(self, root: str) -> str:
        tree = os.path.join(root, "build-conformance")
        made = ["cmake", "-S", root, "-B", tree, "-DRLX_TESTS=ON", "-DRLX_TOOLS=OFF",
                "-DCMAKE_BUILD_TYPE=Release"]
        target = ["cmake", "--build", tree, "--parallel", str(self.jobs), "--target", "fault_tests"]
        for command in (made, target):
            built = subprocess.run(command, capture_output=True, text=True, check=False)
            if built.returncode != 0:
                lines = [line for line in built.stderr.splitlines() if line.strip()] or ["?"]
                return f"they do not build: {' '.join(lines[:2])}"
        self.program = os.path.join(tree, "tests/faults/fault_tests")
        return ""

    def environment(self) -> dict[str, str]:
        return {**self.stage.environment, "RLX_FAULT_PROGRAM": self.stage.program,
                "TMPDIR": self.stage.scratch}

    def output(self, *arguments: str) -> str:
        assert self.program is not None
        return subprocess.run([self.program, *arguments], env=self.environment(), text=True,
                              stdout=subprocess.PIPE, check=False).stdout

    def wanted(self, patterns: list[str]) -> list[str]:
        return [name for name in self.names
                if not patterns or any(fnmatchcase("shim/" + name, one) for one in patterns)]

    def run(self, patterns: list[str]) -> Iterator[Result]:
        if self.program is None or self.why_not:
            check = Check(name="shim/*", about="each call to the system fails in each way",
                          theme=THEME)
            yield Result(check, NOT_TRIED, self.why_not)
            return
        names = self.wanted(patterns)
        reasons: dict[str, str] = {}
        for suite, reason in LEFT_OUT.items():
            left_out = [name for name in names if test_of(name)[0].startswith(suite + ".")]
            if left_out:
                names = [name for name in names if name not in left_out]
                check = Check(name=f"shim/*{suite}.*", about=LEFT_OUT_ABOUT[suite], theme=THEME)
                yield Result(check, NOT_TRIED, reason)
        first = [name for name in self.names if test_of(name)[0] in (RUNS, SEEN)]
        results = self.results(first)
        self.judge_first(results, names, reasons)
        tried = [name for name in names if name not in reasons and name not in results]
        results.update(self.results(tried))
        for name in names:
            if name in reasons:
                yield Result(check_of(name), NOT_TRIED, reasons[name])
            else:
                yield results[name]

    @staticmethod
    def judge_first(results: dict[str, Result], names: list[str], reasons: dict[str, str]) -> None:
        """Finds which tests would show nothing."""
        broken = {test_of(name)[1] for name, result in results.items()
                  if test_of(name)[0] == RUNS and result.verdict != HOLDS}
        blind = [name for name, result in results.items()
                 if test_of(name)[0] == SEEN and result.verdict != HOLDS]
        for name in names:
            test, job = test_of(name)
            if name in reasons or test == RUNS:
                continue
            if job in broken or (broken and job not in {test_of(one)[1] for one in results}):
                reasons[name] = "without a fault the job does not run to its end"
            elif blind:
                reasons[name] = "the library does not see the program read and write"

    def results(self, names: list[str]) -> dict[str, Result]:
        """Runs tests, in several processes."""
        if not names:
            return {}
        assert self.program is not None
        shards = min(self.jobs, len(names))
        runs = []
        for shard in range(shards):
            table = os.path.join(self.stage.scratch, f"tests-{shard}.json")
            environment = {**self.environment(), "GTEST_TOTAL_SHARDS": str(shards),
                           "GTEST_SHARD_INDEX": str(shard), "GTEST_OUTPUT": f"json:{table}",
                           "GTEST_FILTER": ":".join(names)}
            if os.path.exists(table):
                os.remove(table)
            process = subprocess.Popen([self.program], env=environment, stdin=subprocess.DEVNULL,
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            runs.append((process, table))
        results = {}
        for process, table in runs:
            process.wait()
            results.update(read_table(table))
        for name in names:
            if name not in results:
                results[name] = Result(check_of(name), FAILS, "the tests ended before this one")
        return results


def read_table(table: str) -> dict[str, Result]:
    try:
        with open(table, encoding="utf-8") as file:
            suites = json.load(file)["testsuites"]
    except (OSError, ValueError, KeyError):
        return {}
    results = {}
    for suite in suites:
        for test in suite["testsuite"]:
            if test.get("result") != "COMPLETED":
                continue
            name = f"{suite['name']}.{test['name']}"
            failures = test.get("failures", [])
            detail = ""
            if failures:
                # The first line says where in the tests.
                lines = failures[0]["failure"].splitlines()[1:]
                detail = "\n".join(lines[:MOST_LINES])
            results[name] = Result(check_of(name), FAILS if failures else HOLDS, detail,
                                   float(test["time"].rstrip("s")))
    return results
