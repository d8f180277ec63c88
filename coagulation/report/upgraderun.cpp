// SPDX-License-Identifier: MIT
#include "coagulation/report/upgraderun.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

namespace coagulation::report {

namespace {

/// \param line without its end
LogLine logLine(const QByteArray &line, std::optional<qint64> milliseconds = {})
{
    QString text = QString::fromUtf8(line);
    if (text.endsWith('\r'))
        text.chop(1);
    const QString ending = " ((null):0, (null))"; // of every line in a file
    if (text.endsWith(ending))
        text.chop(ending.size());
    const bool warning = text.startsWith("Warning:");
    return {std::move(text), milliseconds, warning};
}

QList<LogLine> linesOf(const QByteArray &text)
{
    QList<LogLine> lines;
    for (const QByteArray &line : text.split('\n')) {
        if (!line.isEmpty())
            lines << logLine(line);
    }
    return lines;
}

/// Reads a log while it grows.
class LogWatcher {
public:
    explicit LogWatcher(const QString &path)
        : file(path)
    {
        timer.start();
    }

    /// Takes the lines that have come to their end since the last call.
    void read(const std::function<void(const QString &)> &line)
    {
        if (!file.isOpen() && !(file.exists() && file.open(QIODevice::ReadOnly)))
            return;
        rest += file.readAll();
        qsizetype end = 0;
        while ((end = rest.indexOf('\n')) >= 0) {
            log << logLine(rest.first(end), elapsed());
            rest.remove(0, end + 1);
            line(log.last().text);
        }
    }

    /// \return false if there is no log
    bool exists() const { return file.isOpen(); }
    qint64 elapsed() const { return timer.elapsed(); }
    QList<LogLine> lines() const { return log; }

private:
    QFile file;
    QByteArray rest{}; ///< the beginning of a line
    QElapsedTimer timer{};
    QList<LogLine> log{};
};

QStringList argumentsFor(const DatabaseNames &names)
{
    QStringList arguments;
    if (!names.prefix.isEmpty())
        arguments << "-p" << names.prefix;
    if (!names.suffix.isEmpty())
        arguments << "-s" << names.suffix;
    return arguments;
}

/// \return the file name, without its folder, in a line that begins with a database's part of the log; else none
QString openedFile(const QString &line)
{
    static const QRegularExpression opening(
        R"(^(?:Debug: Updating (.*)|Warning: File doesn't exist: (.*), skipped)$)");
    const QRegularExpressionMatch match = opening.match(line);
    const QString path = match.captured(1) + match.captured(2);
    return path.mid(path.lastIndexOf('/') + 1);
}

/// \param end of the run; becomes the time at which the part ended
QList<LogLine> partOf(const QList<LogLine> &log, const QString &fileName,
                      std::optional<qint64> &end)
{
    QList<LogLine> part;
    for (const LogLine &line : log) {
        const QString opened = openedFile(line.text);
        if (!part.isEmpty() && !opened.isEmpty()) {
            end = line.milliseconds;
            break;
        }
        if (!part.isEmpty() || (opened == fileName && !line.warning))
            part << line;
    }
    return part;
}

std::optional<qint64> between(std::optional<qint64> from, std::optional<qint64> to)
{
    return from && to ? std::optional(*to - *from) : std::nullopt;
}

/// \param previous time of the line before that belongs to the course of the upgrade
std::optional<StepFacts> stepIn(const LogLine &line, std::optional<qint64> previous)
{
    static const QRegularExpression course(R"(^Debug: (update_v\d+\(\)) *: (PASS|FAIL|SKIP)$)");
    const QRegularExpressionMatch match = course.match(line.text);
    if (!match.hasMatch())
        return std::nullopt;
    const QString result = match.captured(2);
    StepFacts step{match.captured(1), StepResult::Skip, {}};
    if (result != "SKIP") {
        step.result = result == "PASS" ? StepResult::Pass : StepResult::Fail;
        step.milliseconds = between(previous, line.milliseconds);
    }
    return step;
}

} // namespace

const QStringList &databases()
{
    static const QStringList names{"profile", "data", "qc", "syslog"};
    return names;
}

UpgradeRun runUpgrade(const QString &program, const QString &folder, const DatabaseNames &names,
                      const std::function<void(const QString &)> &line,
                      const std::function<bool()> &stop)
{
    constexpr int pause = 20; // ms
    const QString logName = "upgrade.log";
    QProcess vardo;
    vardo.setWorkingDirectory(folder);
    vardo.setStandardInputFile(QProcess::nullDevice());
    vardo.setStandardOutputFile(QProcess::nullDevice());
    LogWatcher log(folder + '/' + logName);
    vardo.start(program, argumentsFor(names) << logName);
    if (!vardo.waitForStarted())
        return {QString("%1 did not start: %2.").arg(program, vardo.errorString())};

    while (!vardo.waitForFinished(pause)) {
        log.read(line);
        if (stop()) {
            vardo.kill();
            vardo.waitForFinished();
            break;
        }
    }
    UpgradeRun run{.milliseconds = log.elapsed()};
    log.read(line);
    run.log = log.exists() ? log.lines() : linesOf(vardo.readAllStandardError());
    if (vardo.exitStatus() == QProcess::NormalExit)
        run.exitCode = vardo.exitCode();
    else
        run.problem = QString("%1 did not end by itself: it crashed or was killed.").arg(program);
    return run;
}

std::optional<QList<LogLine>> readLog(const QString &path, const DatabaseNames &names)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;

    QStringList own;
    for (const QString &database : databases())
        own << names.fileName(database);
    QList<LogLine> run;
    bool inside = true;
    bool found = false;
    for (const LogLine &line : linesOf(file.readAll())) {
        const QString opened = openedFile(line.text);
        found = found || own.contains(opened);
        if (opened == own.first()) {
            run.clear();
            inside = true;
        } else if (!opened.isEmpty() && !own.contains(opened)) {
            inside = false; // a run on other databases
        }
        if (inside)
            run << line;
    }
    return found ? run : QList<LogLine>();
}

LoggedUpgrade upgradeIn(const QList<LogLine> &log, const QString &fileName,
                        std::optional<qint64> end)
{
    const QList<LogLine> part = partOf(log, fileName, end);
    if (part.isEmpty())
        return {};

    LoggedUpgrade upgrade;
    upgrade.milliseconds = between(part.first().milliseconds, end);
    std::optional<qint64> previous = part.first().milliseconds;
    for (const LogLine &line : part) {
        const std::optional<StepFacts> step = stepIn(line, previous);
        if (!step)
            continue;
        upgrade.steps << *step;
        previous = line.milliseconds;
    }
    return upgrade;
}

QString partOfUpgrade(const QString &line)
{
    const std::optional<StepFacts> step = stepIn({line}, {});
    return step ? step->signature : openedFile(line);
}

} // namespace coagulation::report
