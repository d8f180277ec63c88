// SPDX-License-Identifier: MIT
#include "wine.h"

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
