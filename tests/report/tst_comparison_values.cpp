// SPDX-License-Identifier: MIT
/// Which values differ, which of them count as overwritten, and how they are written.

#include "compared.h"
#include "testdatabase.h"

#include <QTest>

using namespace coagulation::report;

class TestComparisonValues : public QObject {
    Q_OBJECT

private slots:
    void tellsValuesApart_data();
    void tellsValuesApart();
    void tellsOverwrittenCells_data();
    void tellsOverwrittenCells();
    void writesLiterals_data();
    void writesLiterals();
    void writesLiteralsOfUtf16_data();
    void writesLiteralsOfUtf16();
    void showsNoPassword();
    void showsNoPasswordThatIsASetting();
};

void TestComparisonValues::tellsValuesApart_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");

    for (const char *type :
         {"", "text", "integer", "real", "numeric", "date", "blob", "text collate nocase"}) {
        QTest::addRow("%s: null", type) << type << "NULL"
                                        << "'a'";
        QTest::addRow("%s: to null", type) << type << "'a'"
                                           << "NULL";
        QTest::addRow("%s: empty", type) << type << "NULL"
                                         << "''";
        QTest::addRow("%s: letters", type) << type << "'a'"
                                           << "'A'";
        QTest::addRow("%s: blob", type) << type << "'a'"
                                        << "X'61'";
        QTest::addRow("%s: blank", type) << type << "'a'"
                                         << "'a '";
    }
    QTest::newRow("integer and real") << ""
                                      << "1"
                                      << "1.0";
    QTest::newRow("integer and text") << ""
                                      << "1"
                                      << "'1'";
    QTest::newRow("real and text") << ""
                                   << "1.0"
                                   << "'1.0'";
    QTest::newRow("empty text and blob") << ""
                                         << "''"
                                         << "X''";
    QTest::newRow("last digit") << "real"
                                << "0.1"
                                << "0.10000000000000002";
    QTest::newRow("large integers") << "integer"
                                    << "9007199254740993"
                                    << "9007199254740992";
    QTest::newRow("after a zero") << "blob"
                                  << "X'610062'"
                                  << "X'610063'";
}

/// Shows: REP-10
void TestComparisonValues::tellsValuesApart()
{
    QFETCH(QString, type);
    QFETCH(QString, before);
    QFETCH(QString, after);
    const QString table = QString("create table t(id integer primary key, x %1)").arg(type);

    QCOMPARE(differencesOf({table, QString("insert into t values(3, %1)").arg(before)},
                           {table, QString("insert into t values(3, %1)").arg(after)}),
             (QStringList{"t: changed 1", QString("  id = 3 | x: %1 -> %2").arg(before, after)}));
}

void TestComparisonValues::tellsOverwrittenCells_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<bool>("overwritten");

    QTest::newRow("was null") << "null"
                              << "'a'" << false;
    QTest::newRow("was empty") << "''"
                               << "'a'" << true;
    QTest::newRow("is null") << "'a'"
                             << "null" << true;
    QTest::newRow("number") << "1"
                            << "2" << true;
    QTest::newRow("type") << "1"
                          << "'1'" << true;
    QTest::newRow("time without its fraction") << "'08:01:02.345'"
                                               << "'08:01:02'" << false;
    QTest::newRow("time without a point") << "'08:01:02.'"
                                          << "'08:01:02'" << false;
    QTest::newRow("another time") << "'08:01:02.345'"
                                  << "'08:01:03'" << true;
    QTest::newRow("time without its zone") << "'08:01:02.345Z'"
                                           << "'08:01:02'" << true;
    QTest::newRow("number as a text") << "'12.5'"
                                      << "'12'" << true;
    QTest::newRow("name with a point") << "'Dr. Meier'"
                                       << "'Dr'" << true;
    QTest::newRow("other letters") << "'A.1'"
                                   << "'a'" << true;
    QTest::newRow("number without its fraction") << "1.5"
                                                 << "1" << true;
    QTest::newRow("blob") << "x'612e62'"
                          << "x'61'" << true;
}

void TestComparisonValues::tellsOverwrittenCells()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(bool, overwritten);
    const QString table = "create table t(id integer primary key, x collate nocase)";
    const TestDatabase databaseBefore;
    databaseBefore.execute({table, QString("insert into t values(1, %1)").arg(before)});
    const TestDatabase databaseAfter;
    databaseAfter.execute({table, QString("insert into t values(1, %1)").arg(after)});

    const TableFacts facts = tableIn(compared(databaseBefore, databaseAfter), "t");

    QCOMPARE(facts.changedRows.size(), 1);
    QCOMPARE(facts.changedRows.first().cells.first().overwritten, overwritten);
    QCOMPARE(facts.changedColumns.first().overwritten, overwritten ? 1 : 0);
}

void TestComparisonValues::writesLiterals_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("literal");

    QTest::newRow("quote") << "'it''s'"
                           << "'it''s'";
    QTest::newRow("Chinese") << "'凝血'"
                             << "'凝血'";
    QTest::newRow("largest integer") << "9223372036854775807"
                                     << "9223372036854775807";
    QTest::newRow("whole real") << "100000.0"
                                << "100000.0";
    QTest::newRow("shortest real") << "0.1"
                                   << "0.1";
    QTest::newRow("all digits") << "0.1 + 0.2"
                                << "0.30000000000000004";
    QTest::newRow("large real") << "1e300"
                                << "1e+300";
    QTest::newRow("infinity") << "9e999"
                              << "9.0e+999";
    QTest::newRow("negative infinity") << "-9e999"
                                       << "-9.0e+999";
    QTest::newRow("blob") << "X'00FF'"
                          << "X'00ff'";
    QTest::newRow("empty blob") << "X''"
                                << "X''";
    QTest::newRow("32 bytes") << "zeroblob(32)"
                              << "X'" + QString(64, '0') + "'";
    QTest::newRow("33 bytes") << "zeroblob(33)"
                              << "X'" + QString(64, '0') + "'… (33 bytes)";
    QTest::newRow("200 letters") << "replace(printf('%200d', 0), ' ', '0')"
                                 << "'" + QString(200, '0') + "'";
    QTest::newRow("201 letters") << "replace(printf('%201d', 0), ' ', '0')"
                                 << "'" + QString(200, '0') + "'… (201 characters)";
    QTest::newRow("a megabyte") << "replace(printf('%1048576d', 0), ' ', '0')"
                                << "'" + QString(200, '0') + "'… (1,048,576 characters)";
    QTest::newRow("250 letters of four bytes")
        << "replace(printf('%250d', 0), ' ', char(0x1f600))"
        << "'" + QString("😀").repeated(200) + "'… (250 characters)";
    QTest::newRow("a zero") << "'a' || char(0) || 'b'" << QString("'a") + QChar(0) + "b'";
    QTest::newRow("a zero in a long text")
        << "'a' || char(0) || replace(printf('%1000d', 0), ' ', '0')"
        << QString("'a") + QChar(0) + QString(198, '0') + "'… (1,002 bytes)";
    QTest::newRow("invalid UTF-8") << "cast(x'61ff62' as text)"
                                   << "'a\uFFFDb'";
    QTest::newRow("a byte order mark") << "char(0xfeff) || 'a'"
                                       << "'\uFEFFa'";
    QTest::newRow("control characters") << "'a' || char(27) || char(10)"
                                        << "'a\x1b\n'";
}

/// Shows: REP-10
void TestComparisonValues::writesLiterals()
{
    QFETCH(QString, value);
    QFETCH(QString, literal);
    const QString table = "create table t(id integer primary key, x)";

    QCOMPARE(differencesOf({table, "insert into t values(1, null)"},
                           {table, QString("insert into t values(1, %1)").arg(value)}),
             (QStringList{"t: changed 1", "  id = 1 | x: NULL -> " + literal}));
}

void TestComparisonValues::writesLiteralsOfUtf16_data()
{
    QTest::addColumn<QString>("encoding");

    QTest::newRow("little") << "UTF-16le";
    QTest::newRow("big") << "UTF-16be";
}

void TestComparisonValues::writesLiteralsOfUtf16()
{
    QFETCH(QString, encoding);
    const TestDatabase before;
    const TestDatabase after;
    const QString table = "create table t(id integer primary key, x)";
    for (const TestDatabase *database : {&before, &after}) {
        QFile::remove(database->path()); // the encoding is that of the first table
        database->execute({QString("pragma encoding = '%1'").arg(encoding), table});
    }
    before.execute({"insert into t values(1, replace(printf('%250d', 0), ' ', '凝'))"});
    after.execute({"insert into t values(1, 'a' || char(0) || '血😀')"});

    QCOMPARE(differences(compared(before, after)),
             (QStringList{"t: changed 1",
                          "  id = 1 | x: '" + QString(200, u'凝') + "'… (250 characters) -> 'a"
                              + QChar(0) + "血😀'"}));
}

/// Shows: REP-15
void TestComparisonValues::showsNoPassword()
{
    const QString user = "create table user(id integer primary key, name text, Password text)";

    QCOMPARE(
        differencesOf(
            {user, "insert into user values(1, 'a', 'old'), (2, 'b', null), (3, 'c', '')"},
            {user, "insert into user values(1, 'a', 'new'), (2, 'b', ''), (4, 'd', 'own')"}),
        (QStringList{"user: added 1", "  id = 4 | id = 4, name = 'd', Password = 'not shown'",
                     "user: removed 1", "  id = 3 | id = 3, name = 'c', Password = 'not shown'",
                     "user: changed 2", "  id = 1 | Password: 'not shown' -> 'not shown'",
                     "  id = 2 | Password: NULL -> 'not shown'"}));
}

/// Shows: REP-15
void TestComparisonValues::showsNoPasswordThatIsASetting()
{
    const QString settings = "create table profile(name text primary key, Value)";

    QCOMPARE(
        differencesOf(
            {settings,
             "insert into profile values('lis/Password', 'old'), ('lis/port', 1), ('p', 'own')"},
            {settings,
             "insert into profile values('lis/Password', 'new'), ('lis/port', 2), ('passwordOfQc', 3)"}),
        (QStringList{"profile: added 1",
                     "  name = 'passwordOfQc' | name = 'passwordOfQc', Value = 'not shown'",
                     "profile: removed 1", "  name = 'p' | name = 'p', Value = 'own'",
                     "profile: changed 2",
                     "  name = 'lis/Password' | Value: 'not shown' -> 'not shown'",
                     "  name = 'lis/port' | Value: 1 -> 2"}));
}

QTEST_GUILESS_MAIN(TestComparisonValues)

#include "tst_comparison_values.moc"
