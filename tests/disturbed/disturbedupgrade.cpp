// SPDX-License-Identifier: MIT
#include "disturbedupgrade.h"

#include "olddatabases.h"
#include "today.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace {

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray hashOf(const DisturbedUpgrade::Files &files)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (auto file = files.begin(); file != files.end(); ++file) {
        hash.addData(file.key().toUtf8() + '\0' + QByteArray::number(file.value().size()) + '\0');
        hash.addData(file.value());
    }
    return hash.result();
}

/// \return the first finding of SQLite's full check, "ok" or its error
QString integrity(const QString &path)
{
    QString finding;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "integrity");
        database.setDatabaseName(path);
        database.open();
        QSqlQuery check(database);
        check.exec("pragma synchronous=off"); // the test itself need not survive
        if (check.exec("pragma integrity_check") && check.next())
            finding = check.value(0).toString();
        else
            finding = check.lastError().text();
    }
    QSqlDatabase::removeDatabase("integrity");
    return finding;
}

} // namespace

DisturbedUpgrade::DisturbedUpgrade(const QString &database, Writing writing, QString vardo)
    : fileName(database + ".db")
    , program(std::move(vardo))
{
    const TestDatabase old(fileName);
    makeDatabaseAt(old, database, 0);
    if (writing == Writing::Spilling)
        old.execute({"pragma default_cache_size=10"});
    if (writing == Writing::Ahead)
        old.execute({"pragma journal_mode=wal"});
    before.insert(fileName, old.bytes());
    oldContent = withToday(old.content());

    setFiles(before);
    if (const ToolRun undisturbed = run(); undisturbed.exitCode != 0)
        qFatal("%s", qUtf8Printable(undisturbed.log.join('\n')));
    newContent = withToday(databaseContent(path()));
    setFiles(before);
}

bool DisturbedUpgrade::isSanitized()
{
#ifdef __SANITIZE_ADDRESS__
    return true;
#else
    return false;
#endif
}

DisturbedUpgrade::Files DisturbedUpgrade::files() const
{
    Files files;
    for (const QString &name : QDir(folder()).entryList(QDir::Files))
        files.insert(name, read(folder() + '/' + name));
    return files;
}

void DisturbedUpgrade::setFiles(const Files &files) const
{
    QDir(folder()).removeRecursively();
    QDir().mkpath(folder());
    for (auto file = files.begin(); file != files.end(); ++file) {
        QFile copy(folder() + '/' + file.key());
        if (!copy.open(QIODevice::WriteOnly) || copy.write(file.value()) != file.value().size())
            qFatal("%s: %s", qUtf8Printable(copy.fileName()), qUtf8Printable(copy.errorString()));
    }
}

ToolRun DisturbedUpgrade::run(const QProcessEnvironment &environment,
                              const std::function<void()> &disturb) const
{
    const QString log = aside("log.txt");
    QFile::remove(log);
    return runTool({.program = program,
                    .arguments = {"-p", folder() + '/'},
                    .log = log,
                    .folder = root.path(),
                    .environment = environment,
                    .inChild = disturb});
}

QString DisturbedUpgrade::outcome()
{
    QString finding = integrity(path());
    if (finding != "ok")
        return finding;
    const QByteArray bytes = read(path());
    if (!outcomes.contains(bytes))
        outcomes.insert(bytes, compare());
    return outcomes.value(bytes);
}

QString DisturbedUpgrade::compare() const
{
    const QStringList content = withToday(databaseContent(path()));
    if (content == oldContent)
        return "old";
    if (content == newContent)
        return "new";
    return "a mixture of old and new";
}

QString DisturbedUpgrade::outcomeOfAnotherRun()
{
    const QByteArray state = hashOf(files());
    if (!finished.contains(state)) {
        const ToolRun another = run();
        if (another.exitCode != 0)
            return "another run fails: " + another.log.join('\n');
        if (const QString left = outcome(); left != "new")
            return "another run leaves: " + left;
        finished.insert(state);
    }
    return "new";
}
