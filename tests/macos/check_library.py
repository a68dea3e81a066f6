"""Reads the finished macOS library and compares it with what hosts and the system expect of it.

usage: check_library.py LIBRARY STUBS-FOLDER LIBSYSTEM-TBD
"""

import pathlib
import re
import subprocess
import sys

ARCHITECTURES = {"x86_64", "arm64"}
INSTALL_NAME = "/Library/lumo/lumoscreenhelper.dylib"
EXPORTS = ["_NewDisplayStream"]
MINIMUM_SYSTEM = "11.0"
SYSTEM_FOLDERS = ("/System/Library/Frameworks/", "/usr/lib/")
# What only a path of a machine that builds would hold.
MACHINE_PATHS = re.compile(rb"/(home|root|tmp|build|work|Users|opt|usr/lib/llvm)[-\w]*/")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def objdump(library, architecture, *options):
    """The lines that llvm-objdump prints, without the one that names the file."""
    out = run("llvm-objdump-19", "--macho", f"--arch={architecture}", *options, library)
    return [line.strip() for line in out.splitlines()[1:] if line.strip()]


def listed_symbols(path):
    """Every name that a list of symbols holds; class names stand there without their prefix."""
    text = pathlib.Path(path).read_text(encoding="utf-8")
    names = set(re.findall(r"[^\s,\[\]'\"]+", text))
    return names | {"_OBJC_CLASS_$_" + name for name in names}


def faults_of(library, architecture, known_symbols):
    exports = [line.split()[-1] for line in objdump(library, architecture, "--exports-trie")
               if line.startswith("0x")]
    if exports != EXPORTS:
        yield f"exports {exports}"
    name = objdump(library, architecture, "--dylib-id")[-1:]
    if name != [INSTALL_NAME]:
        yield f"install name {name}"
    for line in objdump(library, architecture, "--dylibs-used"):
        dependency = line.split(" (")[0]
        if dependency != INSTALL_NAME and not dependency.startswith(SYSTEM_FOLDERS):
            yield f"depends on {dependency}"
    headers = "\n".join(objdump(library, architecture, "--private-headers"))
    if f"minos {MINIMUM_SYSTEM}" not in headers:
        yield f"minimum system is not {MINIMUM_SYSTEM}"
    undefined = run("llvm-nm-19", f"--arch={architecture}", "--undefined-only",
                    "--just-symbol-name", library).split()
    for symbol in sorted(set(undefined) - known_symbols - {"dyld_stub_binder"}):
        yield f"needs {symbol}, which no listed library has"


def main():
    library, stubs, libsystem = sys.argv[1:]
    known = set().union(*(listed_symbols(path) for path in pathlib.Path(stubs).glob("*.tbd")),
                        listed_symbols(libsystem))
    found = set(run("llvm-lipo-19", "-archs", library).split())
    faults = [] if found == ARCHITECTURES else [f"architectures {sorted(found)}"]
    for architecture in sorted(found):
        faults += [f"{architecture}: {fault}" for fault in
                   faults_of(library, architecture, known)]
    content = pathlib.Path(library).read_bytes()
    faults += [f"holds the path {match.group().decode()}" for match in
               MACHINE_PATHS.finditer(content)]
    for fault in faults:
        print(f"{library}: {fault}")
    if not faults:
        print(f"{library}: {len(found)} architectures, as expected")
    return 1 if faults else 0


sys.exit(main())
