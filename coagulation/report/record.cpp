// SPDX-License-Identifier: MIT
#include "coagulation/report/record.h"

#include "coagulation/report/filecopy.h"
#include "coagulation/vardo/execute.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSysInfo>

namespace coagulation::report {

namespace {

QString sqliteVersion()
{
    const QString name = "version of SQLite";
    QString version;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", name);
        database.setDatabaseName(":memory:");
        database.open();
        QSqlQuery query(database);
        if (execute(query, "select sqlite_version()") && query.next())
            version = query.value(0).toString();
    }
    QSqlDatabase::removeDatabase(name);
    return version;
}

/// \param ownFolder whose owner is asked, since a variable can say anything; Windows has the variable only
QString userOf(const QString &ownFolder)
{
    const QString owner = QFileInfo(ownFolder).owner();
    return owner.isEmpty() ? qEnvironmentVariable("USERNAME") : owner;
}

QByteArray digestOfProgram(const QString &program)
{
    QFile file(program);
    if (program.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    return digestOf(file, [](qint64) { return true; });
}

} // namespace

Record recordOf(const QString &ownFolder, const QString &program)
{
    return {.time = QDateTime::currentDateTime(),
            .host = QSysInfo::machineHostName(),
            .user = userOf(ownFolder),
            .program = program,
            .programSha256 = digestOfProgram(program),
            .vardoVersion = VARDO_VERSION,
            .qtVersion = qVersion(),
            .sqliteVersion = sqliteVersion()};
}

} // namespace coagulation::report
