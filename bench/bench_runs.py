# SPDX-License-Identifier: Apache-2.0
"""A thousand designs of a trivial program, supervised, against a bare loop that starts it."""
import json
import subprocess
import sys

DESIGNS = 1000  # the baseline among them
INPUTS = 5


def project(program):
    """The text of a project whose design d has the inputs 10 d + 1 to 10 d + 5."""
    lines = [f"parameter x{i}({i});" for i in range(1, INPUTS + 1)]
    for i in range(1, INPUTS + 1):
        lines += [f"genericIntegrationCommandFile in{i}() {{",
                  f'    .setContent("x = <entry>x{i}</entry>\n");',
                  f'    .setFileName("in{i}.txt");', "}"]
    lines += ["genericIntegrationResultsFile out() {",
              '    .setContent("result of the run\nsum = 15\n");',
              '    .setFileName("out.txt");',
              '    .setValues([["sum",0,0,"sum",Last,"FDouble","",0,nullptr]]);',
              "    .setNumberSeparator(true);", "}",
              "genericIntegrationDefinition definition() {"]
    lines += [f'    .addEntry("x{i}",0.0);' for i in range(1, INPUTS + 1)]
    files = ",".join(f"in{i}" for i in range(1, INPUTS + 1))
    lines += [f"    .setFiles([{files},out]);", "}",
              "genericIntegrationConfiguration configuration() {",
              "    .setDefinition(definition);"]
    lines += [f'    .setEntry("x{i}",x{i});' for i in range(1, INPUTS + 1)]
    lines += ["}", "genericIntegrationComputation sums() {",
              "    .setConfiguration(configuration);",
              f'    .setApplication("{program}");', "}",
              'parameter sum(sums.getResults().getTable("out.txt").getElementAt("sum"));']
    for design in range(1, DESIGNS):
        lines.append(f"design d{design}() {{")
        lines += [f'    .setValue("x{i}",{design * 10 + i});' for i in range(1, INPUTS + 1)]
        lines.append("}")
    return "\n".join(lines) + "\n"


def check(bench, file):
    """Ends the benchmark unless each design gave its own number."""
    command = [bench.turnbuckle, "run", file, "--all-designs", "--json"]
    runs = json.loads(subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout)["runs"]
    sums = {run["design"]: run["tables"][0]["rows"][0]["value"] for run in runs}
    wrong = [d for d in range(1, DESIGNS) if sums.get(f"d{d}") != d * 50 + 15]
    if wrong or sums["baseline"] != 15:
        sys.exit(f"{len(wrong)} of {DESIGNS} designs have a wrong sum, the first is {wrong[:1]}")


def run(bench):
    """Adds a row for one job and one for two."""
    trivial = str(bench.bin / "bench_trivial")
    file = bench.data / "runs.tbk"
    designs, loop = bench.data / "runs_designs", bench.data / "runs_loop"
    file.write_text(project(trivial), encoding="utf-8")

    def put_away(_which=None):
        bench.put_away(designs)
        bench.put_away(loop)

    put_away()
    check(bench, str(file))
    for jobs in (1, 2):
        bench.compare(f"{DESIGNS} designs of a trivial program, --jobs {jobs}",
                      [bench.turnbuckle, "run", str(file), "--all-designs", "--keep-going",
                       "--jobs", str(jobs)],
                      "a bare posix_spawn loop",
                      [str(bench.bin / "bench_spawn_loop"), trivial, str(loop), str(DESIGNS),
                       str(jobs)],
                      2.2, rounds=5, before=put_away)
    put_away()
    file.unlink()
