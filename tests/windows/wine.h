// SPDX-License-Identifier: MIT
#pragma once

#include "toolrun.h"

#include <QTemporaryDir>

/// Waits until Wine is ready. It makes its folder first if there is none, which takes some seconds.
void startWine();

/// \return an absolute path as Windows programs take it: "Z:\lab\qc.db"
QString windowsPath(const QString &path);

/// \return what starts a Windows program under Wine as the command would start a program of Linux
ToolCommand underWine(ToolCommand command);

/// \return what the Windows tool writes as the tool of Linux would write it: other ends of lines, and no drive
///         before a path
QByteArray asOnLinux(QByteArray text);

/// A folder for Wine's settings (WINEPREFIX) with a server of its own, which has the rights of the first program
/// that uses the folder. The server ends with this.
class WineFolder {
public:
    WineFolder();
    ~WineFolder();
    Q_DISABLE_COPY_MOVE(WineFolder)

    QString path() const { return folder.path(); }

private:
    QTemporaryDir folder;
};
