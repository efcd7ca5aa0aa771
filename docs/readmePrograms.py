#!/usr/bin/env python3
"""The programs that the README shows: takes them out of it, and sees whether they do what it says.

Usage: readmePrograms.py extract README FOLDER     writes FOLDER/NAME.cpp and prints the names as a list of CMake
       readmePrograms.py check SOURCE PROGRAM      runs what was built of SOURCE
"""
import pathlib
import re
import signal
import socket
import subprocess
import sys

PATIENCE = 30  # seconds

# What a program prints that says nothing of it in its text.
BEGINNINGS = {
    "the-health-of-a-node": "{version_ = 1, nodeHealth_ = [{0011223344556677, "
                            "[{1, reboot.count, 2, 0, 65536, 0, reboots since manufacture}, "
                            "{1, reboot.cumulative_count, 2, 0, 65536, 1, reboots since reset}, ",
}


def extract(readme, folder):
    folder.mkdir(parents=True, exist_ok=True)
    names = []
    heading = ""
    parts = re.finditer(r"^#+ (?P<heading>[^\n]*)$|^```(?P<language>\w*)\n(?P<program>.*?)^```$", readme.read_text(),
                        re.MULTILINE | re.DOTALL)
    for part in parts:
        heading = part["heading"] or heading
        program = part["program"] or ""
        if part["language"] != "cpp" or "int main(" not in program:
            continue
        names.append(re.sub(r"\W+", "-", heading.lower()))
        file = folder / f"{names[-1]}.cpp"
        if not file.exists() or file.read_text() != program:  # so that only what has changed is compiled
            file.write_text(program)
    if not names:
        sys.exit("the README shows no program")
    if len(set(names)) != len(names):
        sys.exit(f"two programs under one heading of the README: {names}")
    print(";".join(names))


def check_server(program):
    """A server of lines that says where it listens, answers, and ends by a signal."""
    with subprocess.Popen([program], stdout=subprocess.PIPE, text=True) as server:
        try:
            listening = re.fullmatch(r"listening at ([\d.]+):(\d+)\n", server.stdout.readline())
            if not listening:
                return "does not say where it listens"
            with socket.create_connection((listening[1], int(listening[2])), timeout=PATIENCE) as client:
                lines = client.makefile("rwb")
                for line in (b"hello\r\n", b"again\r\n"):
                    lines.write(line)
                    lines.flush()
                    heard = lines.readline()
                    if heard != b"heard " + line:
                        return f"answers {line} by {heard}"
                server.send_signal(signal.SIGTERM)
                status = server.wait(PATIENCE)
                return f"ends with {status} by SIGTERM" if status else None
        finally:
            server.kill()


def check_output(name, source, program):
    """A program that ends: prints what the comments behind its output say, or what is known of it here."""
    run = subprocess.run([program], stdout=subprocess.PIPE, text=True, timeout=PATIENCE)
    if run.returncode:
        return f"ends with {run.returncode}"
    told = re.findall(r"^ *std::cout .*; +// (.*)$", source, re.MULTILINE)
    if told:
        return None if run.stdout.splitlines() == told else f"prints {run.stdout!r} in place of {told}"
    if name not in BEGINNINGS:
        return "says nowhere what it prints"
    return None if run.stdout.startswith(BEGINNINGS[name]) else f"prints {run.stdout!r}"


def main():
    _, command, *arguments = sys.argv
    first, second = map(pathlib.Path, arguments)
    if command == "extract":
        return extract(first, second)
    source = first.read_text()
    complaint = check_server(second) if "signal_set" in source else check_output(first.stem, source, second)
    return complaint and f"{second.name}: {complaint}"


if __name__ == "__main__":
    sys.exit(main())
