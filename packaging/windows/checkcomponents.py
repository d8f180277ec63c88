#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Compares the list of components in the folder for Windows with what people read.

    checkcomponents.py FOLDER DOCUMENT

The page third-party.html in the folder must name the same sources, and the tables of DOCUMENT, components.md, their
versions. Prints what is wrong, and fails then.
"""

import json
import re
import sys
from pathlib import Path


def cells_of(document, name):
    """The cells of the rows that are about a name."""
    lines = document.read_text(encoding="utf-8").splitlines()
    return [cell for line in lines if line.startswith("| ") and f"`{name}`" in line
            for cell in line.strip("| ").split(" | ")]


def faults(folder, document):
    listed = json.loads((folder / "components.cdx.json").read_text(encoding="utf-8"))
    page = (folder / "third-party.html").read_text(encoding="utf-8")
    for key in ("bomFormat", "specVersion", "serialNumber", "metadata", "components", "dependencies"):
        if key not in listed:
            yield f"the list has no {key}"

    named = set(re.findall(r">([^<>=]+=[^<>=]+)</a>", page))  # links to sources, such as sqlite3=3.40.1-2
    sources = {f"{part['name']}={part['version']}" for part in listed["components"] if "version" in part}
    for source in sorted(named ^ sources):
        yield f"only one of the list and third-party.html has {source}"
    for source in sorted(sources):
        name, version = source.split("=")
        if re.sub(r"[+.]dfsg\d*|-[^-]*$", "", version) not in cells_of(document, name):
            yield f"{document} does not have {source}"

    qt = next(part for part in listed["components"] if part["name"] == "qt6-base")
    for part in qt["components"]:
        name = part["bom-ref"].split("/")[1]
        version = part.get("version", "").split("+")[0]
        cells = cells_of(document, name)
        if cells and f"`{name}` {version}" not in cells and f"`{name}`, of no version" not in cells:
            yield f"{document} does not have {name} {version}"


def main(folder, document):
    sys.exit("\n".join(faults(Path(folder), Path(document))) or None)


main(*sys.argv[1:])
