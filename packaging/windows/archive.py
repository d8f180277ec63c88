#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Packs a folder into a ZIP archive that has the same bytes whoever packs it, and where.

    archive.py FOLDER ARCHIVE

cpack's own archives have the order of the file system, the user's number and mask, and local times. This one has
the files by name, without a user, and the time of SOURCE_DATE_EPOCH if that is set.
"""

import os
import stat
import sys
import time
from pathlib import Path
from zipfile import ZIP_DEFLATED, ZipFile, ZipInfo


def main(folder, archive):
    folder = Path(folder)
    date = time.gmtime(int(os.environ.get("SOURCE_DATE_EPOCH", time.time())))[:6]
    with ZipFile(archive, "w") as packed:
        for file in sorted(file for file in folder.rglob("*") if file.is_file()):
            entry = ZipInfo(str(file.relative_to(folder.parent)), date)
            entry.compress_type = ZIP_DEFLATED
            permissions = 0o755 if file.suffix == ".exe" else 0o644
            entry.external_attr = (stat.S_IFREG | permissions) << 16
            packed.writestr(entry, file.read_bytes(), compresslevel=9)


main(*sys.argv[1:])
