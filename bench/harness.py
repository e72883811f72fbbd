# SPDX-License-Identifier: Apache-2.0
"""Times whole commands against each other in one run.

A case has a subject and a yardstick. They are run in turns, the order changes from round to round,
and the smallest wall time of each counts, so that both saw the same machine at its best. Only the
ratio of the two is a result; single times mean nothing on another machine.
"""
import math
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time


class Bench:
    """The programs, a folder for data, and the rows that were measured."""

    def __init__(self, bin_dir, data_dir):
        self.bin = pathlib.Path(bin_dir).resolve()
        self.data = pathlib.Path(data_dir).resolve()
        self.data.mkdir(parents=True, exist_ok=True)
        self.turnbuckle = str(self.bin / "turnbuckle")
        self.rows = []
        self.old = self.data / "old"
        self.remove_old()
        self.old.mkdir()

    def put_away(self, folder):
        """Moves a folder with many files out of the way. They are not removed before the end: a
        file system may be slow to make files for minutes after thousands were removed, and would be
        so for one of two works more than for the other."""
        if folder.exists():
            folder.rename(self.old / str(len(list(self.old.iterdir()))))

    def remove_old(self):
        """Removes what was put away, also by a benchmark that was interrupted."""
        shutil.rmtree(self.old, ignore_errors=True)

    def compare(self, work, subject, against, yardstick, bar, rounds=7, before=None):
        """Adds a row: `subject` and `yardstick` are commands (lists, or strings for a shell),
        `against` names the yardstick, `bar` is the largest ratio that passes. `before(which)` is
        called ahead of every run, outside the measured time. Returns the ratio."""
        best = {"subject": float("inf"), "yardstick": float("inf")}
        commands = {"subject": subject, "yardstick": yardstick}
        for i in range(rounds):
            for which in list(commands) if i % 2 else reversed(list(commands)):
                if before:
                    before(which)
                best[which] = min(best[which], seconds(commands[which]))
        ratio = best["subject"] / best["yardstick"]
        self.add(work, against, ratio, bar,
                 f"{best['subject'] * 1e3:.1f} ms to {best['yardstick'] * 1e3:.1f} ms")
        return ratio

    def add(self, work, against, value, bar, details):
        """Adds a row that was measured in another way; passes if value <= bar. A row without a
        bar, which is there for orientation, has the bar math.inf."""
        self.rows.append({"work": work, "against": against, "ratio": value, "bar": bar,
                          "details": details})
        verdict = "" if bar == math.inf else f"bar {bar:g} " + ("ok" if value <= bar else "MISSED")
        print(f"{work:<66} {value:8.2f}   {verdict:<14} {details}  ({against})",
              flush=True)


def seconds(command):
    """Wall time of a command that must succeed; its output goes nowhere."""
    begin = time.perf_counter()
    done = subprocess.run(command, shell=isinstance(command, str), stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
    elapsed = time.perf_counter() - begin
    if done.returncode != 0:
        sys.exit(f"{command}: exit code {done.returncode}\n{done.stderr.decode(errors='replace')}")
    return elapsed


def peak_memory_mib(command):
    """Largest resident set of a command, in MiB."""
    with tempfile.TemporaryFile() as out:
        pid = os.posix_spawn(command[0], command, os.environ,
                             file_actions=[(os.POSIX_SPAWN_DUP2, out.fileno(), 1)])
        _, status, usage = os.wait4(pid, 0)
    if status != 0:
        sys.exit(f"{command}: status {status}")
    return usage.ru_maxrss / 1024
