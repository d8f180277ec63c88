// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// \return the bytes of a file; "no such file" if it cannot be read
QByteArray fileBytes(const QString &path);

/// Writes a file anew; a failure ends the test program.
void writeFile(const QString &path, const QByteArray &bytes);
