// SPDX-License-Identifier: MIT
#include "toolrun.h"

#include "drivertexts.h"
#include "platform.h"

#include <QDir>
#include <QFile>

namespace {

constexpr int timeout = 120'000; // ms, for large databases under the sanitizers

[[noreturn]] void fail(const QProcess &process)
{
    qFatal("%s: %s", qUtf8Printable(process.program()), qUtf8Printable(process.errorString()));
}

} // namespace

RunningTool::RunningTool(const ToolCommand &command)
    : log(command.log.isEmpty() ? QString() : QDir(command.folder).filePath(command.log))
{
    process.setWorkingDirectory(command.folder);
    process.setProcessEnvironment(command.environment);
#ifdef Q_OS_UNIX
    if (command.inChild)
        process.setChildProcessModifier(command.inChild);
#endif
    process.start(command.program,
                  command.log.isEmpty() ? command.arguments
                                        : command.arguments + QStringList{command.log});
    if (!process.waitForStarted(timeout))
        fail(process);
    timer.start();
}

bool RunningTool::endsWithin(int msecs)
{
    return process.state() == QProcess::NotRunning || process.waitForFinished(msecs);
}

void RunningTool::kill()
{
    process.kill();
    process.waitForFinished(timeout);
}

ToolRun RunningTool::result()
{
    if (!endsWithin(timeout))
        fail(process);
    const bool exited = process.exitStatus() == QProcess::NormalExit;
    return {exited, exited ? process.exitCode() : -1,
            withPlainLineEnds(process.readAllStandardOutput()),
            withPlainLineEnds(process.readAllStandardError()),
            log.isEmpty() ? QStringList() : logLines(log)};
}

ToolRun runTool(const ToolCommand &command)
{
    return RunningTool(command).result();
}

ToolRun runToolOn(const QString &program, const QString &folder)
{
    const QString log = folder + "/upgrade.log";
    ToolRun run = runTool({program, {"-p", folder + '/'}, log});
    QFile::remove(log);
    return run;
}

QStringList logLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString log =
        QString::fromUtf8(withPlainLineEnds(file.readAll())).remove(" ((null):0, (null))");
    return withoutDriverTexts(log).split('\n', Qt::SkipEmptyParts);
}

QList<QStringList> partsOf(const QStringList &log)
{
    QList<QStringList> parts;
    for (const QString &line : log) {
        if (line.startsWith("Debug: Updating ") || parts.isEmpty())
            parts << QStringList();
        parts.last() << line;
    }
    return parts;
}

QStringList databaseFilesIn(const QString &folder)
{
    return QDir(folder).entryList({"*.db*"}, QDir::Files, QDir::Name);
}

QProcessEnvironment environmentWithLocale(const QString &locale)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("LANGUAGE"); // it would come before the locale
    environment.insert("LC_ALL", locale);
    return environment;
}
