#!/usr/bin/env python3
"""Makes the seeds of a fuzz target: one file for each input, named after its content.

The folder of seeds holds inputs as they stand and, in files that end in .hex, inputs as hexadecimal digits; there,
blanks and whatever follows a # in a line count for nothing. If the environment variable VSO_FRAMES_DIR names a folder,
the "hex" of every line of its .jsonl files is an input too. The output folder is emptied first.
"""

import argparse
import hashlib
import json
import os
import pathlib
import shutil


def from_hex_file(text):
    """The bytes that a .hex file stands for."""
    return bytes.fromhex("".join(line.split("#")[0] for line in text.splitlines()))


def own_seeds(folder):
    for file in sorted(folder.iterdir()):
        yield from_hex_file(file.read_text()) if file.suffix == ".hex" else file.read_bytes()


def recorded_seeds(folder, form):
    """The frames of a folder, as their bytes or as the text of their digits."""
    for file in sorted(folder.glob("*.jsonl")):
        for line in file.read_text().splitlines():
            digits = json.loads(line)["hex"]
            yield bytes.fromhex(digits) if form == "bytes" else digits.encode()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--as", dest="form", choices=("bytes", "text"), default="bytes", help="form of recorded frames")
    parser.add_argument("seeds", type=pathlib.Path, help="folder of seeds")
    parser.add_argument("output", type=pathlib.Path, help="folder to write to")
    arguments = parser.parse_args()

    inputs = list(own_seeds(arguments.seeds))
    frames = os.environ.get("VSO_FRAMES_DIR")
    if frames:
        inputs += recorded_seeds(pathlib.Path(frames), arguments.form)
    if not inputs:
        parser.error(f"no seeds in {arguments.seeds}")

    shutil.rmtree(arguments.output, ignore_errors=True)
    arguments.output.mkdir(parents=True)
    for data in inputs:
        (arguments.output / hashlib.sha1(data).hexdigest()).write_bytes(data)
    print(f"{len(set(inputs))} seeds in {arguments.output}")


if __name__ == "__main__":
    main()
