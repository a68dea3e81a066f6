"""Compares sizes, offsets of members and the order of virtual operations with a table.

The compiler is asked for the layouts of every class that the probe includes; layouts.txt lists what
hosts and the system's other parts rely on, for 32 and for 64 bits.

usage: check_layouts.py TABLE PROBE 32|64 COMPILER-COMMAND...
       check_layouts.py --print CLASS... -- PROBE COMPILER-COMMAND...    (one side of new lines)
"""

import re
import subprocess
import sys

DUMPS = ["-Xclang", "-fdump-record-layouts-complete", "-Xclang", "-fdump-vtable-layouts",
         "-Wno-everything", "-S", "-o", "/dev/null"]
RECORD_LINE = re.compile(r"^ *(\d+)(?::[\d-]+)? \|(\s+)(.*)$")
SIZE_LINE = re.compile(r"^ +\| \[sizeof=(\d+)")
VTABLE_START = re.compile(r"^VTable indices for '(.*)' \(")
VTABLE_LINE = re.compile(r"^ *(\d+) \| (.*)$")


class Layout:
    """What the compiler says of one class."""

    def __init__(self):
        self.size = None
        self.members = []  # (name, offset)
        self.slots = {}  # slot -> operation


def member_name(text):
    """'const char * name' -> 'name'; bases and the vtable pointer keep a name of their own."""
    if text.endswith("vtable pointer)"):
        return None
    base = re.match(r"(?:class|struct) (.*) \((?:primary )?base\)$", text)
    return "base " + base.group(1) if base else text.split()[-1]


def operation_name(text):
    """'int rdr::InStream::pos() const' -> 'pos'; a destructor keeps which form it is."""
    form = re.search(r"~\w+\(\).* \[(complete|deleting)\]", text)
    if form:
        return f"destructor({form.group(1)})"
    return re.search(r"(\w+|operator\S+)\(", text).group(1)


def parse_records(lines, layouts):
    layout = None
    for line in lines:
        if line.startswith("*** Dumping AST Record Layout"):
            layout = "next"
            continue
        size = SIZE_LINE.match(line)
        if size and isinstance(layout, Layout):
            layout.size = int(size.group(1))
            layout = None
        found = RECORD_LINE.match(line)
        if not found or layout is None:
            continue
        offset, indent, text = int(found.group(1)), len(found.group(2)), found.group(3)
        if layout == "next":
            name = re.sub(r"^(class|struct|union) ", "", text).removesuffix(" (empty)")
            layout = layouts.setdefault(name, Layout())
            layout.members = []
        elif indent == 3 and member_name(text):
            layout.members.append((member_name(text), offset))


def parse_vtables(lines, layouts):
    layout = None
    for line in lines:
        start = VTABLE_START.match(line)
        if start:
            layout = layouts.setdefault(start.group(1), Layout())
            continue
        found = VTABLE_LINE.match(line)
        if layout is not None and found:
            layout.slots[int(found.group(1))] = operation_name(found.group(2))
        elif not line.strip():
            layout = None


def layouts_of(probe, command):
    result = subprocess.run([*command, *DUMPS, probe], capture_output=True, text=True)
    if result.returncode != 0:
        sys.exit(result.stderr)
    layouts = {}
    parse_records(result.stdout.splitlines(), layouts)
    parse_vtables(result.stdout.splitlines(), layouts)
    return layouts


def faults_of(table, column, layouts):
    """The table: 'record NAME SIZE32 SIZE64', then 'OFFSET32 OFFSET64 MEMBER' or 'slot N NAME'."""
    layout, name, position = None, None, 0
    for number, line in enumerate(open(table, encoding="utf-8"), 1):
        words = line.split("#")[0].split()
        if not words:
            continue
        where = f"{table}:{number}: {name}"
        if words[0] == "record":
            name, position = words[1], 0
            layout = layouts.get(name)
            if layout is None or layout.size is None:
                yield f"{table}:{number}: the compiler knows no {name}"
                layout = Layout()
            elif layout.size != int(words[2 + column]):
                yield f"{table}:{number}: {name} has {layout.size} bytes"
        elif words[0] == "slot":
            found = layout.slots.get(int(words[1]))
            if found != words[2]:
                yield f"{where}: slot {words[1]} is {found}"
        else:
            expected = (" ".join(words[2:]), int(words[column]))
            found = layout.members[position] if position < len(layout.members) else None
            position += 1
            if found != expected:
                yield f"{where}: {found} stands where {expected} should"


def print_layouts(names, layouts):
    for name in names:
        layout = layouts.get(name, Layout())
        print(f"record {name} {layout.size}")
        for member, offset in layout.members:
            print(f"    {offset} {member}")
        for slot, operation in sorted(layout.slots.items()):
            print(f"    slot {slot} {operation}")


def main():
    if sys.argv[1] == "--print":
        split = sys.argv.index("--")
        print_layouts(sys.argv[2:split], layouts_of(sys.argv[split + 1], sys.argv[split + 2:]))
        return 0
    table, probe, bits, *command = sys.argv[1:]
    faults = list(faults_of(table, {"32": 0, "64": 1}[bits], layouts_of(probe, command)))
    print("\n".join(faults) if faults else f"{table}: as expected with {bits} bits")
    return 1 if faults else 0


sys.exit(main())
