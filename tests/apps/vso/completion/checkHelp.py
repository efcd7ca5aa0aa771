#!/usr/bin/env python3
"""Whether the help of each command tells all that a manual page would.

Usage: checkHelp.py PROGRAM
"""
import re
import shlex
import subprocess
import sys

# The least of what each has to say; the commands themselves are taken from the program's help.
SECTIONS = ("Examples", "Exit status")
STATUSES = ("0", "1", "2")
WIDTH = 100


def help_of(program, *command):
    run = subprocess.run([program, *command, "--help"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    if run.returncode or run.stderr:
        sys.exit(f"the help of vso {' '.join(command)} ends with {run.returncode}, saying {run.stderr!r}")
    return run.stdout


def section(text, name):
    """The lines of a section, without their indent; none if there is no such section."""
    found = re.search(rf"^{name}:\n((?:  .*\n|\n)+)", text + "\n", re.MULTILINE)
    return [line.strip() for line in found[1].splitlines() if line.strip()] if found else []


def complaints_about(command, text, options_of):
    usage = re.search(r"^Usage: (vso .*)$", text, re.MULTILINE)
    if not usage or not usage[1].startswith(f"vso {command}"):
        yield "has no line of usage"
    for name in SECTIONS:
        if not section(text, name):
            yield f"has no section {name}"
    statuses = [line.split()[0] for line in section(text, "Exit status") if re.match(r"\d ", line)]
    if statuses != list(STATUSES):
        yield f"tells of the exit statuses {statuses}"
    examples = [line for line in section(text, "Examples") if re.search(rf"\bvso {command}\b", line)]
    if not examples:
        yield "has no example with itself"
    for example in examples:
        for name in re.findall(r"(?:^|\| |&& )vso (\w+)", example):
            words = example.split(f"vso {name}", 1)[1].split("|")[0].split("&&")[0]
            known = options_of(name)
            for word in shlex.split(words, comments=True):
                option = word.split("=")[0]
                if option.startswith("--") and known and option not in known:
                    yield f"has an example with {option}, which vso {name} does not take"
    for line in text.splitlines():
        if len(line) > WIDTH:
            yield f"is wider than {WIDTH} columns: {line}"


def main():
    program = sys.argv[1]
    listed = section(help_of(program), "Subcommands")
    commands = [line.split()[0] for line in listed]
    if len(commands) < 5:
        return f"the help names too few commands: {commands}"
    helps = {command: help_of(program, command) for command in commands}

    def options_of(command):
        if command == "encode":  # each of its commands has its own
            return None
        return set(re.findall(r"^(?:-h,)?(--[a-z-]+)", "\n".join(section(helps[command], "Options")), re.MULTILINE))

    complaints = [f"the help of vso {command} {complaint}" for command, text in helps.items()
                  for complaint in complaints_about(command, text, options_of)]
    return "\n".join(complaints) or None


if __name__ == "__main__":
    sys.exit(main())
