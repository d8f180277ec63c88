#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes third-party.md, which says what the programs contain, and the folder licenses with the texts.

    notices.py standin|maker VERSION PREFIX DOCUMENT FOLDER

Nothing is retyped: versions, names and texts come from the packages that the programs were built with, and from
what is in PREFIX, the folder of the libraries: `sources`, a line `package=version` for each, and `licenses`, from
Qt's source its descriptions of the code of others (qt_attribution.json) and their licences.
"""

import json
import subprocess
import sys
from pathlib import Path
from string import Template
from urllib.parse import quote

# In Qt's source, but not in what is built for Windows.
ELSEWHERE = {"forkfd", "qeventdispatcher_cf", "android-gradle-wrapper"}


def query(package, field):
    return subprocess.run(["dpkg-query", "--show", "--showformat", field, package], check=True,
                          capture_output=True, text=True).stdout


def source_of(package):
    return query(package, "${source:Package}=${source:Version}")


def compiler():
    """The source of GCC itself: the compiler's own package holds scripts only."""
    name, version = query("gcc-mingw-w64-x86-64-posix-runtime", "${Built-Using}").split(" ", 1)
    return f"{name}={version.strip('(= )')}"


def archived(source):
    return "https://snapshot.debian.org/package/{}/{}/".format(*map(quote, source.split("=")))


def copy(source, target):
    """A text with the line ends of Windows."""
    target.parent.mkdir(parents=True, exist_ok=True)
    target.write_text(source.read_text(encoding="utf-8"), encoding="utf-8", newline="\r\n")


def cell(text):
    return " ".join(text.split()).replace("|", "\\|").replace("<", "&lt;")


def parts_of_qt(attributions, licenses):
    """A row for each part of Qt Core that is others' work, whose licence is copied."""
    for file in sorted(attributions.glob("**/qt_attribution.json")):
        parts = json.loads(file.read_text(encoding="utf-8"), strict=False)  # texts run over lines
        for part in parts if isinstance(parts, list) else [parts]:
            if part.get("QDocModule") != "qtcore" or part["Id"] in ELSEWHERE:
                continue
            license_name = cell(part.get("LicenseId") or part["License"])
            if "LicenseFile" in part:
                name = f"qt6-base/{part['Id']}.txt"
                copy(file.parent / part["LicenseFile"], licenses / name)
                license_name = f"[{license_name}](licenses/{name})"
            yield f"| {cell(part['Name'])} | {license_name} | {cell(part['Copyright'])} |"


def main(curves, version, prefix, document, folder):
    prefix = Path(prefix)
    licenses = Path(folder) / "licenses"
    here = Path(__file__).parent
    common = Path("/usr/share/common-licenses")
    packages = Path("/usr/share/doc")

    lines = (prefix / "sources").read_text(encoding="utf-8").split()
    sources = {line.split("=")[0]: line for line in lines}
    named = {
        "qt": sources["qt6-base"],
        "sqlite": sources["sqlite3"],
        "gcc": compiler(),
        "mingw": source_of("mingw-w64-x86-64-dev"),
    }
    copy(common / "LGPL-3", licenses / "LGPL-3.txt")
    copy(common / "GPL-3", licenses / "GPL-3.txt")
    copy(packages / "qt6-base-dev/copyright", licenses / "qt6-base.txt")
    copy(packages / "libsqlite3-dev/copyright", licenses / "sqlite3.txt")
    copy(packages / "gcc-mingw-w64-base/copyright", licenses / "gcc.txt")
    copy(packages / "mingw-w64-common/copyright", licenses / "mingw-w64.txt")

    if curves == "standin":
        eigen = source_of("libeigen3-dev")
        copy(common / "MPL-2.0", licenses / "MPL-2.0.txt")
        copy(packages / "libeigen3-dev/copyright", licenses / "eigen3.txt")
        row = (f"| Eigen | [MPL-2.0](licenses/MPL-2.0.txt); [copyright](licenses/eigen3.txt) "
               f"| [{eigen}]({archived(eigen)}) |")
        relinking = "The archive and the sources named above are all that both programs are made of."
    else:
        row = "| the maker's libraries `core` and `zucore` | the maker's own terms | |"
        relinking = ("The programs are linked to the maker's libraries as well. Who gives you this package has to "
                     "give you these, too, if you ask for them to link the programs to your own Qt.")

    rows = list(parts_of_qt(prefix / "licenses", licenses))
    if not rows:
        sys.exit(f"{prefix}/licenses holds no descriptions of what Qt contains: run scripts/windows-libraries")
    template = Template((here / "third-party.md").read_text(encoding="utf-8"))
    Path(document).write_text(template.substitute(
        named,
        **{f"{name}_source": archived(source) for name, source in named.items()},
        version=version,
        curves_row=row,
        relinking=relinking,
        qt_parts="\n".join(rows),
        curves="\n" + (here / f"third-party-{curves}.md").read_text(encoding="utf-8")), encoding="utf-8")


main(*sys.argv[1:])
