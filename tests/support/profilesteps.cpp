// SPDX-License-Identifier: MIT
#include "profilesteps.h"

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "upgrade.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>
#include <array>
#include <map>

using coagulation::UpdateProfile;

namespace {

constexpr int firstStep = 10;

constexpr std::array steps = {
    &UpdateProfile::update_v10, &UpdateProfile::update_v11, &UpdateProfile::update_v12,
    &UpdateProfile::update_v13, &UpdateProfile::update_v14, &UpdateProfile::update_v15,
    &UpdateProfile::update_v16, &UpdateProfile::update_v17, &UpdateProfile::update_v18,
    &UpdateProfile::update_v19, &UpdateProfile::update_v20, &UpdateProfile::update_v21,
    &UpdateProfile::update_v22, &UpdateProfile::update_v23, &UpdateProfile::update_v24,
    &UpdateProfile::update_v25, &UpdateProfile::update_v26, &UpdateProfile::update_v27,
    &UpdateProfile::update_v28, &UpdateProfile::update_v29, &UpdateProfile::update_v30,
};

void copyFile(const TestDatabase &from, const TestDatabase &to)
{
    if (!QFile::remove(to.path()) || !QFile::copy(from.path(), to.path()))
        qFatal("%s: not copied", qUtf8Printable(from.path()));
}

qlonglong key(const QString &row)
{
    return row.section(',', 0, 0).toLongLong();
}

/// \return the statement on one line, with blanks only between words
QString normalized(const QString &statement)
{
    static const QRegularExpression blanks(" ?([(),=]) ?");
    return statement.simplified().replace(blanks, "\\1");
}

/// \return the failed statement that a warning names, or the warning if it names none
QString failedStatement(const QString &warning)
{
    static const QRegularExpression form(
        R"re(^Warning: coagulation/vardo/update(profile|profile_v\d+_\w+|base)\.cpp \( line \):  ".+" : \[ "(.*)" \]$)re");
    const auto match = form.match(warning);
    return match.hasMatch() ? normalized(match.captured(2).replace(R"(\n)", " ")) : warning;
}

} // namespace

ProfileStep profileStep(int number)
{
    return steps.at(static_cast<std::size_t>(number - firstStep));
}

void makeProfileAtStep(const TestDatabase &database, int version)
{
    static std::map<int, TestDatabase> made;

    for (int step = firstStep; step <= version; ++step) {
        const auto [entry, isNew] = made.try_emplace(step, "profile.db");
        if (!isNew)
            continue;
        if (step == firstStep)
            entry->second.load("profile_v0.sql");
        else
            copyFile(made.at(step - 1), entry->second);
        if (!runProfileStep(entry->second, profileStep(step)))
            qFatal("step %d failed", step);
        entry->second.execute(
            {"delete from version", QString("insert into version values(%1)").arg(step)});
    }
    copyFile(made.at(version), database);
}

DatabaseContent::DatabaseContent(const TestDatabase &database)
    : schema(database.schema())
{
    for (const QString &name :
         database.rows("select name from sqlite_master where type = 'table' order by name")) {
        const QString table = name.mid(1, name.size() - 2);
        tables[table] = database.table(table);
    }
}

QStringList &DatabaseContent::rows(const QString &table)
{
    const auto found = tables.find(table);
    if (found == tables.end())
        qFatal("%s: no such table", qUtf8Printable(table));
    return *found;
}

DatabaseContent &DatabaseContent::append(const QString &table, const QStringList &rows)
{
    this->rows(table) += rows;
    return *this;
}

DatabaseContent &DatabaseContent::insert(const QString &table, const QStringList &rows)
{
    QStringList &all = this->rows(table) += rows;
    std::stable_sort(all.begin(), all.end(),
                     [](const QString &a, const QString &b) { return key(a) < key(b); });
    return *this;
}

DatabaseContent &DatabaseContent::insertNumbered(const QString &table, const QStringList &rows)
{
    QStringList &all = this->rows(table);
    for (const QString &row : rows)
        all << QString("%1, %2").arg(key(all.constLast()) + 1).arg(row);
    return *this;
}

DatabaseContent &DatabaseContent::replace(const QString &table, const QString &before,
                                          const QString &after)
{
    QStringList &all = rows(table);
    if (all.count(before) != 1)
        qFatal("%s: no row %s", qUtf8Printable(table), qUtf8Printable(before));
    all[all.indexOf(before)] = after;
    return *this;
}

DatabaseContent &DatabaseContent::edit(const QString &table, const QString &partOfRow,
                                       const QString &before, const QString &after)
{
    const QStringList found = rows(table).filter(partOfRow);
    if (found.size() != 1 || found.constFirst().count(before) != 1)
        qFatal("%s: no single row %s with %s", qUtf8Printable(table), qUtf8Printable(partOfRow),
               qUtf8Printable(before));
    return replace(table, found.constFirst(), QString(found.constFirst()).replace(before, after));
}

DatabaseContent &DatabaseContent::remove(const QString &table, const QString &row)
{
    if (rows(table).removeAll(row) != 1)
        qFatal("%s: no row %s", qUtf8Printable(table), qUtf8Printable(row));
    return *this;
}

DatabaseContent &DatabaseContent::take(const QString &table, const DatabaseContent &other)
{
    if (other.tables.contains(table))
        tables[table] = other.tables[table];
    else
        tables.remove(table);
    return *this;
}

DatabaseContent &DatabaseContent::takeSchema(const DatabaseContent &other)
{
    schema = other.schema;
    return *this;
}

DatabaseContent &DatabaseContent::redefine(const QString &beginning, const QString &statement)
{
    const QRegularExpression replaced('^' + QRegularExpression::escape(beginning) + ".*");
    if (schema.filter(replaced).size() != 1)
        qFatal("no single statement %s", qUtf8Printable(beginning));
    schema[schema.indexOf(replaced)] = statement;
    return *this;
}

QStringList DatabaseContent::lines() const
{
    QStringList lines = schema;
    lines.replaceInStrings(" (", "("); // a blank that other tools may have left out
    for (auto table = tables.begin(); table != tables.end(); ++table)
        lines << table.key() + ':' << table.value();
    return lines;
}

QStringList debugMessages(const QStringList &messages)
{
    return messages.filter(QRegularExpression("^Debug: "));
}

void compareFailures(const MessageRecorder &recorder, const QStringList &failing)
{
    QStringList failed;
    for (const QString &message : recorder.messages()) {
        if (!message.startsWith("Debug: "))
            failed << failedStatement(message);
    }
    QStringList expected;
    for (const QString &statement : failing)
        expected << normalized(statement);
    for (int i = 0; i < std::min(failed.size(), expected.size()); ++i)
        failed[i].truncate(expected.at(i).size());
    QCOMPARE(failed, expected);
}

void verifyStepFails(int step, int storedVersion, const QStringList &obstacles,
                     const QStringList &failing)
{
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, storedVersion);
    database.execute(QStringList{"pragma legacy_alter_table=on"} + obstacles);
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(debugMessages(recorder.messages()),
             QStringList{"Debug: Updating " + database.path()}
                 + stepLog("profile", storedVersion, step));
    compareFailures(recorder, failing);
}

void verifyStepIgnores(int step, const QStringList &obstacles, const QStringList &failing,
                       const QStringList &tablesKept)
{
    const TestDatabase undisturbed("profile.db");
    makeProfileAtStep(undisturbed, step);
    DatabaseContent expected(undisturbed);
    expected.rows("version") = QStringList{QString::number(step - 1)};
    const TestDatabase database("profile.db");
    makeProfileAtStep(database, step - 1);
    database.execute(QStringList{"pragma legacy_alter_table=on"} + obstacles);
    const DatabaseContent before(database);
    expected.takeSchema(before);
    for (const QString &table : tablesKept)
        expected.take(table, before);
    const MessageRecorder recorder;

    const bool passed = runProfileStep(database, profileStep(step));

    QVERIFY(passed);
    QCOMPARE(DatabaseContent(database).lines(), expected.lines());
    compareFailures(recorder, failing);
}

QString refuseInsert(const QString &table, const QString &condition)
{
    return QString("create trigger insert_%1 before insert on %1 when %2"
                   " begin select raise(abort, 'refused'); end")
        .arg(table, condition);
}

QString refuseUpdate(const QString &table, const QString &condition)
{
    return QString("create trigger update_%1 before update on %1 when %2"
                   " begin select raise(abort, 'refused'); end")
        .arg(table, condition);
}

void addLanguageRows()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("profile");
    QTest::addColumn<bool>("chinese");

    QTest::newRow("no translation") << QString() << QString() << true;
    for (const char *language : {"zh", "zh_CN", "ZH_TW", "Zh-Hant", "zhx"})
        QTest::newRow(language) << language << QString() << true;
    for (const char *language : {"en", "z", "de_zh", " zh"})
        QTest::addRow("'%s'", language) << language << QString() << false;
    QTest::newRow("empty") << "" << QString() << false;
    QTest::newRow("English in the other context") << QString() << "en" << true;
    QTest::newRow("English, Chinese in the other context") << "en"
                                                           << "zh" << false;
    QTest::newRow("Chinese, English in the other context") << "zh"
                                                           << "en" << true;
}
