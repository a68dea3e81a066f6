"""Compares the manual page and the completion with the parameters that lumowatch itself lists.

usage: check_documents.py LUMOWATCH SOURCE-FOLDER
"""

import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree


def parameters_of(program):
    listing = subprocess.run([program, "-help", "xml"], check=True, capture_output=True)
    root = ElementTree.fromstring(listing.stdout)
    return {parameter.get("name") for parameter in root}


def documented(manual):
    """The names under PARAMETERS: '.BI Name= what' or '.B Name'."""
    section = manual.split(".SH PARAMETERS")[1].split(".SH")[0]
    return set(re.findall(r"^\.TP\n\.BI? (\w+)", section, re.MULTILINE))


def completed(script):
    words = script.split('compgen -W "-Display', 1)[1].split('"')[0]
    return {"Display"} | set(re.findall(r"-(\w+)", words)) - {"help"}


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    known = parameters_of(program)
    if len(known) < 2:
        sys.exit("lumowatch lists no parameters")
    faults = []
    for name, found in (("lumowatch.1", documented((folder / "lumowatch.1").read_text())),
                        ("lumowatch.bash", completed((folder / "lumowatch.bash").read_text()))):
        faults += [f"{name}: {parameter} is missing" for parameter in sorted(known - found)]
        faults += [f"{name}: there is no {parameter}" for parameter in sorted(found - known)]
    print("\n".join(faults) or f"{len(known)} parameters, as documented")
    return 1 if faults else 0


sys.exit(main())
