// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

class TestDatabase;

/// A run of the real binary that ended by itself.
struct ToolRun {
    int exitCode = -1;
    QStringList log; ///< the lines, without what the handler puts at their ends
};

/// Runs the binary on the folder of a database. The log is a file beside it, which is gone afterwards.
/// \param program path of the binary
ToolRun runTool(const QString &program, const TestDatabase &database);
