# SPDX-License-Identifier: Apache-2.0
"""Reading results: `turnbuckle extract` on long logs and a long table, against plain tools."""
import os
import subprocess

WORDS = ["maximum stress", "TOTAL mass", "drag Coefficient", "outlet pressure", "heat flux"]
COMMON = ["forces on", "Linear solver converged", " Iteration ", "time step size"]


def write_project(path, file_name, values):
    """A project of one result template. `values` holds name, line, column, anchor, occurrence and
    rows of the average (0: a single cell) of each rule."""
    rules = ",".join(
        f'["{name}",{line},{column},"{anchor}",{occurrence},"FDouble","",{int(rows > 0)},'
        f'{rows or "nullptr"}]' for name, line, column, anchor, occurrence, rows in values)
    path.write_text(f"genericIntegrationResultsFile results() {{\n"
                    f'    .setFileName("{file_name}");\n    .setValues([{rules}]);\n'
                    f"    .setNumberSeparator(true);\n}}\n", encoding="ascii")
    return str(path)


def log_rules(count):
    """Rules for a log of gen_log. Every fifth anchor stands all over the log, or nowhere; the others
    stand there once."""
    if count == 1:
        return [("only", 0, 0, "outlet pressure in zone 048", "Last", 0)]
    rules = []
    for i in range(count):
        zone = i * 100 // count
        anchor = f"{WORDS[zone % 5]} in zone {zone:03}:"
        if i % 10 == 4:
            anchor = COMMON[i // 10 % 4]
        elif i % 10 == 9:
            anchor = f"diverged in zone {zone:03}"
        rules.append((f"value{i}", i % 6 - 2, i // 2 % 6, anchor, "First" if i % 2 else "Last", 0))
    return rules


def generate(bench, kind, size, name):
    """File of gen_log in the data folder, made once."""
    path = bench.data / name
    if not path.exists():
        part = path.with_suffix(".part")
        subprocess.run([str(bench.bin / "bench_gen_log"), kind, str(size), str(part)], check=True)
        os.replace(part, path)
    return str(path)


def peak_beyond(command, file):
    """Peak of the resident memory of a command, without the pages of `file`, in MiB. The whole of
    the file may be mapped at the peak, so what was not mapped of it counts for nothing."""
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    peak = 0
    while process.poll() is None:
        try:
            with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
                fields = dict(line.split(":", 1) for line in status)
            peak = max(peak, sum(int(fields[key].split()[0]) for key in ("RssAnon", "RssShmem")))
        except (OSError, KeyError):
            break
    process.wait()
    return peak / 1024


def run(bench):
    """Adds the rows of reading."""
    times = {}
    for size in (30, 300):
        log = generate(bench, "log", size, f"log{size}.txt")
        cat = f"cat {log} >/dev/null"
        projects = {count: write_project(bench.data / f"rules{count}.tbk", "log.txt",
                                         log_rules(count)) for count in (1, 10, 100)}
        commands = {count: [bench.turnbuckle, "extract", projects[count], log]
                    for count in projects}
        if size == 300:
            bench.compare("300 MB log, 1 rule, last hit in the middle", commands[1], "cat", cat, 2)
        bench.compare(f"{size} MB log, 100 rules", commands[100], "cat", cat, 4)
        bench.compare(f"{size} MB log, 100 rules", commands[100], "10 rules", commands[10], 1.5,
                      rounds=21 if size == 30 else 7)
        if size == 300:
            for count in (1, 100):
                bench.add(f"300 MB log, {count} rule{'s' * (count > 1)}, MiB beyond the mapped file", "MiB",
                          peak_beyond(commands[count], log), 64, "largest RssAnon")
    table = generate(bench, "table", 1000000, "table.txt")
    project = write_project(bench.data / "table.tbk", "table.txt",
                            [("mean", 0, 2, "", "Last", 1000), ("last", -1, 3, "", "Last", 0)])
    bench.compare("table of 10^6 rows, mean of the last 1,000 and last value",
                  [bench.turnbuckle, "extract", project, table], "tail | awk",
                  f"tail -n 1000 {table} | awk '{{ s += $3; l = $4 }} END {{ print s / NR, l }}'",
                  3, rounds=25)
