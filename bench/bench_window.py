# SPDX-License-Identifier: Apache-2.0
"""The window: its start, a large model, a full scene, runs and messages that are shown.

bench_window_probe does one work a process, without a screen. Milliseconds are CPU time of the GUI
thread, which is what a user would feel as a stutter.
"""
import math
import os
import pathlib
import subprocess

import bench_project
import bench_reader

EXAMPLE = pathlib.Path(__file__).parent.parent / "examples" / "beam" / "beam.tbk"
DESIGNS = 1000


def run(bench):
    os.environ["QT_QPA_PLATFORM"] = "offscreen"
    os.environ["TURNBUCKLE_CONFIG"] = str(bench.data / "window.ini")
    probe = str(bench.bin / "bench_window_probe")

    def numbers(*arguments):
        return list(map(float, subprocess.run(
            [probe, *map(str, arguments)], check=True, stdout=subprocess.PIPE, text=True,
            stderr=subprocess.DEVNULL).stdout.split()))

    bench.compare("window: start to the example, painted", [probe, "start", str(EXAMPLE)],
                  "an empty Qt window", [probe, "empty"], 3)
    large = bench.data / "window.tbk"
    large.write_text(bench_project.project(10_000), encoding="utf-8")
    bench.compare("window: project of 10,000 objects opened, painted", [probe, "start", str(large)],
                  "turnbuckle save of it", [bench.turnbuckle, "save", str(large), "--output",
                                            str(bench.data / "window_saved.tbk")], 2)
    value, = numbers("edit", large, "p9")
    last = bench_project.chain(10_000) - 1
    for name, what, bar in [(f"p{last}", "a parameter", 16), ("p1", "the head of a chain of 8,000", math.inf)]:
        value, = numbers("edit", large, name)
        bench.add(f"window: {what} changes, 10,000 objects shown", "ms", value, bar, "GUI thread")
    sample = bench.data / "window.dat"
    sample.write_text("value 1\n" * 200, encoding="utf-8")
    value, = numbers("scene", sample)
    bench.add("window: 60 items in each quadrant, layout and redraw", "ms", value, 16, "GUI thread")
    study = bench.data / "window_study.tbk"
    study.write_text(
        "parameter x(1);\ngenericIntegrationCommandFile i() { .setFileName(\"i\"); "
        ".setContent(\"x <entry>x</entry>\n\"); }\n"
        "genericIntegrationResultsFile o() { .setFileName(\"stdout.txt\"); "
        ".setValues([[\"y\",0,0,\"x\",Last,\"FDouble\",\"\",0,nullptr]]); }\n"
        "genericIntegrationDefinition d() { .addEntry(\"x\",1.0); .setFiles([i,o]); }\n"
        "genericIntegrationConfiguration c() { .setDefinition(d); .setEntry(\"x\",x); }\n"
        "genericIntegrationComputation run() { .setConfiguration(c); .setApplication(\"cat\"); "
        ".setArguments(\"i\"); }\n"
        "parameter y(run.getResults().getTable(\"stdout.txt\").getElementAt(\"y\"));\n" +
        "".join(f"design n{i}() {{ .setValue(\"x\",{i}); }}\n" for i in range(1, DESIGNS)),
        encoding="utf-8")
    each, frame = numbers("runs", study)
    bench.put_away(bench.data / "window_study_designs")
    bench.add("window: 1,000 designs run, each finished one", "ms", each, 2, "GUI thread")
    bench.add("window: their table scrolled, each frame", "ms", frame, 16, "GUI thread")
    whole, frame = numbers("log", 100_000)
    bench.add("window: 100,000 messages taken and shown", "ms", whole, math.inf, "GUI thread")
    bench.add("window: messages scrolled, each frame", "ms", frame, 16, "GUI thread")
    memory, = numbers("idle", EXAMPLE)
    bench.add("window: memory when idle", "MiB", memory, 150, "resident")
    editors(bench)
    for path in [large, sample, study]:
        path.unlink()


def editors(bench):
    """The editors on a template and a sample of 30 MB."""
    def numbers(work, file):
        return list(map(float, subprocess.run(
            [str(bench.bin / "bench_window_editors"), work, str(file)], check=True,
            stdout=subprocess.PIPE, text=True, stderr=subprocess.DEVNULL).stdout.split()))

    template = bench.data / "window_template.inp"
    with template.open("w", encoding="utf-8") as file:
        for i in range(1, 30_000_000 // 58):
            file.write(f"*PARAMETER, <entry>value{i % 50}</entry>, 1.0\n" if i % 2000 == 0 else
                       f"{i:8d}, {i % 977 / 977:14.8f}, {i % 1009 / 1009:14.8f}, {i * 1e-3:14.6e}\n")
    plain, opened, key = numbers("template", template)
    bench.add("window: template of 30 MB opened, first screen coloured", "plain text set",
              opened / plain, 3, f"{opened:.0f} ms")
    bench.add("window: a key pressed in it, 95 of 100", "ms", key, 16, "GUI thread")
    more, = numbers("history", template)
    bench.add("window: 1,000 edits of it in the history", "MiB", more, 100, "resident")
    log = bench_reader.generate(bench, "log", 30, "window_log.dat")
    plain, opened, change = numbers("sample", log)
    bench.add("window: sample of 30 MB with 100 rules opened", "plain text set", opened / plain, 3,
              f"{opened:.0f} ms")
    bench.add("window: its current value changed and marked", "ms", change, 50, "GUI thread")
    template.unlink()
