// SPDX-License-Identifier: MIT
/// Contents that look like statements, or that are extreme, arrive as they were, and nothing else changes.

#include "olddatabases.h"
#include "today.h"
#include "toolrun.h"

#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QTest>

#include <utility>

namespace {

/// Stands for the text in the statements below.
const QString placeholder = "<text>";

/// A text that means nothing to anybody.
const QString harmless = "'harmless'";

/// The rows of a laboratory with one text in all columns that hold texts, as the oldest layouts take them.
const QMap<QString, QStringList> rowsOfTexts{
    {"profile",
     {
         "insert into profile values(<text>, <text>), ('site/value', <text>)",
         "insert into profile values('program/SITE/name1', <text>), ('SITE/mix/type', <text>)",
         "insert into profile values('{00000000-0000-0000-0000-000000000000}' || <text>, 1)",
         "insert into user values(900, <text>, <text>, 1)",
         "insert into reagentType values(900, <text>)",
         // two of the same identifier: one gets another one
         "insert into reagent values(900, <text>, 9, <text>, 1, 2, 3)",
         "insert into reagent values(901, <text>, 9, 'of the same identifier', 1, 2, 3)",
         "insert into assayTemplate values(900, <text>, <text>, 1, <text>, <text>, <text>, <text>)",
         "insert into assayItem values(9000, 900, <text>, 2, <text>, <text>, 3, 1, <text>, <text>,"
         " 1, 2)",
         "insert into dataCheck values(900, 1, 'x.' || <text>, 1.5, 2.5, 1, <text>, 3, 4,"
         " 1, 'x.' || <text>, 5.5, 6.5, 1, 'x.' || <text>, 7.5, 8.5, 0, null)",
         "insert into assayCalibration values(900, 900, <text>, 0, <text>, <text>, <text>, null,"
         " null, null, null)",
         "insert into variable values(900, 900, <text>, null)",
         // to be fitted
         "insert into curve(id, name, xUnit, yUnit, date, valid, lotsNum)"
         " values(900, <text>, <text>, <text>, <text>, 0, <text>)",
         "insert into curvePoint values(901, 900, 1, 2, -1, 0), (902, 900, 2, 4, -1, 0),"
         " (903, 900, 3, 6, -1, 0)",
         "insert into curveVariable values(900, <text>, 1.5)",
         "insert into curveReagent values(900, <text>, <text>)",
         // whose variable becomes the assay's
         "insert into curve(id, name, valid) values(899, <text>, 1)",
         "insert into curveVariable values(899, <text>, <text>)",
     }},
    {"data",
     {
         "insert into patient values(900, <text>, <text>, <text>, <text>, <text>, <text>, <text>,"
         " <text>, <text>, <text>)",
         "insert into patientExtra values(900, 900, <text>, <text>)",
         "insert into exam values(900, <text>, <text>, <text>)",
         "insert into result values(900, 900, <text>, <text>, <text>, <text>, <text>, <text>, 1, 2,"
         " 3, 4)",
         "insert into curve values(900, 900, <text>, <text>), (901, 900, 'x',"
         " cast(<text> as blob))",
         "insert into department values(900, <text>)",
         "insert into sex values(900, <text>, <text>)",
         "insert into treatmentRoom values(900, <text>, <text>)",
         "insert into diagnosis values(900, <text>, <text>)",
         "insert into doctor values(900, <text>, <text>)",
         "insert into operator values(900, <text>)",
     }},
    {"qc",
     {
         "insert into reagent values(900, <text>, <text>, <text>, <text>, <text>)",
         "insert into info values(900, 900, 1, 2, <text>, <text>, <text>, <text>, <text>, <text>,"
         " <text>, <text>, <text>)",
         "insert into subsetting values(900, <text>, <text>, <text>, <text>, <text>, <text>,"
         " <text>, <text>, <text>, <text>, <text>)",
         "insert into qc values(900, 900, <text>, <text>, <text>, <text>, <text>)",
     }},
    {"syslog",
     {
         "insert into assay values(900, <text>, <text>, <text>, <text>, <text>, <text>)",
         "insert into event values(900, <text>, <text>, <text>)",
     }},
};

/// \param text an SQL expression
/// \param without pattern of the statements that are left out
QStringList rowsOf(const QString &name, const QString &text, const QString &without)
{
    QStringList statements;
    for (QString statement : rowsOfTexts.value(name)) {
        if (!statement.contains(QRegularExpression(without)))
            statements << statement.replace(placeholder, text);
    }
    return statements;
}

/// \return the schema and the rows of all tables, as by withToday(); texts and blobs by their bytes
QStringList exactContent(const TestDatabase &database)
{
    QStringList content = database.schema();
    for (const QString &quoted :
         database.rows("select name from sqlite_master where type = 'table' order by name")) {
        const QString table = quoted.mid(1, quoted.size() - 2);
        QStringList columns;
        for (const QString &column :
             database.rows(QString("select name from pragma_table_info('%1')").arg(table)))
            columns << QString("case typeof(%1) when 'text' then 'text ' || hex(%1)"
                               " when 'blob' then 'blob ' || hex(%1) else quote(%1) end")
                           .arg('"' + column.mid(1, column.size() - 2) + '"');
        content << table
                << database.rows(
                       QString("select %1 from \"%2\" not indexed").arg(columns.join(", "), table));
    }
    return withToday(content);
}

/// \param text an SQL expression
QString hexOf(const QString &text)
{
    const TestDatabase database;
    QString quoted = database.rows(QString("select hex(%1)").arg(text)).constFirst();
    return quoted.remove('\'');
}

/// \return what an upgrade makes of the sample with harmless rows, with the bytes of another text in
///         place of the harmless one
QStringList expectedContent(const QString &name, const QString &text, const QString &without)
{
    static QMap<QString, QStringList> contents;
    QStringList &content = contents[name + without];
    if (content.isEmpty()) {
        const TestDatabase database(name + ".db");
        makeDatabaseAt(database, name, 0);
        database.execute(rowsOf(name, harmless, without));
        if (runToolOn(VARDO, database.folderPath()).exitCode != 0)
            qFatal("harmless rows are not upgraded");
        content = exactContent(database);
    }
    QStringList expected = content;
    return expected.replaceInStrings(hexOf(harmless), hexOf(text));
}

/// Of statements that are never left out.
const QString nothing = "^$";

struct Text {
    const char *name;
    QString expression;
};

const QList<Text> texts{
    {"end of a value", "'x''); drop table user; --'"},
    {"end of a quoted name", "'\"; delete from curve; --'"},
    {"end of a text in quotation marks", R"('" or ""="')"},
    {"apostrophes", "'a''''b'''"},
    {"an apostrophe alone", "''''"},
    {"a comment", "'/* -- */ --'"},
    {"arguments", "'%1 %2 %3 %4 %L1 %99'"},
    {"format", "'%s%n%d'"},
    {"parameters", "':name ? ?1 @value $x'"},
    {"brackets", "'[x] `y` {z}'"},
    {"a backslash", R"('\1 \'' \')"},
    {"patterns", "'% _ * ['"},
    {"blanks and line breaks", "' ' || char(9, 13, 10, 11) || ' x '"},
    {"a name of a table", "'assayItem'"},
    {"a name of a column", "'reportLower'"},
    {"a name of a new table", "'assayItem_new'"},
    {"beyond the basic plane", "char(128137, 65279, 8238, 65533, 1114111)"},
    {"long", "replace(hex(zeroblob(50000)), '0', 'x'')')"},
};

const QStringList numbers{"9223372036854775807",
                          "-9223372036854775807 - 1",
                          "1e308",
                          "9e999",
                          "-9e999",
                          "-0.0",
                          "0.1 + 0.2",
                          "1.7976931348623157e308",
                          "5e-324",
                          "123456789.12345678",
                          "9007199254740993"};

struct CopiedTable {
    QString database;
    QString oldName;
    QString newName;
    QString columns; ///< which take any number, in the old and in the new layout
    QString others;  ///< columns that need a value of their own: the row's number
};

const QList<CopiedTable> copiedTables{
    {"profile", "assayTemplate", "assayTemplate", "class, displayOrder, caliX, funY", "name"},
    {"profile", "assayItem", "assayItem",
     "assayTemplateId, method, unit, precision, displayOrder, lowerNormal, upperNormal", "name"},
    {"profile", "assayCalibration", "assayCalibration", "assayTemplateId, method, condition, caliX",
     "name"},
    {"profile", "user", "user", "password, level", "name"},
    {"profile", "curve", "curve", "xUnit, correlation, date, xFun, yFun, a, b, c, d, e, lotsNum",
     "name, valid"},
    {"data", "department", "department", "name", ""},
    {"data", "sex", "sex", "abbr, name", ""},
    {"data", "treatmentRoom", "treatmentRoom", "abbr, name", ""},
    {"data", "diagnosis", "diagnosis", "abbr, name", ""},
    {"data", "doctor", "doctor", "abbr, name", ""},
    {"data", "operator", "operator", "name", ""},
    {"data", "curve", "curve", "patientId, item, curve", ""},
    {"data", "result", "results",
     "patientId, item, result, flag, displayOrder, lowerMarkLimit, upperMarkLimit", ""},
    {"qc", "reagent", "reagent", "reagentId, fileNo, name, expireDate", ""},
    {"qc", "info", "info", "reagentId, itemId, subitemId, item, x, sul, ul, xmean, ll, sll", ""},
    {"qc", "subsetting", "subsetting", "x, sul, ul, xmean, ll, sll, rule1_2s, rule1_3s, rule2_2s",
     "fileNo"},
};

/// \return an id at the upper or the lower end of the integers
QString extremeId(qsizetype row)
{
    return row % 2 == 0 ? QString("9223372036854775807 - %1").arg(row)
                        : QString("-9223372036854775807 - 1 + %1").arg(row - 1);
}

/// \return id and columns of the rows at the ends of the integers, each value with its type
QStringList extremeRows(const TestDatabase &database, const QString &table, const QString &columns)
{
    QStringList values{"id"};
    for (const QString &column : columns.split(", "))
        values << QString("typeof(%1), %1").arg(column);
    return database.rows(QString("select %1 from %2 where abs(id / 2) > 4611686018427387000"
                                 " order by id")
                             .arg(values.join(", "), table));
}

bool isLongRun()
{
    return qEnvironmentVariableIntValue("VARDO_LONG_TESTS") != 0;
}

} // namespace

class TestHostile : public QObject {
    Q_OBJECT

private slots:
    void textsArriveAsTheyWere_data();
    void textsArriveAsTheyWere();
    void invalidTextsArriveAsTheyWere_data();
    void invalidTextsArriveAsTheyWere();
    void refusesLimitsThatNoStatementHolds_data();
    void refusesLimitsThatNoStatementHolds();
    void extremeNumbersArriveAsTheyWere_data();
    void extremeNumbersArriveAsTheyWere();
    void limitsArriveToTheLastBit();
    void largeValuesArriveAsTheyWere_data();
    void largeValuesArriveAsTheyWere();
    void manyLookupRowsArriveAsTheyWere();
};

void TestHostile::textsArriveAsTheyWere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("without");

    for (const char *name : {"profile", "data", "qc", "syslog"}) {
        for (const Text &text : texts)
            QTest::addRow("%s: %s", name, text.name) << name << text.expression << nothing;
        // a statement cannot hold a NUL; see refusesLimitsThatNoStatementHolds()
        QTest::addRow("%s: a NUL", name) << name << "'x' || char(0) || 'y'"
                                         << "dataCheck";
        QTest::addRow("%s: a NUL at the start", name) << name << "char(0, 39, 59)"
                                                      << "dataCheck";
    }
}

/// Shows: REL-8
void TestHostile::textsArriveAsTheyWere()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, without);
    const QStringList expected = expectedContent(name, text, without);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, 0);
    database.execute(rowsOf(name, text, without));

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QVERIFY2(run.exitCode == 0, qUtf8Printable(run.log.join('\n').left(2000)));
    QCOMPARE(exactContent(database), expected);
}

void TestHostile::invalidTextsArriveAsTheyWere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("without");
    QTest::addColumn<bool>("changed"); // known to be

    for (const char *name : {"data", "qc", "syslog"})
        QTest::newRow(name) << name << nothing << false;
    // What goes through the driver, or is looked for by a name that did.
    const QList<std::pair<QString, QString>> parts{
        {"profile's templates", "into assayTemplate"},
        {"profile's reagents of the same identifier", "of the same identifier"},
        {"profile's curve variables", "into curveVariable values\\(899"},
        {"profile's result checks, whose limits find no item", "into dataCheck"},
        {"profile's curves, which find no calibration", "into curve\\(id, name, xUnit"},
    };
    const auto allBut = [&parts](const QString &name) {
        QStringList patterns;
        for (const auto &[other, pattern] : parts) {
            if (other != name)
                patterns << pattern;
        }
        return patterns.join('|');
    };
    QTest::newRow("profile") << "profile" << allBut({}) << false;
    for (const auto &part : parts)
        QTest::newRow(qPrintable(part.first)) << "profile" << allBut(part.first) << true;
}

/// Shows: REL-8
void TestHostile::invalidTextsArriveAsTheyWere()
{
    QFETCH(QString, name);
    QFETCH(QString, without);
    QFETCH(bool, changed);
    const QString text = "cast(x'41ff42c3' as text)";
    const QStringList expected = expectedContent(name, text, without);
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, 0);
    database.execute(rowsOf(name, text, without));

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QVERIFY2(run.exitCode == 0, qUtf8Printable(run.log.join('\n').left(2000)));
    if (changed)
        QEXPECT_FAIL("", "the driver's texts are UTF-16", Continue);
    QVERIFY(exactContent(database) == expected);
}

void TestHostile::refusesLimitsThatNoStatementHolds_data()
{
    QTest::addColumn<QString>("limits"); // item, lower, upper

    QTest::newRow("an item with a NUL") << "'II.T' || char(0), 1, 2";
    QTest::newRow("an item of a NUL and SQL")
        << "'II.T' || char(0, 39) || '; drop table user; --', 1, 2";
    QTest::newRow("no lower limit") << "'II.T', -9e999, 2";
    QTest::newRow("no upper limit") << "'II.T', 1, 9e999";
    QTest::newRow("a limit of SQL") << "'II.T', '1; drop table user', 2";
    QTest::newRow("a limit of a condition") << "'II.T', 1, '2 where 0 --'";
    QTest::newRow("a limit of a NUL") << "'II.T', '1' || char(0), 2";
    QTest::newRow("a limit in hexadecimal") << "'II.T', 1, '0x10'";
    QTest::newRow("not a number") << "'II.T', 'nan', 'inf'";
}

/// Shows: REL-8
void TestHostile::refusesLimitsThatNoStatementHolds()
{
    QFETCH(QString, limits);
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", 0);
    database.execute({"delete from dataCheck",
                      "insert into dataCheck(assayTemplateId, report, reportItemFullName,"
                      " reportLower, reportUpper) values(8, 1, "
                          + limits + ')'});
    const QByteArray before = database.bytes();

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QCOMPARE(run.exitCode, 1);
    QCOMPARE(database.bytes(), before);
    const QString failed = run.log.value(run.log.indexOf("Debug: update_v10(): FAIL") - 1);
    QVERIFY2(failed.contains("[ \"UPDATE assayItem SET lowerReport="), qUtf8Printable(failed));
}

void TestHostile::extremeNumbersArriveAsTheyWere_data()
{
    QTest::addColumn<int>("index");

    for (int i = 0; i < copiedTables.size(); ++i)
        QTest::addRow("%s: %s", qUtf8Printable(copiedTables.at(i).database),
                      qUtf8Printable(copiedTables.at(i).oldName))
            << i;
}

/// Shows: REL-8
void TestHostile::extremeNumbersArriveAsTheyWere()
{
    QFETCH(int, index);
    const CopiedTable &table = copiedTables.at(index);
    const TestDatabase database(table.database + ".db");
    makeDatabaseAt(database, table.database, 0);
    const QStringList columns = table.columns.split(", ");
    const QStringList others = table.others.split(", ", Qt::SkipEmptyParts);
    for (qsizetype row = 0; row < numbers.size(); ++row) {
        QStringList values{extremeId(row)};
        for (qsizetype column = 0; column < columns.size(); ++column)
            values << numbers.at((row + column) % numbers.size());
        for (qsizetype column = 0; column < others.size(); ++column)
            values << QString::number(row + 1);
        database.execute({QString("insert into %1(%2) values(%3)")
                              .arg(table.oldName, (QStringList{"id"} + columns + others).join(", "),
                                   values.join(", "))});
    }
    const QStringList before = extremeRows(database, table.oldName, table.columns);
    QCOMPARE(before.size(), numbers.size());

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QVERIFY2(run.exitCode == 0, qUtf8Printable(run.log.join('\n').left(2000)));
    QCOMPARE(extremeRows(database, table.newName, table.columns), before);
}

void TestHostile::limitsArriveToTheLastBit()
{
    const TestDatabase database("profile.db");
    makeDatabaseAt(database, "profile", 0);
    const QStringList limits{"0.1 + 0.2", "1e308",  "5e-324", "-1.7976931348623157e308",
                             "1e15 / 3",  "1.0 / 3"};
    database.execute(
        {"delete from dataCheck",
         "insert into assayItem(id, assayTemplateId, name) values(9000, 9223372036854775807, 'x')",
         QString("insert into dataCheck(assayTemplateId, report, reportItemFullName, reportLower,"
                 " reportUpper, repeat, repeatItemFullName, repeatLower, repeatUpper, redilution,"
                 " redilutionItemFullName, redilutionLower, redilutionUpper)"
                 " values(9223372036854775807, 1, '.x', %1, %2, 1, '.x', %3, %4, 1, '.x', %5, %6)")
             .arg(limits.at(0), limits.at(1), limits.at(2), limits.at(3), limits.at(4),
                  limits.at(5))});

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QCOMPARE(run.exitCode, 0);
    QCOMPARE(database.rows("select lowerReport, upperReport, lowerRepeat, upperRepeat,"
                           " lowerRedilution, upperRedilution from assayItem where id = 9000"),
             database.rows("select " + limits.join(", ")));
}

void TestHostile::largeValuesArriveAsTheyWere_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("column");

    QTest::newRow("a measured curve") << "data"
                                      << "curve"
                                      << "curve";
    QTest::newRow("an expression") << "profile"
                                   << "assayItem"
                                   << "expr";
    QTest::newRow("a template, which the driver copies") << "profile"
                                                         << "assayTemplate"
                                                         << "class";
}

/// Shows: REL-8
void TestHostile::largeValuesArriveAsTheyWere()
{
    QFETCH(QString, name);
    QFETCH(QString, table);
    QFETCH(QString, column);
    const int size = isLongRun() ? 100000000 : 10000000;
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, 0);
    const TestDatabase original;
    original.execute({"create table value(value)",
                      QString("insert into value values(randomblob(%1))").arg(size),
                      QString("attach '%1' as upgraded").arg(database.path()),
                      QString("update upgraded.%1 set %2 = (select value from value) where id = 1")
                          .arg(table, column)});

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QVERIFY2(run.exitCode == 0, qUtf8Printable(run.log.join('\n').left(2000)));
    database.execute({QString("attach '%1' as original").arg(original.path()),
                      "create table comparison as select typeof(a) as type, length(a) as length,"
                      " a = b as same from (select "
                          + column + " as a, value as b from " + table
                          + ", original.value where id = 1)"});
    QCOMPARE(database.table("comparison"), QStringList{QString("'blob', %1, 1").arg(size)});
}

void TestHostile::manyLookupRowsArriveAsTheyWere()
{
    const QStringList named{"department", "operator"};
    const QStringList abbreviated{"sex", "treatmentRoom", "diagnosis", "doctor"};
    constexpr int count = 100000;
    const QString numbered =
        QString("with recursive n(i) as (select 1 union all select i + 1 from n"
                " where i < %1) ")
            .arg(count);
    const TestDatabase database("data.db");
    makeDatabaseAt(database, "data", 0);
    for (const QString &table : named + abbreviated)
        database.execute({"delete from " + table});
    for (const QString &table : named)
        database.execute(
            {numbered + "insert into " + table + " select i * 3, 'name ' || (i * 7) from n"});
    for (const QString &table : abbreviated)
        database.execute({numbered + "insert into " + table
                          + " select i * 3, 'a' || (i % 1000), 'name ' || (i * 7) from n"});

    const ToolRun run = runToolOn(VARDO, database.folderPath());

    QCOMPARE(run.exitCode, 0);
    const QString sound =
        QString("select count(*), min(id), max(id), sum(name is 'name ' || (id / 3"
                " * 7)) from ");
    for (const QString &table : named) {
        QCOMPARE(database.rows(sound + table + " where abbr is null"),
                 QStringList{QString("%1, 3, %2, %1").arg(count).arg(3 * count)});
    }
    for (const QString &table : abbreviated) {
        QCOMPARE(database.rows(sound + table + " where abbr is 'a' || (id / 3 % 1000)"),
                 QStringList{QString("%1, 3, %2, %1").arg(count).arg(3 * count)});
        QCOMPARE(database.rows("select count(*) from " + table + " where abbr = 'A7'"),
                 QStringList{QString::number(count / 1000)}); // by the index
    }
}

QTEST_GUILESS_MAIN(TestHostile)
#include "tst_hostile.moc"
