# SPDX-License-Identifier: Apache-2.0
"""Writing of input files: one design of a project that is loaded, which the bars are for, and the
whole command, which reads the project first and has none."""
import math
import subprocess
import sys

LARGE = 30_000_000
LIMIT_COPY = 2.0
LIMIT_LOOP = 1.5


def run(bench):
    """One large template against a copy of the result, many small ones against a bare loop."""
    for names in (10, 1_000):
        for tags in (10, 1_000, 10_000):
            measure(bench, f"30 MB template, {tags:,} tags, {names:,} names", 1, LARGE, tags, names,
                    2, LIMIT_COPY)
    measure(bench, "1,000 templates of 4 KB, 10 tags each", 1_000, 4_000, 10, 10, 1, LIMIT_LOOP)


def measure(bench, work, files, size, tags, names, yardstick, bar):
    """Rows for one project; `yardstick` 1 is the loop that writes from memory, 2 the copy."""
    project = bench.data / "writer.tbk"
    expected, target = bench.data / "writer_expected", bench.data / "writer_target"
    for folder in (expected, target):
        bench.put_away(folder)
        folder.mkdir()
    subprocess.run([bench.bin / "bench_gen_template", str(files), str(size), str(tags), str(names),
                    project], check=True)
    subprocess.run([bench.turnbuckle, "expand", project, "--output", expected], check=True)
    if len(list(expected.iterdir())) != files:
        sys.exit(f"{work}: not all files were written")

    output = subprocess.run([bench.bin / "bench_lib_write", project, expected, target, "15"],
                            check=True, stdout=subprocess.PIPE).stdout
    first, later, *others = [float(word) for word in output.split()]
    against = ["", "the files written by a bare loop", "a copy within the kernel, as cp does it"]
    yard = others[yardstick - 1]
    bench.add(f"{work}: one design written", against[yardstick], later / yard, bar,
              f"{later:.2f} ms to {yard:.2f} ms; first design {first:.1f} ms")
    if yardstick == 2:
        bench.add(f"{work}: one design written", "cp, the process included", later / others[2], bar,
                  f"{later:.2f} ms to {others[2]:.2f} ms")
    command = ["cp", str(expected / "mesh0.inp"), str(target / "mesh0.inp")]
    if yardstick == 1:
        command = [str(bench.bin / "bench_write_loop"), str(expected), str(target)]

    def empty(_=None):
        if files == 1:  # large
            (target / "mesh0.inp").unlink(missing_ok=True)
        else:
            bench.put_away(target)
            target.mkdir()
    empty()
    bench.compare(f"{work}: whole command, project read", [
        bench.turnbuckle, "expand", str(project), "--output", str(target)],
        command[0].split("/")[-1].replace("bench_write_loop", "a bare loop, files read"), command,
        math.inf, before=empty)
    bench.put_away(expected)
    bench.put_away(target)
    project.unlink()
