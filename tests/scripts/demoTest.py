#!/usr/bin/env python3
"""Whether the demo shows its mesh and leaves what it says.

Usage: demoTest.py DEMO PROGRAM
"""
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml

# The three of the mesh that have a story, and what becomes of the whole.
LINES = (
    r"qx:lamp +Router +0x4f3f .* online +30/day red ",
    r"qx:contact +Sleepy End Device +0xb6a8 .* asleep ",
    r"qx:socket +Router +0xc7b7 .* online +0/day green +400/h red +75/h yellow",
    r"12 nodes, 2 access points; 2577 frames, of which 6 broken and 1 from strangers",
)


def run(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)


def main(demo, program):
    def demand(condition, what):
        if not condition:
            sys.exit(f"{what}; the demo ended with {shown.returncode}\n{shown.stdout}{shown.stderr}")

    with tempfile.TemporaryDirectory() as scratch:
        folder = os.path.join(scratch, "a mesh")
        shown = run(demo, program, folder)
        demand(shown.returncode == 0 and not shown.stderr, "did not run through")
        for line in LINES:
            demand(re.search(f"^{line}", shown.stdout, re.MULTILINE), f"nothing like {line!r}")

        left = {name: os.path.join(folder, name) for name in ("state/", "mesh.xml", "map.svg")}
        for path in left.values():
            demand(re.search(f"^{re.escape(path)} ", shown.stdout, re.MULTILINE), f"does not tell of {path}")
        xml.parse(left["mesh.xml"])
        demand(xml.parse(left["map.svg"]).getroot().tag.endswith("svg"), "the map is no picture")
        table = run(program, "node", os.path.join(left["state/"], "mesh.state"))
        demand(table.returncode == 0 and len(table.stdout.splitlines()) == 1 + 12, f"the state is {table}")

        shown = run(demo, program, folder)
        demand(shown.returncode == 1 and "is there already" in shown.stderr, "went over what was there")
        shown = run(demo, program)
        demand(shown.returncode == 2 and "scripts/demo PROGRAM FOLDER" in shown.stderr, "ran with half of what it needs")


if __name__ == "__main__":
    main(*sys.argv[1:])
