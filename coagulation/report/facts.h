// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

/// What a report says, as plain data: found by the comparison and the run of vardo, shown by the page and by
/// the JSON file. Values of databases stand here as literals of SQL, so that 1, 1.0 and '1' differ: texts in
/// quotes, NULL, blobs as X'…'. A long one is shortened and says so.
namespace coagulation::report {

struct FileFacts {
    QString path; ///< absolute
    qint64 bytes = 0;
    QByteArray sha256; ///< in hexadecimal digits; empty if the file could not be read
};

struct Cell {
    QString column;
    QString value; ///< a literal
};

/// A row that is on one side only, or that has another key now.
struct RowFacts {
    QString key;      ///< "id = 3", "name = 'PT'", "rowid = 7"
    QString newKey{}; ///< of a row that has another one after the upgrade; else empty
    QList<Cell> cells{};
};

struct ChangedCell {
    QString column;
    QString before; ///< a literal
    QString after;  ///< a literal
    /// The cell held a value that is not there any more. Not so if it was NULL, or a time that only lost its
    /// fraction of a second.
    bool overwritten = false;
};

struct ChangedRow {
    QString key;
    QList<ChangedCell> cells;
    /// By what people know the row: its value of the column "abbr" or "name" after the upgrade, if the
    /// key has none of them; else empty.
    QString name{};
};

/// How many rows have another value in a column.
struct ColumnChanges {
    QString column;
    qint64 rows = 0;
    qint64 overwritten = 0; ///< of these; see ChangedCell
};

struct TableFacts {
    QString name;
    bool viewAfter = false;             ///< the table became a view
    std::optional<qint64> rowsBefore{}; ///< none: there was no such table
    std::optional<qint64> rowsAfter{};  ///< none: there is no such table or view any more
    QStringList columnsAdded{};
    QStringList columnsRemoved{};
    qint64 added = 0;   ///< rows
    qint64 removed = 0; ///< rows
    qint64 notKept =
        0; ///< of the rows removed from a table that became a view: its new table lacks them, too
    qint64 renamed = 0; ///< rows that have another key; neither added nor removed
    qint64 changed = 0; ///< rows
    QList<ColumnChanges> changedColumns{};
    QList<RowFacts> addedRows{};     ///< examples
    QList<RowFacts> removedRows{};   ///< examples
    QList<RowFacts> renamedRows{};   ///< examples
    QList<ChangedRow> changedRows{}; ///< all, or examples
    QString problem{};               ///< why the rows were not compared; empty if they were
    bool damaged = false; ///< the problem lies in the file, not in the layout of the table
};

/// An index, trigger, view or table.
struct ObjectFacts {
    QString type; ///< "index", "trigger", "view", "table"
    QString name;
    QString table; ///< that it belongs to
};

enum class StepResult { Pass, Fail, Skip };

struct StepFacts {
    QString signature; ///< "update_v12()"
    StepResult result = StepResult::Skip;
    std::optional<qint64> milliseconds{}; ///< none if nobody watched the run
};

struct PointFacts {
    double x = 0.0;                  ///< in the curve's x unit
    double y = 0.0;                  ///< in the curve's y unit
    std::optional<double> zBefore{}; ///< the curve's y at x, as stored before
    std::optional<double> zAfter{};
    bool excluded = false;
    bool outlier = false;
};

/// What is stored of a curve on one side.
struct CurveState {
    std::optional<bool> valid{}; ///< none: NULL
    QString date;
    std::optional<double> correlation{};
    std::array<std::optional<double>, 5> coefficients{}; ///< a to e
};

/// A standard curve of the profile database that was fitted once more.
struct CurveFacts {
    QString key; ///< "id = 3"
    QString name;
    QString xUnit;
    QString yUnit;
    std::optional<int> method{};    ///< the calibration's: 0 linear, 4 four-parameter logistic
    std::optional<int> xFunction{}; ///< of the fit: 0 linear, 1 logarithm
    std::optional<int> yFunction{};
    bool logarithmicX = false; ///< of the axes that the calibration displays
    bool logarithmicY = false;
    CurveState before;
    CurveState after;
    QList<PointFacts> points{};
    /// The largest difference between both curves over the calibrated range, in per cent of the result after
    /// the upgrade; none if one of them cannot be drawn.
    std::optional<double> largestDifference{};
};

/// A calibration whose curves are fitted by another method after the upgrade.
struct MethodChange {
    QString calibration; ///< the name
    QString before;      ///< a literal
    QString after;       ///< a literal
};

/// A row of the profile database that is the laboratory's own, and that the steps did not expect.
struct UnexpectedRow {
    enum class Kind {
        OwnAssay, ///< it has the number of an assay of the factory's, whose rows were added to it
        MisplacedLimit,     ///< of a result check: no item got it, or the item of another assay
        OldSettingName,     ///< which the steps left, though they change others of this form
        CurveWithoutExpiry, ///< it has no date, or one that cannot be read
        OwnItem,            ///< it has the number of an item of the factory's, which was left out
        OwnCalibration, ///< it has the number or the name of a calibration of the factory's, likewise
        FactoryName,    ///< of an assay with another number: the factory's was left out
        ReplacedLimit,      ///< of a result check: its item got other limits
        ReplacedIdentifier, ///< of a reagent that was made anew
        EqualIdentifiers,   ///< of two reagents: a number and a text with the same digits
        FactoryDisplayName, ///< of an assay that is displayed by it: the factory's was left out
    };
    Kind kind;
    QString name; ///< of the row; of an item with its assay, as in "DD.P"
    /// What belongs to it, see the kinds: the factory's assay, the assay whose item got the limit, the curve's date,
    /// the number of the assay, the limits or the identifier before, or the other reagent. Empty if there is none.
    QString other{};
};

/// One of the four databases.
struct DatabaseFacts {
    QString name;          ///< "profile", "data", "qc" or "syslog"
    int newestVersion = 0; ///< that this program knows
    QList<FileFacts>
        filesBefore{}; ///< the database and what SQLite keeps beside it; none: there was none
    QList<FileFacts> filesAfter{};
    std::optional<int> versionBefore{}; ///< none: none is stored
    std::optional<int> versionAfter{};
    QList<StepFacts> steps{};             ///< of the log
    std::optional<qint64> milliseconds{}; ///< of the upgrade
    QString
        integrityBefore{}; ///< SQLite's first finding; "ok" if there is none; empty if it was not asked
    QString integrityAfter{};
    QString problem{}; ///< why it was not rehearsed or compared, a sentence; empty if it was
    bool unreadable =
        false; ///< locked, or not to be read by this user: the problem says nothing of its content
    QList<TableFacts> tables{};
    QList<ObjectFacts> objectsGone{}; ///< indexes, triggers, views; tables stand among the tables
    QList<ObjectFacts> objectsNew{};
    QList<CurveFacts> curves{};
    QStringList
        otherInvalidCurves{}; ///< names of curves that are not valid and were not fitted once more
    QList<MethodChange> methodChanges{}; ///< of calibrations that have a valid curve
    QList<UnexpectedRow> unexpectedRows{};
};

struct LogLine {
    QString text;                         ///< without what the log puts at its end
    std::optional<qint64> milliseconds{}; ///< since the start of the run, when it was read
    bool warning = false;
};

/// A value that is not there any more.
struct OverwrittenValue {
    QString key; ///< of its row, with the name that people know the row by
    QString column;
    QString before; ///< a literal
    QString after;  ///< a literal
};

/// What a person must look at, with the place of the report that has the details.
struct Attention {
    enum class Kind {
        Failure, ///< of the upgrade, or of a database that could not be read
        InvalidCurve,
        RefittedCurve,
        Calibration,   ///< another method, a value or a current curve that the upgrade chose
        UnexpectedRow, ///< see UnexpectedRow
        LostRows,      ///< a table …_unmoved, or rows that are not there any more
        NotCompared,   ///< a table
        GoneObject,    ///< a column, index, trigger, view or table
        Overwritten,   ///< values
        ReagentIdentifier,
        LoweredVersion,
        Warning, ///< of the log
    };
    Kind kind;
    QString text;                     ///< a sentence
    QString anchor;                   ///< the identifier of the place in the page
    QList<OverwrittenValue> values{}; ///< of Overwritten, the first ones
    qint64 moreValues = 0;            ///< that are not among them
};

struct Record {
    QDateTime time{};
    QString host{};
    QString user{};
    QString program{}; ///< path of the vardo that ran; empty in a comparison
    QByteArray programSha256{};
    QString vardoVersion{};
    QString qtVersion{};
    QString sqliteVersion{};
};

enum class Use { Rehearsal, Comparison };

struct Report {
    Use use = Use::Rehearsal;
    bool examplesOfPatients = false; ///< of the data database, which the user asked for
    Record record{};
    QList<DatabaseFacts> databases{}; ///< in the order of the upgrade
    QList<LogLine> log{};
    std::optional<int> exitCode{}; ///< of vardo; none if it did not run or did not exit by itself
    std::optional<qint64> milliseconds{}; ///< of the upgrade as a whole
    QString problem{}; ///< why vardo did not run to its end, a sentence; empty if it did
    QList<Attention> attention{};
};

} // namespace coagulation::report
