// SPDX-License-Identifier: MIT
#include "laboratory.h"

#include "olddatabases.h"
#include "testdatabase.h"
#include "testfiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

const QStringList names{"profile", "data", "qc", "syslog"};

/// \return the path of a sample, which is made once
QString sampleOf(const QString &name)
{
    static const QTemporaryDir samples;
    QString path = samples.filePath(name + ".db");
    if (!QFile::exists(path)) {
        const TestDatabase database(name + ".db");
        makeDatabaseAt(database, name, 0);
        if (!QFile::copy(database.path(), path))
            qFatal("no copy of %s", qUtf8Printable(database.path()));
    }
    return path;
}

} // namespace

Laboratory::Laboratory(const QString &prefix, const QString &suffix)
    : prefixBefore(prefix)
    , suffixBehind(suffix)
{
    for (const QString &name : names) {
        const QString database = path(prefix + name + suffix + ".db");
        if (!QFile::copy(sampleOf(name), database))
            qFatal("no copy to %s", qUtf8Printable(database));
    }
}

QStringList Laboratory::filesIn(const QString &path)
{
    QStringList files;
    for (const QFileInfo &file : QDir(path).entryInfoList(QDir::Files, QDir::Name)) {
        const QByteArray digest =
            QCryptographicHash::hash(fileBytes(file.filePath()), QCryptographicHash::Sha1);
        if (!file.fileName().endsWith("-shm"))
            files << file.fileName() + ' ' + digest.toHex();
    }
    return files;
}

ToolCommand Laboratory::command(const QStringList &arguments) const
{
    ToolCommand command{.program = VARDO_REPORT, .arguments = arguments, .folder = results.path()};
    for (const char *variable : {"TMPDIR", "TMP", "TEMP"})
        command.environment.insert(variable, QDir::toNativeSeparators(temporary.path()));
    return command;
}

ToolRun Laboratory::run(const QStringList &arguments) const
{
    ToolRun run = runTool(command(arguments + QStringList{"--json", "facts.json"}));
    if (!run.exited)
        qFatal("a crash: %s", run.errors.constData());
    return run;
}

QStringList Laboratory::rehearsal(const QStringList &more) const
{
    return QStringList{"rehearse", "-p", folder.path() + '/' + prefixBefore, "-s", suffixBehind}
    + more;
}

QJsonObject Laboratory::facts() const
{
    return QJsonDocument::fromJson(fileBytes(result("facts.json"))).object();
}

QByteArray Laboratory::pageText() const
{
    return fileBytes(page());
}

QStringList Laboratory::temporaryFiles() const
{
    return QDir(temporary.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
}

bool Laboratory::removeTemporaryFiles() const
{
    for (const QString &name : temporaryFiles())
        QDir(temporary.filePath(name)).removeRecursively();
    return temporaryFiles().isEmpty();
}

QJsonObject databaseIn(const QJsonObject &facts, const QString &name)
{
    const QJsonArray databases = facts.value("databases").toArray();
    for (const auto &value : databases) {
        QJsonObject database = value.toObject();
        if (database.value("name") == name)
            return database;
    }
    return {};
}
