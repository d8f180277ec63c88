// SPDX-License-Identifier: MIT
#include "drivertexts.h"

#include <QDir>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>

namespace {

/// Makes a connection fail in each way that an upgrade may.
/// \return what the driver adds to SQLite's texts
QStringList askTheDriver()
{
    const QString name = "driver texts";
    QStringList texts;
    const auto note = [&texts](const QSqlError &error) {
        if (!error.isValid())
            qFatal("The driver was to fail.");
        if (!error.driverText().isEmpty())
            texts << ' ' + error.driverText();
    };
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", name);
        database.setDatabaseName(QDir::tempPath()); // a folder
        database.open();
        note(database.lastError());

        database.setDatabaseName(":memory:");
        if (!database.open())
            qFatal("%s", qUtf8Printable(database.lastError().text()));
        database.commit(); // of no transaction
        note(database.lastError());
        database.rollback();
        note(database.lastError());
        database.transaction();
        database.transaction();
        note(database.lastError());

        QSqlQuery query(database);
        const QString overflow = "select abs(a - 9223372036854775807) from (select %1 as a"
                                 " union all select -1)"; // at the -1
        for (const QString &failing :
             {QString("select * from missing"), QString("select 1; select 2"), overflow.arg(-1)}) {
            query.exec(failing);
            note(query.lastError());
        }
        query.exec(overflow.arg(0));
        while (query.next()) { }
        note(query.lastError());
    }
    QSqlDatabase::removeDatabase(name);
    texts.removeDuplicates();
    return texts;
}

} // namespace

QString withoutDriverTexts(QString line)
{
    static const QStringList texts = askTheDriver();
    for (const QString &text : texts)
        line.remove(text);
    return line;
}
