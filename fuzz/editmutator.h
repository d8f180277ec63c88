// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// How a fuzzer changes an EditScript, so that the result is still one.

/// \param name of the database: "profile", "data", "qc" or "syslog"
/// \param most bytes of the result
/// \return the script with some lines added, changed or taken away
QByteArray mutatedScript(const QString &name, const QByteArray &script, qsizetype most,
                         unsigned int seed);

/// \return a script of lines of both
QByteArray crossedScripts(const QByteArray &first, const QByteArray &second, qsizetype most,
                          unsigned int seed);
