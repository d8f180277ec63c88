// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

class TestDatabase;

/// A line of docs/changed-values.md: rows of a table in which an upgrade changes columns.
struct ChangedValue {
    int line = 0;
    QString database;       ///< "profile", "data", "qc" or "syslog"
    int below = 0;          ///< it concerns the stored versions below this one
    bool inChinese = false; ///< only without a translation
    QString table;
    QStringList keys;    ///< each names rows, as the document does
    QStringList columns; ///< in small letters; none for the whole row
    QString before;      ///< an SQL literal, or the document's words
    QString after;       ///< the same
};

/// \return the lines of the document in their order; one that has no meaning ends the test program
QList<ChangedValue> readChangedValues(const QString &path);

/// The values of a row as SQL literals, by their columns in small letters.
using Row = QMap<QString, QString>;

/// The rows of each table and view by its first column, without the table `version`.
using Content = QMap<QString, QList<Row>>;

Content contentOf(const TestDatabase &database);

/// What an upgrade did, and what the document says of it.
struct Comparison {
    QStringList differences; ///< of rows that were there before
    QSet<QString> effects;   ///< of the lines that changed something: see effectsOf()
};

/// \param lines those that apply to the upgrade
Comparison compareUpgrade(const QList<ChangedValue> &lines, const Content &before,
                          const Content &after);

/// \return what a line may do, by key and column: "line 12: DD/priority, value"
QStringList effectsOf(const ChangedValue &line);
