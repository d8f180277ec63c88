#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes third-party.md, which says what the programs contain, the folder licenses with the texts, and
components.cdx.json, which says the same for scanners.

    notices.py standin|maker PACKAGE VERSION PREFIX DOCUMENT FOLDER

Nothing is retyped: versions, names and texts come from the packages that the programs were built with, and from
what is in PREFIX, the folder of the libraries: `sources`, a line `package=version` for each, and `licenses`, from
Qt's source its descriptions of the code of others (qt_attribution.json) and their licences.
"""

import json
import sys
from pathlib import Path
from string import Template
from urllib.parse import quote

sys.path.append(str(Path(__file__).parents[1]))
import components  # noqa: E402

# In Qt's source, but not in what is built for Windows.
ELSEWHERE = {"forkfd", "qeventdispatcher_cf", "android-gradle-wrapper"}


def source_of(package):
    return components.query("${source:Package}=${source:Version}", package)


def compiler():
    """The source of GCC itself: the compiler's own package holds scripts only."""
    name, version = components.query("${Built-Using}", "gcc-mingw-w64-x86-64-posix-runtime").split(" ", 1)
    return f"{name}={version.strip('(= )')}"


def archived(source):
    return "https://snapshot.debian.org/package/{}/{}/".format(*map(quote, source.split("=")))


def copy(source, target):
    """A text with the line ends of Windows."""
    target.parent.mkdir(parents=True, exist_ok=True)
    target.write_text(source.read_text(encoding="utf-8"), encoding="utf-8", newline="\r\n")


def cell(text):
    return " ".join(text.split()).replace("|", "\\|").replace("<", "&lt;")


def parts_of_qt(attributions):
    """The descriptions of the parts of Qt Core that are others' work, each with the file that it is from."""
    for file in sorted(attributions.glob("**/qt_attribution.json")):
        parts = json.loads(file.read_text(encoding="utf-8"), strict=False)  # texts run over lines
        for part in parts if isinstance(parts, list) else [parts]:
            if part.get("QDocModule") == "qtcore" and part["Id"] not in ELSEWHERE:
                yield file, part


def row_of(file, part, licenses):
    """A row for a part of Qt, whose licence is copied."""
    license_name = cell(part.get("LicenseId") or part["License"])
    if "LicenseFile" in part:
        name = f"qt6-base/{part['Id']}.txt"
        copy(file.parent / part["LicenseFile"], licenses / name)
        license_name = f"[{license_name}](licenses/{name})"
    return f"| {cell(part['Name'])} | {license_name} | {cell(part['Copyright'])} |"


def component_of(part):
    """A part of Qt as the list for scanners names it."""
    component = components.library(f"qt6-base/{part['Id']}", name=part["Name"])
    if "Version" in part:
        component["version"] = part["Version"]
    if "LicenseId" in part:
        component["licenses"] = [{"expression": part["LicenseId"]}]
    return component


def write_components(curves, package, version, sources, parts, file):
    """Writes the list for scanners: the sources, with the parts of Qt in Qt."""
    listed = [components.debian_component(name, number, "source", name) if number != "own"
              else components.library(name)  # the user's Qt, of which Debian knows nothing
              for name, number in (source.split("=") for source in sources)]
    next(component for component in listed if component["name"] == "qt6-base")["components"] = parts
    if curves == "maker":
        listed += components.maker_components()
    components.write_list(file, package, version, listed,
                          {package: {component["name"] for component in listed}})


def main(curves, package, version, prefix, document, folder):
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
    named_sources = list(named.values())
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
        named_sources.append(eigen)
        row = (f"| Eigen | [MPL-2.0](licenses/MPL-2.0.txt); [copyright](licenses/eigen3.txt) "
               f"| [{eigen}]({archived(eigen)}) |")
        relinking = "The archive and the sources named above are all that both programs are made of."
    else:
        row = "| the maker's libraries `core` and `zucore` | the maker's own terms | |"
        relinking = ("The programs are linked to the maker's libraries as well. Who gives you this package has to "
                     "give you these, too, if you ask for them to link the programs to your own Qt.")

    parts = list(parts_of_qt(prefix / "licenses"))
    if not parts:
        sys.exit(f"{prefix}/licenses holds no descriptions of what Qt contains: run scripts/windows-libraries")
    template = Template((here / "third-party.md").read_text(encoding="utf-8"))
    Path(document).write_text(template.substitute(
        named,
        **{f"{name}_source": archived(source) for name, source in named.items()},
        version=version,
        curves_row=row,
        relinking=relinking,
        qt_parts="\n".join(row_of(file, part, licenses) for file, part in parts),
        curves="\n" + (here / f"third-party-{curves}.md").read_text(encoding="utf-8")), encoding="utf-8")
    write_components(curves, package, version, named_sources, [component_of(part) for _, part in parts],
                     Path(folder) / "components.cdx.json")


main(*sys.argv[1:])
