// SPDX-License-Identifier: MIT
/// The log, seen from outside: a helper process sends messages, the tests read what it wrote.

#include "platform.h"

#include "coagulation/vardo/sourceline.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QByteArray debugLine = "Debug: debug: 凝血 ((null):0, (null))\n";
const QByteArray warningLine = "Warning: warning: 凝血 ((null):0, (null))\n";

/// \return true if the process ended itself by abort()
bool hasAborted(const QProcess &process)
{
#ifdef Q_OS_WIN
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 3;
#else
    return process.exitStatus() == QProcess::CrashExit;
#endif
}

} // namespace

class TestConsoleLog : public QObject {
    Q_OBJECT

private slots:
    void init();

    void writesOneLineAMessage_data();
    void writesOneLineAMessage();
    void endsLinesAsTheSystemDoes();
    void writesTheSourceContextThatAMessageHas();
    void showsSourceFilesAlike_data();
    void showsSourceFilesAlike();
    void dropsAMessageOfUnknownType();
    void writesAFatalMessageBeforeTheAbort();
    void writesNothingAfterAFatalMessage();
    void appendsToAnExistingLog();
    void appendsToWhatAnotherProcessWroteMeanwhile();
    void tearsNoLineOfAnotherProcess();
    void givesMessagesBackToQtWhenClosed();
    void flushesWhenClosed();
    void doesNotFlushEachMessage();
    void takesAnyFileName_data();
    void takesAnyFileName();
    void leavesMessagesOnStandardErrorWithoutALog_data();
    void leavesMessagesOnStandardErrorWithoutALog();
    void survivesALogThatCannotBeWritten();
    void abortsOnAFatalMessageOnly_data();
    void abortsOnAFatalMessageOnly();

private:
    QByteArray readBytes(const QString &fileName) const;
    QByteArray read(const QString &fileName) const
    {
        return withPlainLineEnds(readBytes(fileName));
    }
    std::unique_ptr<QProcess> start(const QStringList &arguments) const;
    /// \return the helper's process, finished
    std::unique_ptr<QProcess> send(const QStringList &arguments) const;

    std::unique_ptr<QTemporaryDir> folder;
};

void TestConsoleLog::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

QByteArray TestConsoleLog::readBytes(const QString &fileName) const
{
    QFile file(folder->filePath(fileName));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

std::unique_ptr<QProcess> TestConsoleLog::start(const QStringList &arguments) const
{
    auto process = std::make_unique<QProcess>();
    process->setWorkingDirectory(folder->path());
    process->start(MESSAGESENDER, arguments);
    return process;
}

std::unique_ptr<QProcess> TestConsoleLog::send(const QStringList &arguments) const
{
    auto process = start(arguments);
    if (!process->waitForFinished())
        qFatal("messagesender: %s", qUtf8Printable(process->errorString()));
    return process;
}

void TestConsoleLog::writesOneLineAMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("line");

    QTest::newRow("debug") << "debug" << QByteArray("Debug: debug: 凝血 ((null):0, (null))\n");
    QTest::newRow("info") << "info" << QByteArray("Info: info: 凝血 ((null):0, (null))\n");
    QTest::newRow("warning") << "warning"
                             << QByteArray("Warning: warning: 凝血 ((null):0, (null))\n");
    QTest::newRow("critical") << "critical"
                              << QByteArray("Critical: critical: 凝血 ((null):0, (null))\n");
}

/// Shows: LOG-2
void TestConsoleLog::writesOneLineAMessage()
{
    QFETCH(QString, message);
    QFETCH(QByteArray, line);

    const auto process = send({"log.txt", message});

    QCOMPARE(read("log.txt"), line);
    QCOMPARE(process->readAllStandardError(), QByteArray());
    QCOMPARE(process->readAllStandardOutput(), QByteArray());
    QCOMPARE(process->exitCode(), 0);
}

/// Shows: LOG-2
void TestConsoleLog::endsLinesAsTheSystemDoes()
{
    const auto process = send({"log.txt", "debug", "info", "close", "warning"});

    QCOMPARE(readBytes("log.txt"),
             "Debug: debug: 凝血 ((null):0, (null))" + lineEnd()
                 + "Info: info: 凝血 ((null):0, (null))" + lineEnd());
    QCOMPARE(process->readAllStandardError(), "warning: 凝血" + lineEnd());
}

void TestConsoleLog::writesTheSourceContextThatAMessageHas()
{
    send({"log.txt", "context"});

    QCOMPARE(read("log.txt"), QByteArray("Warning: context: 凝血 (assay.cpp:12, void run())\n"));
}

void TestConsoleLog::showsSourceFilesAlike_data()
{
    using coagulation::sourcePath;
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("expected");

    QTest::newRow("Windows") << sourcePath<R"(C:\build\coagulation\vardo\x.cpp)">()
                             << "coagulation/vardo/x.cpp";
    QTest::newRow("Unix") << sourcePath<"/build/coagulation/vardo/x.cpp">()
                          << "coagulation/vardo/x.cpp";
    QTest::newRow("built in a folder of the same name")
        << sourcePath<R"(D:\coagulation\coagulation\vardo\x.cpp)">() << "coagulation/vardo/x.cpp";
    QTest::newRow("of the tests") << sourcePath<R"(tests\engine\x.cpp)">() << "tests/engine/x.cpp";
}

void TestConsoleLog::showsSourceFilesAlike()
{
    QFETCH(QString, shown);
    QFETCH(QString, expected);

    QCOMPARE(shown, expected);
}

void TestConsoleLog::dropsAMessageOfUnknownType()
{
    const auto process = send({"log.txt", "unknown", "info"});

    QCOMPARE(read("log.txt"), QByteArray("Info: info: 凝血 ((null):0, (null))\n"));
    QCOMPARE(process->readAllStandardError(), QByteArray());
}

void TestConsoleLog::writesAFatalMessageBeforeTheAbort()
{
    const auto process = send({"log.txt", "debug", "fatal"});

    QCOMPARE(read("log.txt"),
             QByteArray("Debug: debug: 凝血 ((null):0, (null))\n"
                        "Fatal: fatal: 凝血 ((null):0, (null))\n"));
    QVERIFY(hasAborted(*process));
}

void TestConsoleLog::writesNothingAfterAFatalMessage()
{
    send({"log.txt", "fatal", "debug"});

    QCOMPARE(read("log.txt"), QByteArray("Fatal: fatal: 凝血 ((null):0, (null))\n"));
}

void TestConsoleLog::appendsToAnExistingLog()
{
    send({"log.txt", "debug"});
    send({"log.txt", "info"});

    QCOMPARE(read("log.txt"),
             QByteArray("Debug: debug: 凝血 ((null):0, (null))\n"
                        "Info: info: 凝血 ((null):0, (null))\n"));
}

/// Shows: LOG-6
void TestConsoleLog::appendsToWhatAnotherProcessWroteMeanwhile()
{
    const auto waiting = start({"log.txt", "debug", "flush", "wait", "debug"});
    (void)QTest::qWaitFor([this] { return read("log.txt") == debugLine; });
    QCOMPARE(read("log.txt"), debugLine);
    send({"log.txt", "warning"});
    waiting->closeWriteChannel();
    QVERIFY(waiting->waitForFinished());

    QCOMPARE(read("log.txt"), debugLine + warningLine + debugLine);
}

/// Shows: LOG-6
void TestConsoleLog::tearsNoLineOfAnotherProcess()
{
    if (!appendsInOneStep())
        QSKIP(
            "Wine appends in two steps: lines that are written at the same moment are NOT tested");
    constexpr int count = 500;
    QStringList debugs{"log.txt"};
    QStringList warnings{"log.txt"};
    for (int i = 0; i < count; ++i) {
        debugs << "debug"
               << "flush";
        warnings << "warning"
                 << "flush";
    }

    const auto one = start(debugs);
    const auto other = start(warnings);
    QVERIFY(one->waitForFinished() && other->waitForFinished());

    const QByteArray log = read("log.txt");
    QCOMPARE(log.count(debugLine), count);
    QCOMPARE(log.count(warningLine), count);
    QCOMPARE(log.size(), count * (debugLine.size() + warningLine.size()));
}

void TestConsoleLog::givesMessagesBackToQtWhenClosed()
{
    const auto process = send({"log.txt", "debug", "close", "warning"});

    QCOMPARE(read("log.txt"), debugLine);
    QCOMPARE(withPlainLineEnds(process->readAllStandardError()), QByteArray("warning: 凝血\n"));
}

void TestConsoleLog::flushesWhenClosed()
{
    send({"log.txt", "debug", "close", "vanish"});

    QCOMPARE(read("log.txt"), debugLine);
}

void TestConsoleLog::doesNotFlushEachMessage()
{
    send({"log.txt", "debug", "vanish"});

    QCOMPARE(read("log.txt"), QByteArray());
}

void TestConsoleLog::takesAnyFileName_data()
{
    QTest::addColumn<QString>("fileName");

    QTest::newRow("blanks") << " upgrade log .txt";
    QTest::newRow("a blank at the end") << "upgrade log.txt ";
    QTest::newRow("Chinese") << "升级日志.txt";
    QTest::newRow("beyond the basic plane") << "🩸.txt";
    QTest::newRow("percent signs") << "%s%n%1.txt";
}

void TestConsoleLog::takesAnyFileName()
{
    QFETCH(QString, fileName);
    if (!canBeFileName(fileName))
        QSKIP("Windows has no such file names: this one is NOT tested");

    send({fileName, "debug"});

    QCOMPARE(read(fileName), debugLine);
}

void TestConsoleLog::leavesMessagesOnStandardErrorWithoutALog_data()
{
    QTest::addColumn<QString>("fileName");

    QTest::newRow("no name") << "";
    QTest::newRow("a folder") << ".";
    QTest::newRow("in a folder that is not there") << "missing/log.txt";
}

void TestConsoleLog::leavesMessagesOnStandardErrorWithoutALog()
{
    QFETCH(QString, fileName);

    const auto process = send({fileName, "debug", "warning", "close", "info"});

    QCOMPARE(withPlainLineEnds(process->readAllStandardError()),
             QByteArray("debug: 凝血\nwarning: 凝血\ninfo: 凝血\n"));
    QCOMPARE(process->exitCode(), 0);
    QVERIFY(QDir(folder->path()).isEmpty());
}

void TestConsoleLog::survivesALogThatCannotBeWritten()
{
    if (!QFile::exists("/dev/full"))
        QSKIP("no /dev/full on this system: a log that cannot be written is NOT tested");

    const auto process = send({"/dev/full", "debug", "close"});

    QCOMPARE(process->exitStatus(), QProcess::NormalExit);
    QCOMPARE(process->exitCode(), 0);
}

void TestConsoleLog::abortsOnAFatalMessageOnly_data()
{
    QTest::addColumn<QString>("fileName");

    QTest::newRow("log file") << "log.txt";
    QTest::newRow("standard error") << "";
}

void TestConsoleLog::abortsOnAFatalMessageOnly()
{
    QFETCH(QString, fileName);
    qputenv("QT_FATAL_WARNINGS", "1");
    qputenv("QT_FATAL_CRITICALS", "1");

    const auto process = send({fileName, "warning", "critical", "debug"});

    qunsetenv("QT_FATAL_WARNINGS");
    qunsetenv("QT_FATAL_CRITICALS");
    QCOMPARE(process->exitStatus(), QProcess::NormalExit);
}

QTEST_GUILESS_MAIN(TestConsoleLog)
#include "tst_consolelog.moc"
