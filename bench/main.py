# SPDX-License-Identifier: Apache-2.0
"""Runs the benchmarks and writes their table: main.py BIN_DIR DATA_DIR [AREA ...]"""
import datetime
import importlib
import math
import pathlib
import platform
import sys

import harness

AREAS = ["reader", "writer", "runs", "project", "window"]


def machine():
    """Processor, cores and kernel in a line."""
    info = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
    models = [line.split(":", 1)[1].strip() for line in info if line.startswith("model name")]
    return f"{len(models)} × {models[0] if models else platform.machine()}, Linux {'.'.join(platform.release().split('.')[:2])}"


def main():
    bench = harness.Bench(sys.argv[1], sys.argv[2])
    for area in sys.argv[3:] or AREAS:
        importlib.import_module("bench_" + area).run(bench)
    bench.remove_old()
    barred = [row for row in bench.rows if math.isfinite(row["bar"])]
    missed = [row for row in barred if row["ratio"] > row["bar"]]
    lines = [f"Measured {datetime.date.today()} on {machine()}.", "",
             "| Work | Against | Ratio | Bar | Times |", "|---|---|---|---|---|"]
    for row in bench.rows:
        bar = f"{row['bar']:g}" if row in barred else "–"
        against = row["against"].replace("|", "\\|")
        lines.append(f"| {row['work']} | {against} | {row['ratio']:.2f} | {bar}"
                     f"{' (missed)' if row in missed else ''} | {row['details']} |")
    table = "\n".join(lines) + "\n"
    (bench.data / "performance.md").write_text(table, encoding="utf-8")
    print(f"{len(barred) - len(missed)} of {len(barred)} bars kept; "
          f"the table is in {bench.data / 'performance.md'}")


main()
