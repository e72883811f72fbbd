#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes filter.tbk from the files in templates/ and samples/.

The project below is what is saved, except that @path@ stands for the content of a file. With
--check nothing is written, and the exit code is 1 if filter.tbk is not what would be written.
"""

import base64
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
TARGET = HERE / "filter.tbk"

PROJECT = """\
// RC low-pass filter. Made by make_project.py.
parameter resistance(1000);
parameter capacitance(1e-07);
genericIntegrationCommandFile filter_cir() {
    .setContent("@templates/filter.cir@");
    .setFileName("filter.cir");
    .setForceWindowsLineEndings(false);
}
genericIntegrationResultsFile response_csv() {
    .setContent("@samples/response.csv@");
    .setFileName("response.csv");
    .setValues([["cutoff",1,0,"cutoff_hz",Last,"FDouble","",0,nullptr],\
["gain",1,1,"cutoff_hz",Last,"FDouble","",0,nullptr],\
["phase",1,2,"cutoff_hz",Last,"FDouble","",0,nullptr]]);
    .setNumberSeparator(false);
    .setRegExprSeparator(",");
}
genericIntegrationResultsFile stdout_txt() {
    .setContent("@samples/stdout.txt@");
    .setFileName("stdout.txt");
    .setValues([["rise_time",0,0,"rise_time",Last,"FDouble","",0,nullptr]]);
    .setNumberSeparator(true);
}
genericIntegrationDefinition filter_definition() {
    .addEntry("resistance",1000.0);
    .addEntry("capacitance",1e-07);
    .setFiles([filter_cir,response_csv,stdout_txt]);
}
genericIntegrationConfiguration filter_configuration() {
    .setDefinition(filter_definition);
    .setEntry("resistance",resistance);
    .setEntry("capacitance",capacitance);
}
genericIntegrationComputation filter() {
    .setConfiguration(filter_configuration);
    .setApplication("ngspice");
    .setArguments("-b filter.cir");
    .setTimeout(60);
}
parameter cutoff(filter.getResults().getTable("response.csv").getElementAt("cutoff"));
parameter gain(filter.getResults().getTable("response.csv").getElementAt("gain"));
parameter phase(filter.getResults().getTable("response.csv").getElementAt("phase"));
parameter rise_time(filter.getResults().getTable("stdout.txt").getElementAt("rise_time"));
// The same by formula; 3.141592653589793 is pi.
parameter hand_cutoff(1/(2*3.141592653589793*resistance*capacitance));
parameter hand_gain(-10*log10(1+(1000/hand_cutoff)^2));
parameter hand_rise_time(log(9)*resistance*capacitance);
design fast() {
    .setValue("capacitance",2.2e-08);
}
design slow() {
    .setValue("resistance",4700);
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
