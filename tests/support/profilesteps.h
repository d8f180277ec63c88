// SPDX-License-Identifier: MIT
#pragma once

#include "profileupgrade.h"

#include <QMap>
#include <QStringList>

class MessageRecorder;

/// \param number as in stepsOf("profile")
ProfileStep profileStep(int number);

/// Fills a database, whose file is named "profile.db", with the sample as the steps 10 to `version`
/// leave it without a translation.
void makeProfileAtStep(const TestDatabase &database, int version);

/// What is in a database; tests change it into what a step should make of the database. A row, column
/// or statement that is to be changed and not there ends the test program.
class DatabaseContent {
public:
    explicit DatabaseContent(const TestDatabase &database);

    /// Adds rows at the end of a table without an integer key.
    DatabaseContent &append(const QString &table, const QStringList &rows);

    /// Adds rows to a table in the order of whose first column, an integer key, they are stored.
    DatabaseContent &insert(const QString &table, const QStringList &rows);

    /// The same for rows that are given without the key: they get the next ones.
    DatabaseContent &insertNumbered(const QString &table, const QStringList &rows);

    DatabaseContent &replace(const QString &table, const QString &before, const QString &after);

    /// Replaces a text that stands once in the only row with another text.
    DatabaseContent &edit(const QString &table, const QString &partOfRow, const QString &before,
                          const QString &after);

    DatabaseContent &remove(const QString &table, const QString &row);

    /// Takes a table as it is in another content, or its absence.
    DatabaseContent &take(const QString &table, const DatabaseContent &other);

    /// Takes the indexes, tables, triggers and views of another content, but not their rows.
    DatabaseContent &takeSchema(const DatabaseContent &other);

    /// Replaces the statement that made an object.
    /// \param beginning of the statement that is replaced, enough to find it
    DatabaseContent &redefine(const QString &beginning, const QString &statement);

    QStringList &rows(const QString &table);

    /// \return all of it, to be compared
    QStringList lines() const;

private:
    QStringList schema;
    QMap<QString, QStringList> tables;
};

/// \return the debug messages among the messages
QStringList debugMessages(const QStringList &messages);

/// Checks that statements failed, and that nothing else is warned of.
/// \param failing how each of them begins, in their order; blanks beside brackets, commas and equals
///                signs do not matter
void compareFailures(const MessageRecorder &recorder, const QStringList &failing);

/// Checks that an upgrade of the sample fails in a step and leaves the file as it was.
/// \param obstacles statements that are run on the sample at the stored version
/// \param failing see compareFailures()
void verifyStepFails(int step, int storedVersion, const QStringList &obstacles,
                     const QStringList &failing);

/// Checks that a step passes on the sample in spite of obstacles, and that it leaves all tables as it
/// does without them, except some, which it leaves as they were.
/// \param failing see compareFailures()
void verifyStepIgnores(int step, const QStringList &obstacles, const QStringList &failing,
                       const QStringList &tablesKept);

/// \return a trigger that makes every insertion into a table fail, or those that a condition meets
QString refuseInsert(const QString &table, const QString &condition = "1");

/// \return a trigger that makes every update of a table's rows fail, or those that a condition meets
QString refuseUpdate(const QString &table, const QString &condition = "1");

/// Adds columns and rows for translations of the source text "zh", by which steps know the language:
/// "base" and "profile" are those of the contexts of UpdateBase and UpdateProfile, null for none;
/// "chinese" is what a step that asks in the context of UpdateBase should make of them.
void addLanguageRows();

/// Translations as in the rows of addLanguageRows(), installed as long as it lives.
class Languages {
public:
    Languages(const QString &base, const QString &profile)
        : ofBase("coagulation::UpdateBase", {{"zh", base}})
        , ofProfile("coagulation::UpdateProfile", {{"zh", profile}})
    {
    }

private:
    Translation ofBase;
    Translation ofProfile;
};
