// SPDX-License-Identifier: MIT
#include "testdatabase.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

namespace {

const char *const connectionName = "test";

/// A connection that is gone, with its file closed, at the end of the scope.
class Connection {
public:
    explicit Connection(const QString &path)
        : database(QSqlDatabase::addDatabase("QSQLITE", connectionName))
    {
        database.setDatabaseName(path);
        if (!database.open())
            qFatal("%s: %s", qUtf8Printable(path), qUtf8Printable(database.lastError().text()));
        execute("pragma synchronous=off"); // tests need no power-loss safety, only speed
    }
    ~Connection()
    {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(connectionName);
    }
    Q_DISABLE_COPY_MOVE(Connection)

    QSqlQuery execute(const QString &statement) const
    {
        QSqlQuery query(database);
        if (!query.exec(statement))
            qFatal("%s: %s", qUtf8Printable(query.lastError().text()), qUtf8Printable(statement));
        return query;
    }

    QStringList rows(const QString &statement) const
    {
        const int columns = execute(statement).record().count();
        QStringList names;
        QStringList literals;
        for (int i = 0; i < columns; ++i) {
            names << QString("c%1").arg(i);
            literals << QString("quote(c%1)").arg(i);
        }
        QSqlQuery query = execute(QString("with q(%1) as (%2) select %3 from q")
                                      .arg(names.join(','), statement, literals.join("||', '||")));
        QStringList rows;
        while (query.next())
            rows << query.value(0).toString();
        return rows;
    }

    QStringList texts(const QString &statement) const
    {
        QSqlQuery query = execute(statement);
        QStringList texts;
        while (query.next())
            texts << query.value(0).toString();
        return texts;
    }

private:
    QSqlDatabase database;
};

} // namespace

QString sqliteShell()
{
    return SQLITE3;
}

void executeOn(const QString &path, const QStringList &statements)
{
    const Connection connection(path);
    for (const QString &statement : statements)
        connection.execute(statement);
}

QStringList databaseRows(const QString &path, const QString &query)
{
    return Connection(path).rows(query);
}

QStringList databaseContent(const QString &path)
{
    const Connection connection(path);
    QStringList content = connection.texts("select sql from sqlite_master where sql notnull"
                                           " order by type, name");
    for (const QString &table :
         connection.texts("select name from sqlite_master where type = 'table' order by name"))
        content << table << connection.rows(QString("select * from \"%1\" not indexed").arg(table));
    return content;
}

TestDatabase::TestDatabase(QString name)
    : fileName(std::move(name))
{
    executeOn(path(), {"vacuum"}); // so that the file exists
}

TestDatabase::~TestDatabase()
{
    if (QCoreApplication::instance() == nullptr)
        return; // the program ends, and the connections have ended before
    QSqlDatabase left = QSqlDatabase::database(QSqlDatabase::defaultConnection, false);
    if (left.databaseName() == path() || left.databaseName() == fileName)
        left.close();
}

void TestDatabase::load(const QString &sample) const
{
    QProcess shell;
    shell.setStandardInputFile(QString(SAMPLES) + '/' + sample);
    shell.start(sqliteShell(), {"-bail", "-cmd", "pragma synchronous=off", path()});
    if (!shell.waitForFinished() || shell.exitCode() != 0)
        qFatal("%s: %s, exit code %d: %s", qUtf8Printable(sample),
               qUtf8Printable(shell.errorString()), shell.exitCode(),
               shell.readAllStandardError().constData());
}

void TestDatabase::execute(const QStringList &statements) const
{
    executeOn(path(), statements);
}

QStringList TestDatabase::rows(const QString &query) const
{
    return databaseRows(path(), query);
}

QStringList TestDatabase::table(const QString &name) const
{
    return rows(QString("select * from \"%1\" not indexed").arg(name));
}

QStringList TestDatabase::schema() const
{
    QStringList schema = Connection(path()).texts("select sql from sqlite_master where sql notnull"
                                                  " order by type, name");
    for (QString &statement : schema)
        statement = statement.simplified();
    return schema.replaceInStrings("( ", "(").replaceInStrings(" )", ")").replaceInStrings(" ,",
                                                                                           ",");
}

QStringList TestDatabase::comparableSchema() const
{
    static const QRegularExpression quotedTable(R"re(^CREATE TABLE "(\w+)")re");
    QStringList comparable = schema();
    comparable.replaceInStrings(quotedTable, R"(CREATE TABLE \1)")
        .replaceInStrings(" (", "(")
        .sort();
    return comparable;
}

QStringList TestDatabase::content() const
{
    return databaseContent(path());
}

QByteArray TestDatabase::bytes() const
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
