// SPDX-License-Identifier: MIT
#include "driversqlite.h"

#include "testdatabase.h"

QString otherSqliteInDriver(const QString &linked)
{
    const QString used = databaseRows(":memory:", "select sqlite_source_id()").constFirst();
    if (used == '\'' + linked + '\'')
        return {};
    return QString("Qt's driver uses SQLite %1, the test is linked to '%2'").arg(used, linked);
}
