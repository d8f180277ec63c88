// SPDX-License-Identifier: MIT
#include "otherprogram.h"

#include "testdatabase.h"

namespace {

constexpr int timeout = 60000; // ms, far above what any of the programs takes

} // namespace

OtherProgram::OtherProgram(const QString &path)
{
    shell.setProcessChannelMode(QProcess::MergedChannels);
    shell.start(sqliteShell(), {"-batch", "-quote", path});
}

void OtherProgram::ask(const QByteArray &statements)
{
    shell.write(statements + "\n.print ready\n");
    while (shell.bytesToWrite() > 0 && shell.waitForBytesWritten(timeout)) { }
}

QByteArray OtherProgram::answer()
{
    QByteArray output;
    while (!output.trimmed().endsWith("ready")) {
        if (!shell.waitForReadyRead(timeout))
            qFatal("sqlite3: %s", qUtf8Printable(shell.errorString()));
        output += shell.readAllStandardOutput();
    }
    return output.trimmed().chopped(5);
}

QByteArray OtherProgram::run(const QByteArray &statements)
{
    ask(statements);
    return answer();
}

void OtherProgram::close()
{
    shell.closeWriteChannel();
    shell.waitForFinished(timeout);
}

void OtherProgram::kill()
{
    shell.kill();
    shell.waitForFinished(timeout);
}
