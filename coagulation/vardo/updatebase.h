// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/vardo/sourceline.h"

#include <QMap>
#include <QObject>
#include <QSqlRecord>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <functional>
#include <initializer_list>
#include <optional>

class QDebug;
class QSqlError;
class QSqlQuery;

namespace coagulation {

/// What stands before and after the name in the file names of the databases; both may be empty.
struct FileNameAffixes {
    QString prefix;
    QString suffix;
};

/// \return the process-wide affixes, which the driver sets from the command line and the updaters'
///         constructors read
FileNameAffixes &fileNameAffixes();

/// \param pattern name of a database file with %1 for the prefix and %2 for the suffix
/// \return the file name, relative to the working directory unless the prefix is an absolute path
QString databaseFileName(const QString &pattern);

/// One SQL statement of a step, with its place in the source, which the log of a failure names.
struct Statement {
    QString sql;
    const char *sourceFile;
    int line;
};

/// A statement with its own source line. It is a macro, since a default argument would hold the line
/// of the whole list of statements.
#define SQL(sql) (::coagulation::Statement{sql, SOURCE_LINE})

/// \return a debug message that begins with its place in the source, given by SOURCE_LINE
QDebug debugFrom(const char *sourceFile, int line);

/// The engine: brings one SQLite database file up to the newest step of a derived class.
///
/// A derived class contributes invokable methods `bool update_v<N>()`, its steps. All steps above the
/// version that the file's table `version` holds run in ascending order inside one transaction; then
/// the highest step number is stored. A step that returns false rolls everything back.
///
/// There are two kinds of failed statements. If the failure comes from what is in the database (a table
/// is missing, a constraint is broken), it is logged, and the step decides whether it matters. If it
/// comes from the environment (no space, a lock, a damaged page, no memory), or if SQLite has given up
/// the transaction, the run is abandoned even where the step ignores failures. Otherwise the run would
/// skip for good what an undisturbed run does.
class UpdateBase : public QObject {
    Q_OBJECT

public:
    /// Releases the connection of the previous updater, opens the database file under the default
    /// connection and reads the stored version. If the file is missing, this warns and run() succeeds;
    /// if it cannot be opened, this warns and run() fails.
    explicit UpdateBase(const QString &path, QObject *parent = nullptr);

    /// Upgrades the database inside one transaction.
    /// \return true if the database is at the newest version or the file is missing; if false, the file
    ///         is as it was and the log shows where the run failed
    [[nodiscard]] bool run();

    /// Runs the steps, logs each with PASS, FAIL or SKIP, and stores the new version. A file that is not
    /// at the newest version is checked first, and left as it is if it is damaged.
    /// \return false at the first failure
    virtual bool upgrade();

protected:
    /// Runs one statement.
    /// \param values bound by name, for example ":name"
    /// \return false after a failure, which is logged with the source file and line
    [[nodiscard]] bool exec(const char *sourceFile, int line, const QString &sql,
                            const QVariantMap &values = {});

    /// Runs the statements in order and stops at the first failure.
    [[nodiscard]] bool execAll(std::initializer_list<Statement> statements);

    /// Runs every statement; failures are logged and otherwise ignored.
    /// \return whether none failed, for a caller that wants to know
    bool tryAll(std::initializer_list<Statement> statements);

    /// Logs the failure of a query that the caller ran, and abandons the run if it must.
    void logSqlError(const QSqlQuery &query, const char *sourceFile, int line);

    /// The same, but a failure that comes from what is in the database is not logged.
    void logUnlessContentError(const QSqlQuery &query, const char *sourceFile, int line);

    /// Goes through the remaining rows of a query that the caller executed, and finishes it. Use nothing
    /// else to read several rows: QSqlQuery::next() takes an unreadable row for the end of the table.
    /// Set the query to forward-only, or it keeps all rows in memory.
    /// \param row called for each row, with the query on it; false ends the reading
    /// \return false when `row` returned false or a row could not be read, which is logged
    [[nodiscard]] bool readRows(QSqlQuery &query, const char *sourceFile, int line,
                                const std::function<bool()> &row);

    /// \return the columns of a table or view, named as they are, for currentRow(). After a failure some are missing,
    ///         and the run is abandoned.
    [[nodiscard]] QStringList columnsOf(const QString &table);

    /// Inserts every row of a table into another one, in the order of the rows. Columns are matched by
    /// name, upper or lower case.
    /// \param defaults columns with the value that each inserted row gets, whether or not `from` has
    ///                 them
    /// \param excluded columns of `from` that are left out
    /// \param adjust changes a row before it is inserted
    /// \return false when an insert failed, or when a table that is there cannot be read; any other `from`
    ///         that cannot be selected is logged and counts as empty
    [[nodiscard]] bool copyTable(const QString &from, const QString &to,
                                 const QSqlRecord &defaults = {}, const QStringList &excluded = {},
                                 const std::function<void(QSqlRecord &)> &adjust = {});

    /// Gives a table a new layout: copies the rows of `oldTable` into `newTable`, which the caller
    /// created, drops the old one and gives the new one its name.
    [[nodiscard]] bool rebuildTable(const QString &newTable, const QString &oldTable);

    [[nodiscard]] bool renameTable(const QString &from, const QString &to);

    /// Cuts the texts in the columns at their first decimal point: 08:15:30.123 becomes 08:15:30.
    /// Nothing is written if no row has a point there.
    [[nodiscard]] bool removeDecimals(const QString &table, const QStringList &columns);

    /// Warns of what a table that is about to be dropped still holds: one warning for each column with
    /// values that are not null.
    /// \param copied the columns that have been copied elsewhere, upper or lower case
    void reportLeftValues(const QString &table, const QStringList &copied);

    /// \return how many rows a table has; 0 for a view and for a table that is missing; none if the table is there
    ///         and cannot be read
    [[nodiscard]] std::optional<qint64> countRows(const QString &table);

    /// Warns that a table's rows could not be moved, and keeps them: gives the table the name
    /// `<table>_unmoved`, or `<table>_unmoved2` and so on if the schema has that name.
    /// \param rows how many it has; none if nobody knows
    [[nodiscard]] bool keepUnmoved(const QString &table, std::optional<qint64> rows);

    /// Runs the update, and the insert if the update changed no row.
    [[nodiscard]] bool updateOrInsert(const QString &updateSql, const QString &insertSql,
                                      const char *sourceFile, int line);

    /// Stores a version as the only row of the table `version`, which must exist.
    [[nodiscard]] bool setVersion(int newVersion);

    /// The version stored in the file before the run, 0 when there is none; the same for all steps.
    int version = 0;

private:
    /// State of the run's transaction; None before and after the run.
    enum class Transaction { None, Open, Abandoned };

    enum class Moment { BeforeSteps, AfterSteps };

    [[nodiscard]] bool beginTransaction();
    void readVersion();
    /// Logs the damage if there is any.
    /// \return false when the file has to stay as it is
    [[nodiscard]] bool passesDamageCheck(Moment moment);
    void reportDamage(QString finding, Moment moment) const;
    /// Logs the failure of a query before the first step. If SQLite says that the file is damaged, this
    /// is reported like a finding of the damage check.
    void logFailedCheck(const QSqlQuery &query, const char *sourceFile, int line);
    void rollBack();
    /// \return whether SQLite still has the transaction open
    static bool hasTransaction();
    bool endsRun(const QSqlError &error) const;
    void abandon();
    /// Asks SQLite whether the transaction is still there. If it is not, this warns and abandons the run.
    /// Every operation asks first, or it could write outside of the transaction: SQLite may end it
    /// although no statement fails. For example, if there is no memory to pass a value to the driver,
    /// SQLite reports this only when the query is finished, and the driver does not pass it on.
    /// \return false when the run was abandoned, now or before
    [[nodiscard]] bool verifyTransaction();
    /// \return the types of what the schema has under that name, upper or lower case: "table", "index",
    ///         "view" or "trigger", mostly one or none
    [[nodiscard]] QStringList typesOf(const QString &name);
    /// \return the texts in the first column of a question's rows; none if it fails, which is logged
    [[nodiscard]] QStringList namesFrom(const QString &sql);
    /// \return true, too, if this cannot be found out
    [[nodiscard]] bool mayHoldDecimals(const QString &table, const QStringList &columns);
    [[nodiscard]] bool copyAdjustedRows(QSqlQuery &rows, const QStringList &columns,
                                        const QString &to, const QSqlRecord &defaults,
                                        const QStringList &excluded,
                                        const std::function<void(QSqlRecord &)> &adjust);

    QString filePath;             ///< absolute
    int versionToRecord = 0;      ///< recorded instead of the highest step number when above 0
    bool skipped = false;         ///< the file does not exist
    bool checkAfterSteps = false; ///< the check found what a step may turn into damage
    QMap<QString, QString> endangered{}; ///< the tables of the damage report before the steps
    Transaction transaction = Transaction::None;
};

} // namespace coagulation
