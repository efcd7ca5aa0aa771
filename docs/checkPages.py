#!/usr/bin/env python3
"""Holds the pages against the tree: what they show, where their links lead, and what they say of the folders.

Usage: checkPages.py ROOT
"""
import html
import pathlib
import re
import sys

BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
LINK = re.compile(r"(?<!`)\[[^\]]*\]\(([^)\s]+)\)")


def words(text):
    return re.findall(r"[\w:]+", text)


def without_blocks(text):
    return BLOCK.sub("", text)


def links(text):
    """Where the links of a page lead, as they stand there."""
    return LINK.findall(without_blocks(text))


def anchor(heading):
    """The name by which a heading is linked to."""
    kept = re.sub(r"[^\w\- ]", "", heading.strip().lower())
    return kept.replace(" ", "-")


def anchors(text):
    return {anchor(heading) for heading in re.findall(r"^#+ (.*)$", without_blocks(text), re.MULTILINE)}


def broken_links(page):
    text = page.read_text()
    for target in links(text):
        if re.match(r"[a-z]+:", target):
            continue
        path, _, part = target.partition("#")
        file = (page.parent / path).resolve() if path else page
        if not file.exists():
            yield f"{page}: the link to {target} leads nowhere"
        elif part and file.suffix == ".md" and part not in anchors(file.read_text()):
            yield f"{page}: no heading of {file.name} is called {part}"


def wrong_programs(docs):
    """The programs that pages show, against the files that are compiled; and what the pages say that they print."""
    examples = docs / "examples"
    shown = set()
    for page in sorted(docs.glob("*.md")):
        blocks = BLOCK.findall(page.read_text())
        programs = [i for i, (language, text) in enumerate(blocks) if language == "cpp" and "int main(" in text]
        if not programs:
            continue
        shown.add(page.stem)
        program, output = examples / f"{page.stem}.cpp", examples / f"{page.stem}.txt"
        if len(programs) > 1:
            yield f"{page}: shows {len(programs)} programs, and only one is tested"
        if not program.exists() or not output.exists():
            yield f"{page}: its program has no {program.name} or no {output.name} in {examples}"
            continue
        if blocks[programs[0]][1] != program.read_text():
            yield f"{page}: its program is not that of {program}"
        if ("", output.read_text()) not in blocks[programs[0] + 1:programs[0] + 2]:
            yield f"{page}: behind its program there is not the output of {output}"
    for program in sorted(examples.glob("*.cpp")):
        if program.stem not in shown:
            yield f"{program}: no page shows it"


def pages_without_a_link(root):
    docs = root / "docs"
    indexes = [root / "README.md", docs / "README.md"]
    linked = {(index.parent / target.partition("#")[0]).resolve()
              for index in indexes for target in links(index.read_text())}
    for page in sorted(docs.glob("*.md")):
        if page.resolve() not in linked:
            yield f"{page}: neither of the two READMEs has a link to it"


def old_picture(docs):
    """The picture has to have been made from its source: the same nodes, edges and words."""
    source = (docs / "architecture.dot").read_text()
    picture = (docs / "architecture.svg").read_text()
    declared = set(re.findall(r"^ *(\w+) \[", source, re.MULTILINE)) - {"node", "edge", "graph"}
    drawn = set(re.findall(r'class="node">\s*<title>(\w+)</title>', picture))
    if declared != drawn:
        yield f"architecture.svg: differs from architecture.dot in the nodes {sorted(declared ^ drawn)}"
    arrows = set(re.findall(r"^ *(\w+) -> (\w+)", source, re.MULTILINE))
    drawn_arrows = set(re.findall(r"<title>(\w+)&#45;&gt;(\w+)</title>", picture))
    if arrows != drawn_arrows:
        yield f"architecture.svg: differs from architecture.dot in the arrows {sorted(arrows ^ drawn_arrows)}"
    labels = " ".join(re.findall(r'label="([^"]*)"', source)).replace("\\n", " ")
    texts = " ".join(re.findall(r"<text[^>]*>([^<]*)</text>", picture))
    if sorted(words(labels)) != sorted(words(html.unescape(texts))):
        yield "architecture.svg: says other words than architecture.dot"


def wrong_includes(root):
    """The table of architecture.md against what the sources include."""
    table = (root / "docs/architecture.md").read_text()
    rows = re.findall(r"^\| `((?:vso|platform)/\w+)/` \| ([^|]*)\|", table, re.MULTILINE)
    allowed = {folder: set(re.findall(r"`(\w+)`", names)) for folder, names in rows}
    above = set()
    for folder, names in allowed.items():
        for name in sorted(names - above):
            yield f"architecture.md: lets {folder} include {name}, which does not stand above it"
        above.add(pathlib.Path(folder).name)
    folders = {str(f.relative_to(root)) for top in ("vso", "platform") for f in (root / top).iterdir() if f.is_dir()}
    for folder in sorted(folders ^ allowed.keys()):
        yield f"architecture.md: the table and the tree differ in {folder}"
    for folder in sorted(folders & allowed.keys()):
        included = set()
        for file in (root / folder).glob("*"):
            if file.suffix in (".h", ".cpp"):
                included |= set(re.findall(r'^#include "(?:vso/)?(\w+)/', file.read_text(), re.MULTILINE))
        for name in sorted(included - {pathlib.Path(folder).name, "proto"} - allowed[folder]):
            yield f"{folder}: includes {name}, which the table of architecture.md does not let it"


def main():
    root = pathlib.Path(sys.argv[1])
    docs = root / "docs"
    complaints = [*wrong_programs(docs), *pages_without_a_link(root), *old_picture(docs), *wrong_includes(root)]
    for page in [root / "README.md", *sorted(docs.glob("*.md"))]:
        complaints += broken_links(page)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
