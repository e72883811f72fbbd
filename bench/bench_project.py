# SPDX-License-Identifier: Apache-2.0
"""Work on a whole project: twice the objects may take hardly more than twice the time.

Each work is done once in a fresh process, as a user does it, and the median of several processes
counts. The smallest time would tell how lucky the smaller project was with the caches, which hold
it and not the larger one. For the same reason the bar is for the sum: single works of few
milliseconds have none.
"""
import base64
import math
import statistics
import subprocess
import sys

LIMIT = 2.2
PROCESSES = 11
WORKS = ["load", "set the head of the chain, read its end", "rename an entry of every template",
         "undo", "save"]


def run(bench):
    """10,000 objects against 5,000: templates, the entries in their tags, a chain of parameters."""
    sizes = {}
    for count in (10_000, 5_000):
        sizes[count] = bench.data / f"project{count}.tbk"
        sizes[count].write_text(project(count), encoding="utf-8")
    times = {count: [] for count in sizes}
    for _ in range(PROCESSES):  # in turns, so that both see the same machine
        for count, path in sizes.items():
            last = f"p{chain(count) - 1}"
            output = subprocess.run(
                [bench.bin / "bench_lib_project", path, bench.data / "saved.tbk",
                 "p0.setValue(7);", last, 'mesh.renameEntry("value0","renamed");'],
                check=True, stdout=subprocess.PIPE, text=True).stdout.split()
            if float(output[0]) != 7 + chain(count) - 1:
                sys.exit(f"{last} is {output[0]}")
            if (bench.data / "saved.tbk").read_bytes().count(b"\n") < count:
                sys.exit("the project was not saved whole")
            times[count].append(list(map(float, output[1:])))
    large, half = ([statistics.median(column) for column in zip(*rows)] for rows in times.values())
    rows = [(work, slow, fast, math.inf) for work, slow, fast in zip(WORKS, large, half)]
    for work, slow, fast, bar in rows + [("all of it", sum(large), sum(half), LIMIT)]:
        bench.add(f"project of 10,000 objects: {work}", "half as many objects", slow / fast, bar,
                  f"{slow:.2f} ms to {fast:.2f} ms")
    for path in [*sizes.values(), bench.data / "saved.tbk"]:
        path.unlink()


def chain(count):
    """How many parameters a project of `count` objects has."""
    return count - count // 10 - count // 10 - 2


def project(count):
    """A tenth templates with ten tags, a tenth entries, the rest a chain of parameters."""
    names = count // 10
    lines = ["parameter p0(0) {}"]
    lines += [f"parameter p{i}(p{i - 1}+1) {{}}" for i in range(1, chain(count))]
    for i in range(names):
        tags = ["value0"] + [f"value{(i + k) % names}" for k in range(9)]
        text = "".join(f"*PARAMETER, <entry>{tag}</entry>, 1.0\n{'1.0, ' * 70}\n" for tag in tags)
        lines += [f"genericIntegrationCommandFile file{i}() {{",
                  f'    .setContent("[B64]{base64.b64encode(text.encode()).decode()}");',
                  f'    .setFileName("mesh{i}.inp");', "}"]
    lines += ["genericIntegrationDefinition mesh() {"]
    lines += [f'    .addEntry("value{i}",{i}.5);' for i in range(names)]
    lines += [f"    .setFiles([{','.join(f'file{i}' for i in range(names))}]);", "}",
              "genericIntegrationConfiguration design0() {", "    .setDefinition(mesh);"]
    lines += [f'    .setEntry("value{i}",p{i});' for i in range(names)]
    return "\n".join(lines + ["}", ""])
