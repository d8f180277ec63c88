// SPDX-License-Identifier: MIT
/// What a step cannot move to a new table: it is kept, or at least reported.

#include "coagulation/vardo/updatebase.h"

#include "coagulation/vardo/connection.h"
#include "coagulation/vardo/execute.h"

#include <QDebug>
#include <QSqlQuery>

namespace coagulation {

void UpdateBase::reportLeftValues(const QString &table, const QStringList &copied)
{
    if (!typesOf(table).contains("table"))
        return;
    for (const QString &column : columnsOf(table)) {
        if (copied.contains(column, Qt::CaseInsensitive))
            continue;
        if (!verifyTransaction())
            return;
        QSqlQuery query;
        if (!execute(query, QString("select count(%1.%2) from %1").arg(table, quoted(column)))
            || !query.next())
            logSqlError(query, SOURCE_LINE);
        else if (const qint64 values = query.value(0).toLongLong(); values > 0)
            qWarning("Left %lld values of %s.%s behind", values, qUtf8Printable(table),
                     qUtf8Printable(column.simplified())); // one line, whatever the name holds
    }
}

std::optional<qint64> UpdateBase::countRows(const QString &table)
{
    if (!typesOf(table).contains("table"))
        return 0;
    QSqlQuery query;
    if (execute(query, QString("select count(*) from %1").arg(table)) && query.next())
        return query.value(0).toLongLong();
    logSqlError(query, SOURCE_LINE);
    return std::nullopt;
}

bool UpdateBase::keepUnmoved(const QString &table, std::optional<qint64> rows)
{
    const QString plainName = table + "_unmoved";
    QString name = plainName;
    for (int number = 2; !typesOf(name).isEmpty(); ++number)
        name = plainName + QString::number(number);
    if (!verifyTransaction())
        return false;
    const QString what = rows ? QString("%1 rows").arg(*rows) : "the rows";
    qWarning("Kept %s of %s in %s", qUtf8Printable(what), qUtf8Printable(table),
             qUtf8Printable(name));
    return renameTable(table, name);
}

QStringList UpdateBase::columnsOf(const QString &table)
{
    // the hidden ones are those of a virtual table that it does not show
    return namesFrom(
        QString("select name from pragma_table_xinfo('%1') where hidden <> 1").arg(table));
}

QStringList UpdateBase::typesOf(const QString &name)
{
    return namesFrom(
        QString("select type from sqlite_master where name = '%1' collate nocase").arg(name));
}

QStringList UpdateBase::namesFrom(const QString &sql)
{
    if (!verifyTransaction())
        return {};
    QSqlQuery query;
    query.setForwardOnly(true);
    if (!execute(query, sql)) {
        logSqlError(query, SOURCE_LINE);
        return {};
    }
    QStringList names;
    (void)readRows(query, SOURCE_LINE, [&] {
        names << query.value(0).toString();
        return true;
    });
    return names;
}

} // namespace coagulation
