// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// What a step left in a table or in the schema.
struct GoldenLine {
    QString subject; ///< "profile 0 10 reagent": database, stored version at the start, step, table
    QString content; ///< "93 0123456789abcdef": rows, digest
};

/// Reads the open database of the default connection, also within its transaction.
/// \param database "profile", "data", "qc" or "syslog"
/// \param run what the lines begin with, for example "profile 0 10"
/// \return a line for the schema and one for each table, by name
QList<GoldenLine> goldenLinesOf(const QString &database, const QString &run);

/// What several files hold.
struct GoldenFiles {
    QMap<QString, QString> contents; ///< of the lines, by subject
    QStringList faults;              ///< lines that are malformed or there twice
};

/// \param folder whose files are read, those named by a version: "1.0.0.txt"
GoldenFiles readGoldenFiles(const QString &folder);

/// \return a file with the lines, which begins with a description of its columns
QString goldenFile(const QList<GoldenLine> &lines);
