// SPDX-License-Identifier: MIT
#include "upgrade.h"

#include "expectedsteps.h"
#include "messagerecorder.h"
#include "olddatabases.h"

#include "coagulation/vardo/updatedata.h"
#include "coagulation/vardo/updateprofile.h"
#include "coagulation/vardo/updateqc.h"
#include "coagulation/vardo/updatesyslog.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

namespace {

/// Checks that statements failed, and that nothing else is warned of.
/// \param sources names of the source files that may run the statements
/// \param failing how each of them begins, in their order; among them whole warnings of another form
void compareWarnings(const MessageRecorder &recorder, const QStringList &sources,
                     const QStringList &failing)
{
    static const QRegularExpression warning("^Warning: ");
    static const QRegularExpression form(
        R"(^Warning: coagulation/vardo/(\w+)\.cpp \( line \):  ".*\[ ")");
    const QStringList warnings = recorder.messages().filter(warning);
    QVERIFY2(warnings.size() == failing.size(), qUtf8Printable(warnings.join('\n')));
    for (qsizetype i = 0; i < failing.size(); ++i) {
        if (warnings.at(i) == "Warning: " + failing.at(i))
            continue;
        const QString source = form.match(warnings.at(i)).captured(1);
        QVERIFY2(sources.contains(source), qUtf8Printable(warnings.at(i)));
        QVERIFY2(warnings.at(i).contains("[ \"" + failing.at(i)), qUtf8Printable(warnings.at(i)));
    }
}

} // namespace

bool upgrade(const TestDatabase &database)
{
    return upgradeIn(database.folderPath(), QFileInfo(database.path()).completeBaseName());
}

bool upgradeIn(const QString &folder, const QString &name)
{
    coagulation::fileNameAffixes() = {folder + '/', ""};
    if (name == "profile")
        return coagulation::UpdateProfile().run();
    if (name == "data")
        return coagulation::UpdateData().run();
    if (name == "qc")
        return coagulation::UpdateQc().run();
    if (name == "syslog")
        return coagulation::UpdateSyslog().run();
    qFatal("%s: nothing upgrades it", qUtf8Printable(name));
}

QStringList referenceSchema(const QString &name)
{
    const TestDatabase reference;
    reference.load("../docs/schema/" + name + ".sql");
    return reference.comparableSchema();
}

void addVersionRows(const QString &name)
{
    QTest::addColumn<int>("stored");

    for (int version = 0; version <= newestVersionOf(name); ++version)
        QTest::addRow("%d", version) << version;
}

void verifyUpgrade(const QString &name, int stored, const ExpectedTables &tables)
{
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, stored);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(upgraded);
    QCOMPARE(recorder.messages(),
             QStringList{"Debug: Updating " + database.path()} + stepLog(name, stored)
                 + QStringList{QString("Debug: Updated version to %1").arg(newestVersionOf(name))});
    QCOMPARE(database.comparableSchema(), referenceSchema(name));
    for (const auto &[table, rows] : tables)
        QCOMPARE(database.table(table), rows);
}

void verifyUpgradeFails(const QString &name, int stored, const QStringList &obstacles,
                        const QStringList &failing, int step)
{
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, stored);
    database.execute(QStringList{"pragma legacy_alter_table=on"} + obstacles);
    const QStringList before = database.content();
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY(!upgraded);
    QCOMPARE(database.content(), before);
    QCOMPARE(recorder.messages().filter("Debug: update_v"), stepLog(name, stored, step));
    compareWarnings(recorder, {"update" + name, "updatebase"}, failing);
}

void verifyUpgradeIgnores(const QString &name, int stored, const QStringList &obstacles,
                          const QStringList &failing)
{
    const TestDatabase database(name + ".db");
    makeDatabaseAt(database, name, stored);
    database.execute(QStringList{"pragma legacy_alter_table=on"} + obstacles);
    const MessageRecorder recorder;

    const bool upgraded = upgrade(database);

    QVERIFY2(upgraded, qUtf8Printable(recorder.messages().join('\n')));
    QCOMPARE(database.table("version"), QStringList{QString::number(newestVersionOf(name))});
    compareWarnings(recorder, {"update" + name}, failing);
}
