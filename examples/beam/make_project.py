#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes beam.tbk from the files in templates/ and samples/.

The project below is what is saved, except that @path@ stands for the content of a file. With
--check nothing is written, and the exit code is 1 if beam.tbk is not what would be written.
"""

import base64
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
TARGET = HERE / "beam.tbk"

PROJECT = """\
// Cantilever, 1 m long, of rectangular section. Made by make_project.py.
parameter height(0.02);
parameter width(0.01);
parameter load(100);
genericIntegrationCommandFile beam_inp() {
    .setContent("@templates/beam.inp@");
    .setFileName("beam.inp");
    .setForceWindowsLineEndings(false);
}
genericIntegrationResultsFile beam_dat() {
    .setContent("@samples/beam.dat@");
    .setFileName("beam.dat");
    .setValues([["deflection",2,3,"displacements",Last,"FDouble","",0,nullptr],\
["reaction",2,2,"total force",Last,"FDouble","",0,nullptr]]);
    .setNumberSeparator(true);
}
genericIntegrationResultsFile beam_frd() {
    .setContent("@samples/beam.frd@");
    .setFileName("beam.frd");
    .setValues([["stress",8,2,"-4  STRESS",Last,"FDouble","",0,nullptr]]);
    .setNumberSeparator(true);
}
genericIntegrationDefinition beam_definition() {
    .addEntry("height",0.02);
    .addEntry("width",0.01);
    .addEntry("load",100.0);
    .setFiles([beam_inp,beam_dat,beam_frd]);
}
genericIntegrationConfiguration beam_configuration() {
    .setDefinition(beam_definition);
    .setEntry("height",height);
    .setEntry("width",width);
    .setEntry("load",load);
}
genericIntegrationComputation beam() {
    .setConfiguration(beam_configuration);
    .setApplication("ccx");
    .setArguments("-i beam");
    .setTimeout(60);
}
parameter deflection(beam.getResults().getTable("beam.dat").getElementAt("deflection"));
parameter reaction(beam.getResults().getTable("beam.dat").getElementAt("reaction"));
parameter stress(beam.getResults().getTable("beam.frd").getElementAt("stress"));
// The same by beam theory.
parameter hand_deflection(4*load/(210e9*width*height^3));
parameter hand_stress(6*load/(width*height^2));
design slim() {
    .setValue("height",0.03);
    .setValue("width",0.008);
}
design square() {
    .setValue("height",0.015);
    .setValue("width",0.015);
}
design loaded() {
    .setValue("load",250);
}
"""


def content(match):
    data = (HERE / match.group(1)).read_bytes()
    return "[B64]" + base64.b64encode(data).decode("ascii")


def main():
    project = re.sub(r"@([\w./]+)@", content, PROJECT).encode("utf-8")
    if TARGET.exists() and TARGET.read_bytes() == project:
        return 0
    if "--check" in sys.argv[1:]:
        print(f"{TARGET.name} is out of date: run make_project.py", file=sys.stderr)
        return 1
    TARGET.write_bytes(project)
    return 0


if __name__ == "__main__":
    sys.exit(main())
