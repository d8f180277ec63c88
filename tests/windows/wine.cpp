// SPDX-License-Identifier: MIT
#include "wine.h"

#include <QDir>
#include <QFile>

namespace {

/// \return the environment with what Wine needs; it prints nothing of its own
QProcessEnvironment withWine(QProcessEnvironment environment)
{
    if (!environment.contains("WINEPREFIX"))
        environment.insert("WINEPREFIX", WINE_FOLDER);
    environment.insert("WINEDEBUG", "-all");
    return environment;
}

} // namespace

void startWine()
{
    constexpr int timeout = 300'000; // ms, for the first start on a busy machine

    QProcess wine;
    wine.setProcessEnvironment(withWine(QProcessEnvironment::systemEnvironment()));
    // Wine's services outlive this process, and with pipes the caller of the test would wait for them.
    wine.setStandardOutputFile(QProcess::nullDevice());
    wine.setStandardErrorFile(QProcess::nullDevice());
    wine.start("wine", {"wineboot"});
    if (!wine.waitForFinished(timeout) || wine.exitCode() != 0)
        qFatal("wine wineboot: %s", qUtf8Printable(wine.errorString()));
}

QString windowsPath(const QString &path)
{
    return "Z:" + QString(path).replace('/', '\\');
}

ToolCommand underWine(ToolCommand command)
{
    command.arguments.prepend(command.program);
    command.program = "wine";
    command.environment = withWine(command.environment);
    return command;
}

QByteArray asOnLinux(QByteArray text)
{
    return text.replace("\r\n", "\n").replace("Z:/", "/");
}

WineFolder::WineFolder()
{
    const QDir shared(withWine(QProcessEnvironment::systemEnvironment()).value("WINEPREFIX"));
    for (const QString &settings : shared.entryList(QDir::Files | QDir::Hidden))
        QFile::copy(shared.filePath(settings), folder.filePath(settings));
    // The disk C: is shared: it is large, and nothing writes to it.
    QDir(folder.path()).mkdir("dosdevices");
    if (!QFile::link(shared.filePath("drive_c"), folder.filePath("dosdevices/c:"))
        || !QFile::link("/", folder.filePath("dosdevices/z:")))
        qFatal("%s: no folder for Wine", qUtf8Printable(folder.path()));
}

WineFolder::~WineFolder()
{
    QProcess server;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("WINEPREFIX", folder.path());
    server.setProcessEnvironment(environment);
    server.start("wineserver", {"-k"});
    server.waitForFinished();
}
