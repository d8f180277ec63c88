#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes the list of the libraries that the programs of a Debian package use, in the format CycloneDX 1.5.

    components.py standin|maker PACKAGE VERSION LIST PROGRAM…

Names and versions are those of the packages from which this machine takes the libraries. The list has no time and no
random number: the same libraries make the same bytes. windows/notices.py makes that of the archive for Windows, by
the functions below.
"""

import json
import platform
import re
import subprocess
import sys
import uuid
from pathlib import Path
from urllib.parse import quote

# The main licence of each main library, by its source. The packages name all of them, but not in one form.
LICENCES = {
    "eigen3": "MPL-2.0",
    "gcc-12": "GPL-3.0-or-later WITH GCC-exception-3.1",
    "glibc": "LGPL-2.1-or-later",
    "mingw-w64": "ZPL-2.1",
    "nettle": "LGPL-3.0-or-later OR GPL-2.0-or-later",
    "qt6-base": "LGPL-3.0-only OR GPL-2.0-only OR GPL-3.0-only",
}


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def query(field, *packages):
    """What Debian's package system knows of packages that are installed."""
    return output_of("dpkg-query", "--show", "--showformat", field, *packages)


def library(reference, **fields):
    """A component whose name is its reference, unless the fields say otherwise."""
    return {"type": "library", "bom-ref": reference, "name": reference, **fields}


def debian_component(name, version, architecture, source):
    """A package of Debian, which scanners look up by its purl."""
    system = platform.freedesktop_os_release()
    component = library(name, version=version, supplier={"name": system["NAME"]})
    if source == "sqlite3":
        component["licenses"] = [{"license": {"name": "public domain"}}]
    elif source in LICENCES:
        component["licenses"] = [{"expression": LICENCES[source]}]
    component["purl"] = (f"pkg:deb/{system['ID']}/{quote(name)}@{quote(version, safe=':~')}"
                         f"?arch={architecture}&distro={system['ID']}-{system['VERSION_ID']}")
    return component


def installed_components(packages):
    fields = ("Package", "Version", "Architecture", "source:Package")
    lines = query("\t".join(f"${{{field}}}" for field in fields) + "\n", *packages).splitlines()
    return [debian_component(*line.split("\t")) for line in lines]


def maker_components():
    return [library(name, supplier={"name": "the analyser's maker"}) for name in ("core", "zucore")]


def write_list(file, package, version, components, dependencies):
    """Writes the list of a package. The dependencies are the names that each name needs."""
    document = {
        "$schema": "http://cyclonedx.org/schema/bom-1.5.schema.json",
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "version": 1,
        "metadata": {
            "component": {
                "type": "application",
                "bom-ref": package,
                "supplier": {"name": "the vardo authors"},
                "name": package,
                "version": version,
                "licenses": [{"expression": "MIT"}],
            },
        },
        "components": sorted(components, key=lambda component: component["name"]),
        "dependencies": [{"ref": name, "dependsOn": sorted(needed)}
                         for name, needed in sorted(dependencies.items())],
    }
    number = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(document))
    document["serialNumber"] = f"urn:uuid:{number}"
    Path(file).write_text(json.dumps(document, indent=2) + "\n", encoding="utf-8")


def libraries_of(programs):
    """The path of each library that is loaded with the programs, by its name; None if it is not there."""
    libraries = {}
    for program in programs:
        for line in output_of("ldd", program).splitlines():
            words = line.split()
            path = words[2] if words[1] == "=>" else words[0]
            if path.startswith("/"):
                libraries[Path(words[0]).name] = path
            elif path == "not":  # not found
                libraries[words[0]] = None
    return libraries


def needed_by(file):
    """The names of the libraries that a file itself asks for."""
    return re.findall(r"\(NEEDED\).*\[(.*)\]", output_of("readelf", "--dynamic", "--wide", file)) if file else []


def packages_of(files):
    """The package that each file is from, such as libc6:amd64. It may know the file by the path before /usr was
    merged."""
    names = {name: file for file in files for name in (file, file.removeprefix("/usr"), "/usr" + file)}
    found = subprocess.run(["dpkg-query", "--search", *names], capture_output=True, text=True, check=False)
    owners = (line.split(": ") for line in found.stdout.splitlines() if not line.startswith("diversion "))
    return {names[name]: package for package, name in owners}


def main(curves, package, version, file, *programs):
    driver_package = "libqt6sql6-sqlite"  # a plugin, which no program asks for
    driver = next(name for name in output_of("dpkg-query", "--listfiles", driver_package).splitlines()
                  if name.endswith("/libqsqlite.so"))
    libraries = libraries_of([*programs, driver])
    libraries[driver] = driver

    packages = packages_of(path for path in libraries.values() if path)
    # The maker's libraries are in no package of Debian, and may not be there in the folder of the package.
    owners = {name: packages[path].split(":")[0] if path in packages else re.sub(r"^lib|\.so.*", "", name)
              for name, path in libraries.items()}
    static = maker_components() if curves == "maker" else installed_components(["libeigen3-dev"])
    components = {component["name"]: component for component in
                  [*installed_components(set(packages.values())), *static]}
    for name in owners.values():
        components.setdefault(name, library(name))

    dependencies = {name: set() for name in components}
    for name, path in libraries.items():
        dependencies[owners[name]] |= {owners[needed] for needed in needed_by(path)} - {owners[name]}
    dependencies[package] = {component["name"] for component in static} | {driver_package}
    for program in programs:
        dependencies[package] |= {owners[needed] for needed in needed_by(program)}
    write_list(file, package, version, components.values(), dependencies)


if __name__ == "__main__":
    main(*sys.argv[1:])
