#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes chain.tbk from the files in templates/ and samples/.

The project below is what is saved, except that @path@ stands for the content of a file. With
--check nothing is written, and the exit code is 1 if chain.tbk is not what would be written.
"""

import base64
import pathlib
import re
import sys

HERE = pathlib.Path(__file__).resolve().parent
TARGET = HERE / "chain.tbk"

PROJECT = """\
// A circuit gives the heat, a thermal model the temperatures. Made by make_project.py.
parameter voltage(100);
parameter capacitance(0.01);
parameter resistance(100);
parameter conductivity(237);
parameter density(2700);
parameter specific_heat(900);
parameter start_temperature(20);
genericIntegrationCommandFile discharge_cir() {
    .setContent("@templates/discharge.cir@");
    .setFileName("discharge.cir");
    .setForceWindowsLineEndings(false);
}
genericIntegrationResultsFile discharge_stdout() {
    .setContent("@samples/stdout.txt@");
    .setFileName("stdout.txt");
    .setValues([["peak_power",0,0,"peak_power",Last,"FDouble","",0,nullptr],\
["energy",0,0,"energy",Last,"FDouble","",0,nullptr]]);
    .setNumberSeparator(true);
}
genericIntegrationDefinition discharge_definition() {
    .addEntry("voltage",100.0);
    .addEntry("capacitance",0.01);
    .addEntry("resistance",100.0);
    .setFiles([discharge_cir,discharge_stdout]);
}
genericIntegrationConfiguration discharge_configuration() {
    .setDefinition(discharge_definition);
    .setEntry("voltage",voltage);
    .setEntry("capacitance",capacitance);
    .setEntry("resistance",resistance);
}
genericIntegrationComputation discharge() {
    .setConfiguration(discharge_configuration);
    .setApplication("ngspice");
    .setArguments("-b discharge.cir");
    .setTimeout(60);
}
genericIntegrationCommandFile mesh_inp() {
    .setContent("@templates/mesh.inp@");
    .setFileName("mesh.inp");
    .setForceWindowsLineEndings(false);
}
genericIntegrationCommandFile block_inp() {
    .setContent("@templates/block.inp@");
    .setFileName("block.inp");
    .setForceWindowsLineEndings(false);
}
genericIntegrationResultsFile block_dat() {
    .setContent("@samples/block.dat@");
    .setFileName("block.dat");
    .setValues([["hot_after_1s",2,1,"set HOT and time",First,"FDouble","",0,nullptr],\
["cold_after_1s",2,1,"set COLD and time",First,"FDouble","",0,nullptr],\
["hot_at_end",2,1,"set HOT and time",Last,"FDouble","",0,nullptr],\
["cold_at_end",0,1,"",Last,"FDouble","",1,4]]);
    .setNumberSeparator(true);
}
genericIntegrationDefinition block_definition() {
    .addEntry("material|conductivity",237.0);
    .addEntry("material|density",2700.0);
    .addEntry("material|specific_heat",900.0);
    .addEntry("start_temperature",20.0);
    .addEntry("node_power",25.0);
    .addEntry("Exports|pulse",inputFile("",""));
    .setFiles([block_inp,mesh_inp,block_dat]);
}
genericIntegrationConfiguration block_configuration() {
    .setDefinition(block_definition);
    .setEntry("material|conductivity",conductivity);
    .setEntry("material|density",density);
    .setEntry("material|specific_heat",specific_heat);
    .setEntry("start_temperature",start_temperature);
    .setEntry("node_power",discharge.getResults().getTable("stdout.txt").getElementAt("peak_power")/4);
    .setEntry("Exports|pulse",inputFile(discharge.getResults().getResultFileName("pulse.inp"),""));
}
genericIntegrationComputation block() {
    .setConfiguration(block_configuration);
    .setApplication("ccx");
    .setArguments("-i block");
    .setTimeout(60);
}
parameter energy(discharge.getResults().getTable("stdout.txt").getElementAt("energy"));
parameter hot_after_1s(block.getResults().getTable("block.dat").getElementAt("hot_after_1s"));
parameter cold_after_1s(block.getResults().getTable("block.dat").getElementAt("cold_after_1s"));
parameter hot_at_end(block.getResults().getTable("block.dat").getElementAt("hot_at_end"));
parameter cold_at_end(block.getResults().getTable("block.dat").getElementAt("cold_at_end"));
// The same by formula; the bar has a volume of 2e-6 m^3.
parameter hand_energy(capacitance*voltage^2/2);
parameter hand_at_end(start_temperature+hand_energy/(density*specific_heat*2e-06));
design strong() {
    .setValue("voltage",150);
}
design copper() {
    .setValue("conductivity",401);
    .setValue("density",8960);
    .setValue("specific_heat",385);
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
