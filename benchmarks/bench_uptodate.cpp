// SPDX-License-Identifier: MIT
/// The least that a Qt program does to databases which are up to date: in each file named on the
/// command line it writes the version again, in one transaction.

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace {

/// \return false after a failure
bool rewriteVersion(const QString &path)
{
    QSqlDatabase::removeDatabase(QSqlDatabase::defaultConnection);
    QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE");
    database.setDatabaseName(path);
    if (!database.open())
        return false;

    QSqlQuery query;
    if (!query.exec("begin immediate") || !query.exec("select version from version")
        || !query.next())
        return false;
    const int version = query.value(0).toInt();
    return query.exec("delete from version")
        && query.exec(QString("insert into version values(%1)").arg(version)) && database.commit();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    for (const QString &path : QCoreApplication::arguments().mid(1)) {
        if (!rewriteVersion(path)) {
            qWarning("%s: %s", qUtf8Printable(path),
                     qUtf8Printable(QSqlDatabase::database().lastError().text()));
            return 1;
        }
    }
    return 0;
}
