// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <functional>

/// What the tool is started with.
struct ToolCommand {
    QString program; ///< path of the tool, or a program that starts it
    QStringList arguments{};
    QString log{};    ///< the log file, which becomes the last argument; empty for none
    QString folder{}; ///< the working folder; empty for that of the test
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
#ifdef Q_OS_UNIX
    std::function<void()> inChild{}; ///< called in the new process before the tool is loaded
#endif
};

/// What is left of a run of the tool.
struct ToolRun {
    bool exited = false; ///< by itself: not killed, no crash
    int exitCode = -1;   ///< of a run that exited
    QByteArray output;   ///< standard output, as by withPlainLineEnds()
    QByteArray errors;   ///< standard error, as by withPlainLineEnds()
    QStringList log;     ///< as by logLines(); of a killed run what had been written
};

/// A run of the tool that goes on beside the test, at the most as long as this lives.
class RunningTool {
public:
    explicit RunningTool(const ToolCommand &command);
    ~RunningTool() { kill(); }
    Q_DISABLE_COPY_MOVE(RunningTool)

    bool endsWithin(int msecs);
    /// \return the time since the start in ms
    qint64 elapsed() const { return timer.elapsed(); }
    void kill();

    /// Waits for the end; a run that takes far too long ends the test program. To be called again for the
    /// exit code and the log only: the streams are empty then.
    ToolRun result();

private:
    QProcess process;
    QString log;
    QElapsedTimer timer;
};

/// Runs the tool to its end.
ToolRun runTool(const ToolCommand &command);

/// Runs the tool to its end on the databases of a folder, with a log that is gone afterwards.
/// \param program path of the tool
ToolRun runToolOn(const QString &program, const QString &folder);

/// \return the lines of a log, without what the handler puts at their ends and without Qt's own words
///         (see withoutDriverTexts()); none when there is no log
QStringList logLines(const QString &path);

/// \return the part of a log for each database, in their order
QList<QStringList> partsOf(const QStringList &log);

/// \return the names of the databases in a folder, and of what SQLite keeps beside them
QStringList databaseFilesIn(const QString &folder);

/// \return the environment of the test, but with a locale; see canHaveLocale()
QProcessEnvironment environmentWithLocale(const QString &locale);
