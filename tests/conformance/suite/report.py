"""The report: lines of what holds and what does not."""

import shlex
import sys
from typing import Optional, TextIO

from .check import FAILS, HOLDS, NOT_TRIED, Check, Result


def one_field(text: str) -> str:
    return text.replace("\\", "\\\\").replace("\t", "\\t").replace("\n", "\\n")


class Report:
    def __init__(self, command: list[str], quiet: bool, tsv: Optional[str]):
        self.command = command
        self.quiet = quiet
        self.theme = ""
        self.counts = {HOLDS: 0, FAILS: 0, NOT_TRIED: 0}
        self.reasons: dict[str, int] = {}
        self.tsv: Optional[TextIO] = None
        if tsv is not None:
            self.tsv = open(tsv, "w", encoding="utf-8")
            self.tsv.write("name\tverdict\ttheme\tabout\tdetail\tseconds\n")

    def begin_theme(self, check: Check) -> None:
        if check.theme != self.theme:
            self.theme = check.theme
            if not self.quiet:
                print(f"\n== {check.theme}")

    def add(self, result: Result) -> None:
        check = result.check
        self.counts[result.verdict] += 1
        if result.verdict == NOT_TRIED:
            self.reasons[result.detail] = self.reasons.get(result.detail, 0) + 1
        self.begin_theme(check)
        if self.tsv is not None:
            row = [check.name, result.verdict, check.theme, check.about, result.detail]
            fields = [one_field(text) for text in row] + [f"{result.seconds:.3f}"]
            self.tsv.write("\t".join(fields) + "\n")
        if result.verdict == HOLDS and not self.quiet:
            print(f"holds          {check.name}: {check.about}")
        elif result.verdict == NOT_TRIED and not self.quiet:
            print(f"not tried      {check.name}: {check.about} ({result.detail})")
        elif result.verdict == FAILS:
            print(f"DOES NOT HOLD  {check.name}: {check.about}")
            for line in result.detail.splitlines():
                print(f"                 {line}")
            print(f"                 again: {shlex.join([*self.command, '--only', check.name])}")
        sys.stdout.flush()

    def end(self) -> int:
        """@return the exit status."""
        if self.tsv is not None:
            self.tsv.close()
        if not any(self.counts.values()):
            print("nothing has such a name", file=sys.stderr)
            return 2
        if self.reasons:
            print("\nnot tried:")
            for reason, count in self.reasons.items():
                print(f"  {count} because {reason}")
        holds, fails, not_tried = (self.counts[verdict] for verdict in (HOLDS, FAILS, NOT_TRIED))
        print(f"\n{holds} hold, {fails} do not hold, {not_tried} were not tried")
        return 1 if fails else 0
