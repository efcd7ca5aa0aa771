#!/usr/bin/env python3
"""Has a real StatsD server, which knows nothing of this library, say which gauges the library's metrics set.

    throughStatsd.py SENDER FOLDER

SENDER is the built `statsd_sender`, FOLDER where `scripts/bootstrap --all` has put the server. The server listens on the
loopback alone, at ports of its own; the gauges are read back over its management port.

Exits with 77 where node or the server is not installed.
"""
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time

SKIPPED = 77
PATIENCE_S = 30

NAME = "node1"
NODE = "0011223344556677"

# A report attributes command of the diagnostics cluster: pairs of a name and a value, the third the other way about.
REPORT = (
    "18 01 0a"
    " 1e01 42 04 74656d70"  # name: temp
    " 1f01 20 15"  # unsigned 8 bits: 21
    " 1e01 42 04 72737369"  # name: rssi
    " 1f01 42 03 2d3731"  # text: -71
    " 1f01 42 06 2d332e323530"  # text: -3.250
    " 1e01 42 0a 747866616c6c2e646966"  # name: txfall.dif
    " 1e01 42 10 610a666f726765643a317c670a623a31"  # name: a, a forged line, b:1
    " 1f01 20 05"  # unsigned 8 bits: 5
    " 1e01 42 04 6e6f7465"  # name: note
    " 1f01 42 0e 317c670a666f726765643a317c67"  # text: 1|g, a forged line
).replace(" ", "")

JSON = json.dumps({
    "uptime": 70000, "offset": -5, "load": {"one": 0.25, "five": -1.5}, "ready": True, "failed": False, "none": None,
    "ports": [1, -2], "note": "1|g\nforged:1|g", "a\nforged:1|g": 6, "large": 1e300,
})

UNDER = f"vessori2.v2.vessori2.{socket.gethostname()}.{NAME}.{NODE}.zcl_diag."
JSON_UNDER = f"vessori2.v2.{NAME}.json."
EXPECTED = {
    UNDER + "temp": 21, UNDER + "rssi": -71, UNDER + "txfall.dif": -3.25, UNDER + "a_forged_1_g_b_1": 5,
    JSON_UNDER + "uptime": 70000, JSON_UNDER + "offset": -5, JSON_UNDER + "load.one": 0.25,
    JSON_UNDER + "load.five": -1.5, JSON_UNDER + "ready": 1, JSON_UNDER + "failed": 0, JSON_UNDER + "ports.0": 1,
    JSON_UNDER + "ports.1": -2, JSON_UNDER + "a_forged_1_g": 6, JSON_UNDER + "large": 1e300,
}


def free_port(kind):
    with socket.socket(socket.AF_INET, kind) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Server:
    def __init__(self, node, folder, home):
        self.port = free_port(socket.SOCK_DGRAM)
        self.management_port = free_port(socket.SOCK_STREAM)
        config = os.path.join(home, "config.js")
        with open(config, "w") as file:
            # One flush would forget the counts; it stays away for the length of the test.
            file.write(f"""{{
              address: "127.0.0.1", port: {self.port},
              mgmt_address: "127.0.0.1", mgmt_port: {self.management_port},
              backends: ["./backends/console"], flushInterval: 3600000
            }}""")
        self.output = open(os.path.join(home, "output"), "w+")
        self.process = subprocess.Popen([node, os.path.join(folder, "stats.js"), config], stdout=self.output,
                                        stderr=subprocess.STDOUT, cwd=home)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.output.close()

    def numbers(self, command):
        """What a command of the management port shows, or None while nobody listens there."""
        if self.process.poll() is not None:
            self.output.seek(0)
            raise SystemExit(f"the server ended:\n{self.output.read()}")
        text = ""
        try:
            with socket.create_connection(("127.0.0.1", self.management_port), timeout=PATIENCE_S) as connection:
                connection.sendall(command.encode() + b"\n")
                while not text.endswith("END\n\n"):
                    received = connection.recv(65536)
                    if not received:
                        return None
                    text += received.decode()
        except ConnectionRefusedError:
            return None
        return {name: float(value) for name, value in re.findall(r"^\W*'?([^'\n]+?)'?: ([-+.e0-9]+)\b", text, re.M)}

    def wait_for(self, names, again=lambda: None):
        """The gauges once they have all the names, or as they are when patience ends."""
        end = time.monotonic() + PATIENCE_S
        while True:
            again()
            gauges = self.numbers("gauges")
            if time.monotonic() > end or (gauges is not None and names <= gauges.keys()):
                return gauges or {}

    def wait_until_it_listens(self):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as prober:
            self.wait_for({"probe"}, lambda: prober.sendto(b"probe:1|g", ("127.0.0.1", self.port)))


def differences(gauges, counts):
    for name in sorted(EXPECTED.keys() | gauges.keys()):
        if gauges.get(name) != EXPECTED.get(name):
            yield f"{name} is {gauges.get(name)} in place of {EXPECTED.get(name)}"
    if counts.get("statsd.bad_lines_seen") != 0:
        yield f"lines the server did not understand: {counts.get('statsd.bad_lines_seen')}"


def main():
    sender, folder = sys.argv[1], os.path.join(sys.argv[2], "node_modules", "statsd")
    node = shutil.which("node") or shutil.which("nodejs")
    if node is None or not os.path.isdir(folder):
        print("skipped: node or the StatsD server is not installed (scripts/bootstrap --all)")
        return SKIPPED

    with tempfile.TemporaryDirectory() as home, Server(node, folder, home) as server:
        server.wait_until_it_listens()
        # Twice: a gauge is set and not added to, below zero too.
        for _ in range(2):
            subprocess.run([sender, str(server.port), NAME, NODE, REPORT, JSON], check=True, stdout=sys.stderr)
        gauges = server.wait_for(set(EXPECTED))
        counts = server.numbers("counters")

    # The test's own, and the server's about itself.
    gauges = {name: value for name, value in gauges.items() if name != "probe" and not name.startswith("statsd.")}
    failures = list(differences(gauges, counts))
    print("\n".join(failures + [f"{len(gauges)} gauges, {len(failures)} differences"]))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
