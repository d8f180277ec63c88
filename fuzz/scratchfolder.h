// SPDX-License-Identifier: MIT
#pragma once

#include <QTemporaryDir>

/// A private folder in memory where the system has such a place, since a fuzzer writes some files a thousandth of
/// a second.
class ScratchFolder {
public:
    ScratchFolder();

    QString path() const { return folder.path(); }
    QString filePath(const QString &name) const { return folder.filePath(name); }

private:
    QTemporaryDir folder;
};
