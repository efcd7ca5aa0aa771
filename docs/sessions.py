#!/usr/bin/env python3
"""Holds the sessions that pages show (blocks of `console`) against what the program really says.

Usage: sessions.py PROGRAM EXAMPLES PAGE...          compares
       sessions.py --write PROGRAM EXAMPLES PAGE...  puts into the pages what the program says; look at it afterwards

In a block, a command stands behind "$ ", and goes on in lines behind "> "; all else is what it prints, to either
stream.
A line "..." stands for any lines, "..." at the end of a line for any rest of it. All sessions of a page are one, in a
shell in an empty folder but for the examples and the program, at the places where the project has them. A command that
ends with " &" runs on. The port 7410 becomes one that is free.
"""
import contextlib
import os
import pathlib
import re
import select
import socket
import subprocess
import sys
import tempfile
import time

BLOCK = re.compile(r"^```console\n(.*?)^```$", re.MULTILINE | re.DOTALL)
PATIENCE = 60  # seconds
PORT = "7410"
END = re.compile(r"\x01(\d+)\x01\n")


def steps(block):
    """Pairs of a command and the lines that it is said to print."""
    found = []
    for line in block.splitlines():
        if line.startswith("$ "):
            found.append((line[2:], []))
        elif line.startswith("> ") and found and not found[-1][1]:
            found[-1] = (found[-1][0] + "\n" + line[2:], [])
        elif found:
            found[-1][1].append(line)
        else:
            sys.exit(f"a session begins with {line!r}, which is no command")
    return found


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return str(server.getsockname()[1])


class Shell:
    def __init__(self, program, examples, folder):
        self.port = free_port()
        tree = pathlib.Path(folder)
        for link, target in (("build/demo/apps/vso/vso", program), ("apps/vso/examples", examples),
                             ("examples", examples), ("bin/vso", program)):
            (tree / link).parent.mkdir(parents=True, exist_ok=True)
            (tree / link).symlink_to(target.resolve())
        environment = dict(os.environ, PATH=f"{tree}/bin:{os.environ['PATH']}", NO_COLOR="1", LC_ALL="C",
                           TZ="UTC")  # health is about hours and days, which may be an hour shorter or longer
        self.bash = subprocess.Popen(["bash", "--norc"], cwd=folder, env=environment, stdin=subprocess.PIPE,
                                     stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
        self.unread = ""

    def run(self, command, lines):
        """What the command prints. One that runs on is waited for until it has printed so many lines."""
        self.bash.stdin.write((re.sub(rf"(?<=[:/]){PORT}\b", self.port, command) + "\nprintf '\\1%d\\1\\n' $?\n").encode())
        self.bash.stdin.flush()
        ending = None
        deadline = time.monotonic() + PATIENCE
        while True:
            found = END.search(self.unread)
            if found:
                ending = found[1]
                self.unread = self.unread[:found.start()] + self.unread[found.end():]
            if ending and (not command.endswith(" &") or self.unread.count("\n") >= lines):
                break
            if not select.select([self.bash.stdout], [], [], max(0, deadline - time.monotonic()))[0]:
                sys.exit(f"after {PATIENCE} s there is no end of {command!r}, which says {self.unread!r}")
            piece = os.read(self.bash.stdout.fileno(), 65536)
            if not piece:
                sys.exit(f"the shell ended at {command!r}, which says {self.unread!r}")
            self.unread += piece.decode(errors="replace")
        said, self.unread = self.unread, ""
        return re.sub(rf"(?<=[:/]){self.port}\b", PORT, said.replace("\r\n", "\n")).splitlines()

    def end(self):
        self.bash.stdin.close()
        with contextlib.suppress(ProcessLookupError):  # with all that still runs in it
            os.killpg(self.bash.pid, 9)
        self.bash.stdout.close()
        self.bash.wait()


def pattern(lines):
    parts = []
    for line in lines:
        if line == "...":
            parts.append(r"(?:.*\n)*")
        elif line.endswith("..."):
            parts.append(re.escape(line[:-3]) + r".*\n")
        else:
            parts.append(re.escape(line) + r"\n")
    return re.compile("".join(parts))


def differences(shell, block):
    for command, expected in steps(block):
        said = shell.run(command, len(expected))
        if not pattern(expected).fullmatch("".join(line + "\n" for line in said)):
            yield f"$ {command}\n--- in the page\n" + "\n".join(expected) + "\n--- in truth\n" + "\n".join(said)


def rewritten(shell, block):
    text = ""
    for command, expected in steps(block):
        said = shell.run(command, len(expected))
        kept = pattern(expected).fullmatch("".join(line + "\n" for line in said))
        text += "".join(line + "\n" for line in ["$ " + command.replace("\n", "\n> "), *(expected if kept else said)])
    return text


def drawn(svg):
    """What a picture by Graphviz shows, wherever it puts it: names, words, and the colours of the nodes."""
    nodes = re.findall(r'class="node">\s*<title>([^<]*)</title>\s*<\w+ fill="([^"]*)"', svg)
    titles, texts = re.findall(r"<title>([^<]*)</title>", svg), re.findall(r">([^<\n]+)</text>", svg)
    return sorted(nodes), sorted(titles), sorted(texts)


def old_pictures(page, folder):
    """Pictures of the page that have been drawn in its sessions, against those that it shows."""
    for name in re.findall(r"!\[[^\]]*\]\(([\w-]+\.svg)\)", page.read_text()):
        picture = pathlib.Path(folder) / name
        if picture.exists() and drawn(picture.read_text()) != drawn((page.parent / name).read_text()):
            yield f"{name} is not what its session draws"


def main():
    write = sys.argv[1] == "--write"
    program, examples, *pages = map(pathlib.Path, sys.argv[2 if write else 1:])
    complaints = []
    for page in pages:
        text = page.read_text()
        if not BLOCK.search(text):
            complaints.append(f"{page}: shows no session")
        with tempfile.TemporaryDirectory() as folder:
            shell = Shell(program, examples, folder)
            try:
                if write:
                    page.write_text(BLOCK.sub(lambda found: f"```console\n{rewritten(shell, found[1])}```", text))
                else:
                    for block in BLOCK.findall(text):
                        complaints += (f"{page}: {difference}" for difference in differences(shell, block))
                    complaints += (f"{page}: {picture}" for picture in old_pictures(page, folder))
            finally:
                shell.end()
    return "\n".join(complaints) or None


if __name__ == "__main__":
    sys.exit(main())
