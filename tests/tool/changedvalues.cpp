// SPDX-License-Identifier: MIT
#include "changedvalues.h"

#include "testdatabase.h"

#include <QDate>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>

namespace {

const QString wholeRow = "whole row";

// The document's words for what a row, an old or a new value is.
const QString notValid = "not valid";
const QString ofInvalidCurve = "of a curve that is not valid";
const QString laterRow = "a later row has the same ";

const QString any = "any";
const QString asInEarlierRow = "as in an earlier row";
const QString nullInEveryRow = "`NULL` in every row";
const QString withPoint = "with a point";

const QString deleted = "deleted";
const QString hidden = "no longer shown";
const QString newNumber = "a new number";
const QString numbered = "the same with `(2)`, `(3)`, … added: the first that is free";
const QString dayOfUpgrade = "the day of the upgrade";
const QString fitted = "fitted anew";
const QString fromCurve = "from a standard curve of the assay";
const QString withoutPoint = "without the point and what follows it";

QString unquoted(const QString &literal)
{
    return literal.startsWith('\'') ? literal.mid(1, literal.size() - 2).replace("''", "'")
                                    : literal;
}

QString quoted(QString text)
{
    return '\'' + text.replace('\'', "''") + '\'';
}

/// \return whether two SQL literals are the same; a number may be an integer in one and a real in the other
bool isSame(const QString &a, const QString &b)
{
    bool isNumber = false;
    bool areNumbers = false;
    const double first = a.toDouble(&isNumber);
    const double second = b.toDouble(&areNumbers);
    return a == b || (isNumber && areNumbers && first == second);
}

/// \return a cell's literal without its code marks, or its words
QString valueOf(const QString &cell)
{
    static const QRegularExpression code("^`([^`]+)`$");
    const auto match = code.match(cell);
    return match.hasMatch() ? match.captured(1) : cell;
}

bool isLiteral(const QString &value)
{
    static const QRegularExpression literal(R"(^('.*'|NULL|-?\d+(\.\d+)?)$)");
    return literal.match(value).hasMatch();
}

/// \return what stands between code marks; all of a cell without a mark at its beginning
QStringList keysOf(const QString &cell)
{
    if (!cell.startsWith('`'))
        return {cell};
    return cell.mid(1, cell.size() - 2).split("`, `");
}

ChangedValue readLine(const QString &text, ChangedValue line)
{
    static const QSet<QString> wordsBefore{any, asInEarlierRow, nullInEveryRow, withPoint};
    static const QSet<QString> wordsAfter{deleted,      hidden, newNumber, numbered,
                                          dayOfUpgrade, fitted, fromCurve, withoutPoint};
    const QStringList cells = text.mid(2, text.size() - 4).split(" | ");
    if (cells.size() == 5) {
        line.table = valueOf(cells.at(0));
        line.keys = keysOf(cells.at(1));
        if (cells.at(2) != wholeRow)
            line.columns = keysOf(cells.at(2).toLower());
        line.before = valueOf(cells.at(3));
        line.after = valueOf(cells.at(4));
    }
    const bool isWhole = line.after == deleted || line.after == hidden;
    if (line.database.isEmpty() || line.below == 0 || line.columns.isEmpty() != isWhole
        || !(isLiteral(line.before) || wordsBefore.contains(line.before))
        || !(isLiteral(line.after) || wordsAfter.contains(line.after)))
        qFatal("line %d has no meaning: %s", line.line, qUtf8Printable(text));
    return line;
}

/// \param wildcards which the document uses: "*" letters, digits and "_", "?" a character, "…" anything
QRegularExpression patternOf(const QString &wildcards)
{
    static QHash<QString, QRegularExpression> patterns;
    const auto known = patterns.constFind(wildcards);
    if (known != patterns.cend())
        return *known;
    const QString pattern = QRegularExpression::escape(wildcards)
                                .replace(R"(\*)", R"((\w+))")
                                .replace(R"(\?)", "(.)")
                                .replace("\\…", "(.*)");
    return *patterns.insert(wildcards, QRegularExpression('^' + pattern + '$'));
}

bool hasWildcard(const QString &text)
{
    static const QRegularExpression wildcard("[*?…]");
    return text.contains(wildcard);
}

/// \return the new literal, in which what the old name has for the key's wildcards takes their places
QString filledIn(const QString &literal, const QString &key, const QString &name)
{
    static const QRegularExpression wildcard("[*…]");
    QStringList texts = patternOf(key).match(name).capturedTexts();
    QString filled = unquoted(literal);
    for (qsizetype from = 0; (from = filled.indexOf(wildcard, from)) >= 0;) {
        texts.removeFirst();
        filled.replace(from, 1, texts.constFirst());
        from += texts.constFirst().size();
    }
    return quoted(filled);
}

QString effectOf(const ChangedValue &line, const QString &key, const QString &column)
{
    return QString("line %1: %2, %3").arg(QString::number(line.line), key, column);
}

/// \return what tells the row from the others of its table, before and after an upgrade
QString identityOf(const QString &table, const Row &row)
{
    if (table == "profile" || row.contains("vialtype")) // a reagent, whose id may change
        return row.value("name");
    if (table == "dataCheck")
        return row.value("assaytemplateid");
    return row.contains("id") ? row.value("id") : row.value("curveid") + row.value("name");
}

/// What the document makes of the rows of a database.
class Prediction {
public:
    explicit Prediction(const Content &contentBefore);

    void apply(const ChangedValue &line);
    Comparison compare(const Content &after);

private:
    struct Origin {
        int line = 0;    ///< which gave the value; 0 for none
        QString effect;  ///< what the line then does
        QString pattern; ///< what the value matches, if the document does not give it
    };
    struct PredictedRow {
        Row values;
        QMap<QString, Origin> origins; ///< by column
        int deletedBy = 0;             ///< a line; 0 for none
    };

    QString nameOf(const QString &table, const Row &row) const;
    QString labelOf(const QString &table, const Row &row) const;
    bool isKey(const QString &key, const QString &table, const QList<Row> &all, qsizetype index,
               const Row &now) const;
    bool isTerm(const QString &term, const QString &table, const Row &row) const;
    bool isInvalidCurve(const Row &curve) const;
    static bool hasLaterTwin(const QString &key, const QList<Row> &all, qsizetype index);
    /// \param value as a line says it
    static bool had(const QString &value, const QString &column, const QList<Row> &all,
                    const QList<PredictedRow> &predicted, qsizetype index);
    void apply(const ChangedValue &line, const QString &key, const QList<Row> &all,
               QList<PredictedRow> &predicted, qsizetype index);
    void change(const ChangedValue &line, const QString &key, PredictedRow &row,
                const QString &column);
    void compareRow(const QString &label, const PredictedRow &row, const Row &old,
                    const Row *after);
    void compareCell(const QString &label, const Origin &origin, const QString &expected,
                     const QString &old, const QString &now);

    const Content &before;
    QHash<QString, QString> assays; ///< the names by id
    QHash<QString, Row> curves;     ///< by id
    QSet<QString> calibrations;     ///< the names
    QMap<QString, QList<PredictedRow>> rows;
    Comparison comparison;
};

Prediction::Prediction(const Content &contentBefore)
    : before(contentBefore)
{
    for (const Row &assay : before.value("assayTemplate"))
        assays.insert(assay.value("id"), unquoted(assay.value("name")));
    for (const Row &curve : before.value("curve"))
        curves.insert(curve.value("id"), curve);
    for (const Row &calibration : before.value("assayCalibration"))
        calibrations.insert(calibration.value("name"));
    for (auto table = before.begin(); table != before.end(); ++table) {
        for (const Row &row : *table)
            rows[table.key()] << PredictedRow{row, {}, 0};
    }
}

QString Prediction::nameOf(const QString &table, const Row &row) const
{
    if (table == "dataCheck")
        return assays.value(row.value("assaytemplateid"));
    const QString name = unquoted(row.value("name"));
    return table == "assayItem" ? assays.value(row.value("assaytemplateid")) + '.' + name : name;
}

/// \return how a difference names the row: "assayItem DD.P (14)"
QString Prediction::labelOf(const QString &table, const Row &row) const
{
    const QString name = nameOf(table, row);
    const QString identity = unquoted(identityOf(table, row));
    return name == identity
        ? table + ' ' + name
        : QString("%1 %2(%3)").arg(table, name.isEmpty() ? "" : name + ' ', identity);
}

bool Prediction::isInvalidCurve(const Row &curve) const
{
    const QString valid = curve.value("valid");
    return (valid == "0" || valid == "NULL") && calibrations.contains(curve.value("name"));
}

bool Prediction::hasLaterTwin(const QString &key, const QList<Row> &all, qsizetype index)
{
    const QStringList columns = keysOf(key.mid(laterRow.size()).toLower());
    return std::any_of(all.begin() + index + 1, all.end(), [&](const Row &later) {
        return std::all_of(columns.begin(), columns.end(), [&](const QString &column) {
            return later.value(column) != "NULL"
                && later.value(column) == all.at(index).value(column);
        });
    });
}

/// \param all the rows of the table as they were
/// \param now the row at the index as the lines before leave it
bool Prediction::isKey(const QString &key, const QString &table, const QList<Row> &all,
                       qsizetype index, const Row &now) const
{
    if (key == notValid)
        return isInvalidCurve(all.at(index));
    if (key == ofInvalidCurve)
        return isInvalidCurve(curves.value(all.at(index).value("curveid")));
    if (key.startsWith(laterRow))
        return hasLaterTwin(key, all, index);
    const QStringList terms = key.split("` and `");
    return std::all_of(terms.begin(), terms.end(),
                       [&](const QString &term) { return isTerm(term, table, now); });
}

bool Prediction::isTerm(const QString &term, const QString &table, const Row &row) const
{
    const QString column = term.section('=', 0, 0).toLower();
    if (term.contains('='))
        return row.contains(column) && unquoted(row.value(column)) == term.section('=', 1);
    const QString name = nameOf(table, row);
    return hasWildcard(term) ? patternOf(term).match(name).hasMatch() : name == term;
}

bool Prediction::had(const QString &value, const QString &column, const QList<Row> &all,
                     const QList<PredictedRow> &predicted, qsizetype index)
{
    const QString literal = predicted.at(index).values.value(column);
    if (value == any)
        return true;
    if (value == withPoint)
        return literal.contains('.');
    if (value == asInEarlierRow) {
        return literal != "NULL"
            && std::any_of(
                   predicted.begin(), predicted.begin() + index,
                   [&](const PredictedRow &row) { return row.values.value(column) == literal; });
    }
    if (value == nullInEveryRow) {
        return std::all_of(all.begin(), all.end(),
                           [&](const Row &row) { return row.value(column) == "NULL"; });
    }
    return isSame(literal, value);
}

void Prediction::apply(const ChangedValue &line)
{
    const auto table = rows.find(line.table);
    if (table == rows.end())
        return;
    const QList<Row> all = before.value(line.table);
    for (const QString &key : line.keys) {
        for (qsizetype i = 0; i < all.size(); ++i)
            apply(line, key, all, *table, i);
    }
}

void Prediction::apply(const ChangedValue &line, const QString &key, const QList<Row> &all,
                       QList<PredictedRow> &predicted, qsizetype index)
{
    PredictedRow &row = predicted[index];
    if (row.deletedBy > 0 || !isKey(key, line.table, all, index, row.values))
        return;
    if (line.columns.isEmpty()) {
        row.deletedBy = line.line;
        comparison.effects << effectOf(line, key, wholeRow);
    }
    for (const QString &column : line.columns) {
        if (row.values.contains(column) && had(line.before, column, all, predicted, index))
            change(line, key, row, column);
    }
}

void Prediction::change(const ChangedValue &line, const QString &key, PredictedRow &row,
                        const QString &column)
{
    QString &value = row.values[column];
    Origin &origin = row.origins[column];
    origin = {line.line, effectOf(line, key, column), {}};
    const QString literal = value;
    if (line.after == newNumber)
        origin.pattern = R"(\d+)";
    else if (line.after == numbered)
        origin.pattern = QRegularExpression::escape(literal.chopped(1)) + R"(\(\d+\)')";
    else if (line.after == fitted || line.after == fromCurve)
        origin.pattern = ".*";
    else if (line.after == dayOfUpgrade)
        value = quoted(QDate::currentDate().toString(Qt::ISODate));
    else if (line.after == withoutPoint)
        value = literal.section('.', 0, 0) + (literal.startsWith('\'') ? "'" : "");
    else if (hasWildcard(key) && hasWildcard(line.after))
        value = filledIn(line.after, key, unquoted(literal));
    else
        value = line.after;
    if (origin.pattern.isEmpty() && !isSame(value, literal))
        comparison.effects << origin.effect;
}

Comparison Prediction::compare(const Content &after)
{
    for (auto table = rows.begin(); table != rows.end(); ++table) {
        QHash<QString, const Row *> rowsAfter;
        const auto found = after.find(table.key());
        if (found == after.end()) {
            comparison.differences << table.key() + " is gone";
            continue;
        }
        const QList<Row> all = before.value(table.key());
        for (const Row &row : *found)
            rowsAfter.insert(identityOf(table.key(), row), &row);
        for (qsizetype i = 0; i < table->size(); ++i) {
            compareRow(labelOf(table.key(), all.at(i)), table->at(i), all.at(i),
                       rowsAfter.value(identityOf(table.key(), table->at(i).values)));
        }
    }
    return comparison;
}

void Prediction::compareRow(const QString &label, const PredictedRow &row, const Row &old,
                            const Row *after)
{
    if (row.deletedBy > 0) {
        if (after != nullptr)
            comparison.differences << QString("%1: is there, but line %2 says otherwise")
                                          .arg(label)
                                          .arg(row.deletedBy);
        return;
    }
    if (after == nullptr) {
        const int renamedBy = row.origins.value("name").line;
        comparison.differences << (renamedBy == 0 ? label + ": is gone, and no line says so"
                                                  : QString("%1: is not %2, but line %3 says so")
                                                        .arg(label, row.values.value("name"),
                                                             QString::number(renamedBy)));
        return;
    }
    for (auto value = row.values.begin(); value != row.values.end(); ++value)
        compareCell(label + ", " + value.key(), row.origins.value(value.key()), *value,
                    old.value(value.key()), after->value(value.key(), "gone"));
}

void Prediction::compareCell(const QString &label, const Origin &origin, const QString &expected,
                             const QString &old, const QString &now)
{
    if (origin.line == 0) {
        if (now != expected)
            comparison.differences
                << QString("%1: was %2, is %3, and no line says so").arg(label, old, now);
        return;
    }
    const bool isExpected = origin.pattern.isEmpty()
        ? isSame(now, expected)
        : QRegularExpression(QRegularExpression::anchoredPattern(origin.pattern))
              .match(now)
              .hasMatch();
    if (!isExpected)
        comparison.differences << QString("%1: was %2, is %3, but line %4 says otherwise")
                                      .arg(label, old, now, QString::number(origin.line));
    else if (!origin.pattern.isEmpty() && now != old)
        comparison.effects << origin.effect;
}

} // namespace

QList<ChangedValue> readChangedValues(const QString &path)
{
    static const QMap<QString, QString> databases{{"## Profile database", "profile"},
                                                  {"## Data database", "data"},
                                                  {"## Quality-control database", "qc"},
                                                  {"## System log database", "syslog"}};
    const QString head = "| table | key | column | old | new |";
    const QString ruler = "| --- | --- | --- | --- | --- |";
    static const QRegularExpression section(R"(^### Below version (\d+)(, in Chinese only)?$)");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    const QStringList text = QString::fromUtf8(file.readAll()).split('\n');

    QList<ChangedValue> lines;
    ChangedValue place;
    for (const QString &line : text) {
        ++place.line;
        if (line.startsWith("## ")) {
            place.database = databases.value(line);
            place.below = 0;
        } else if (const auto match = section.match(line); match.hasMatch()) {
            place.below = match.captured(1).toInt();
            place.inChinese = match.hasCaptured(2);
        } else if (line.startsWith('|') && !place.database.isEmpty() && line != head
                   && line != ruler) {
            lines << readLine(line, place);
        }
    }
    return lines;
}

Content contentOf(const TestDatabase &database)
{
    // Two queries for all tables, since each reads the schema anew.
    QMap<QString, QStringList> columns;
    for (const QString &column :
         database.rows("select o.name || '.' || c.name from sqlite_master o,"
                       " pragma_table_info(o.name) c where o.type in ('table', 'view')"
                       " and o.name <> 'version' order by o.name, c.cid")) {
        const QString name = unquoted(column);
        columns[name.section('.', 0, 0)] << name.section('.', 1);
    }
    QStringList queries;
    for (auto table = columns.begin(); table != columns.end(); ++table) {
        QStringList literals;
        for (const QString &column : *table)
            literals << QString(R"(quote("%1"))").arg(column);
        queries << QString(
                       R"-(select * from (select json_array('%1', %2) from "%1" order by "%3"))-")
                       .arg(table.key(), literals.join(", "), table->constFirst());
    }

    Content content;
    for (auto table = columns.keyBegin(); table != columns.keyEnd(); ++table)
        content.insert(*table, {});
    for (const QString &literal : database.rows(queries.join(" union all "))) {
        const QJsonArray values = QJsonDocument::fromJson(unquoted(literal).toUtf8()).array();
        const QString table = values.at(0).toString();
        Row row;
        for (qsizetype i = 1; i < values.size(); ++i)
            row.insert(columns[table].at(i - 1).toLower(), values.at(i).toString());
        content[table] << row;
    }
    return content;
}

Comparison compareUpgrade(const QList<ChangedValue> &lines, const Content &before,
                          const Content &after)
{
    Prediction prediction(before);
    for (const ChangedValue &line : lines)
        prediction.apply(line);
    return prediction.compare(after);
}

QStringList effectsOf(const ChangedValue &line)
{
    QStringList effects;
    for (const QString &key : line.keys) {
        for (const QString &column : line.columns.isEmpty() ? QStringList{wholeRow} : line.columns)
            effects << effectOf(line, key, column);
    }
    return effects;
}
