// SPDX-License-Identifier: MIT
#pragma once

#include "toolrun.h"

/// Waits until Wine is ready. It makes its folder first if there is none, which takes some seconds.
void startWine();

/// \return an absolute path as Windows programs take it: "Z:\lab\qc.db"
QString windowsPath(const QString &path);

/// \return what starts a Windows program under Wine as the command would start a program of Linux
ToolCommand underWine(ToolCommand command);

/// \return what the Windows tool writes as the tool of Linux would write it: other ends of lines, and no drive
///         before a path
QByteArray asOnLinux(QByteArray text);
