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
    for path in [large, sample, study]:
        path.unlink()
