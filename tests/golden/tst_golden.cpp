// SPDX-License-Identifier: MIT
/// A step once delivered never changes what it writes: what each step of each upgrade leaves behind is
/// compared with the files of this folder.
///
/// With VARDO_GOLDEN_LINES=FILE the lines of steps that no file holds yet are written to a new file.

#include "driversqlite.h"
#include "expectedsteps.h"
#include "goldenlines.h"
#include "messagerecorder.h"
#include "olddatabases.h"
#include "upgrade.h"

#include <QRegularExpression>
#include <QTest>

#include <sqlite3.h>

#include <functional>

namespace {

const QStringList databases{"profile", "data", "qc", "syslog"};

/// \return the step of a line's subject: "profile 10"
QString stepOf(const QString &subject)
{
    return subject.section(' ', 0, 0) + ' ' + subject.section(' ', 2, 2);
}

/// Looks at the database after each step of the upgrades in its lifetime. The engine itself says when:
/// it logs that a step has passed before it goes on to the next one.
class StepWatch {
public:
    explicit StepWatch(const std::function<void(int)> &look)
        : handler(qInstallMessageHandler(handle))
    {
        lookAfter() = look;
    }
    ~StepWatch() { qInstallMessageHandler(handler); }
    Q_DISABLE_COPY_MOVE(StepWatch)

private:
    static std::function<void(int)> &lookAfter()
    {
        static std::function<void(int)> look;
        return look;
    }

    static void handle(QtMsgType, const QMessageLogContext &, const QString &message)
    {
        static const QRegularExpression passed(R"(^update_v(\d+)\(\) *: PASS$)");
        const auto match = passed.match(message);
        if (match.hasMatch())
            lookAfter()(match.captured(1).toInt());
    }

    QtMessageHandler handler;
};

/// \param start what the lines begin with, for example "profile 0"
/// \return the lines after each step in turn; none when the upgrade fails
QList<GoldenLine> linesOfUpgrade(const TestDatabase &database, const QString &name,
                                 const QString &start)
{
    QList<GoldenLine> lines;
    const StepWatch watch(
        [&](int step) { lines += goldenLinesOf(name, QString("%1 %2").arg(start).arg(step)); });
    return upgrade(database) ? lines : QList<GoldenLine>();
}

/// \return what differs, with the subject of each difference
QStringList differences(const QList<GoldenLine> &lines, QMap<QString, QString> golden)
{
    QStringList found;
    for (const GoldenLine &line : lines) {
        const QString content = golden.take(line.subject);
        if (content.isEmpty())
            found << QString("%1: in no file, now %2").arg(line.subject, line.content);
        else if (content != line.content)
            found << QString("%1: was %2, now %3").arg(line.subject, content, line.content);
    }
    for (auto line = golden.begin(); line != golden.end(); ++line)
        found << QString("%1: was %2, now missing").arg(line.key(), line.value());
    return found;
}

/// \return a message with the first differences
QString report(const QStringList &differences)
{
    constexpr int shown = 20;
    QString text = differences.mid(0, shown).join("\n    ");
    if (differences.size() > shown)
        text += QString("\n    and %1 more").arg(differences.size() - shown);
    return "not as the files in tests/golden hold it (docs/adding-a-step.md):\n    " + text;
}

} // namespace

class TestGolden : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void deliveredStepsWriteWhatTheyDid_data();
    void deliveredStepsWriteWhatTheyDid();
    void everyLineIsOfAStart();
    void cleanupTestCase();

private:
    QMap<QString, QMap<QString, QString>> golden; ///< by start: content by subject
    QSet<QString> deliveredSteps;                 ///< of which a file holds lines: "profile 10"
    QString newFile; ///< for the lines of the other steps; empty when they are not asked for
    QList<GoldenLine> newLines;
};

void TestGolden::initTestCase()
{
    const GoldenFiles files = readGoldenFiles(GOLDEN_FILES);
    QVERIFY2(files.faults.isEmpty(), qUtf8Printable(files.faults.join('\n')));
    for (auto line = files.contents.begin(); line != files.contents.end(); ++line) {
        golden[line.key().section(' ', 0, 1)][line.key()] = line.value();
        deliveredSteps << stepOf(line.key());
    }
    newFile = qEnvironmentVariable("VARDO_GOLDEN_LINES");
    QVERIFY2(!QFile::exists(newFile), qUtf8Printable(newFile + " is there already"));
}

void TestGolden::deliveredStepsWriteWhatTheyDid_data()
{
    if (const QString other = otherSqliteInDriver(sqlite3_sourceid()); !other.isEmpty())
        QSKIP(qUtf8Printable(other));
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("stored");

    for (const QString &name : databases) {
        for (int version = 0; version < newestVersionOf(name); ++version)
            QTest::addRow("%s %d", qUtf8Printable(name), version) << name << version;
    }
}

/// Shows: ENG-14
void TestGolden::deliveredStepsWriteWhatTheyDid()
{
    QFETCH(QString, name);
    QFETCH(int, stored);
    const QString start = QString("%1 %2").arg(name).arg(stored);
    const TestDatabase database(name + ".db");
    {
        const MessageRecorder ofItsMaking;
        makeDatabaseAt(database, name, stored);
    }

    const QList<GoldenLine> lines = linesOfUpgrade(database, name, start);

    QVERIFY2(!lines.isEmpty(), "the upgrade failed");
    QList<GoldenLine> compared;
    for (const GoldenLine &line : lines) {
        const bool isNew = !deliveredSteps.contains(stepOf(line.subject));
        (isNew && !newFile.isEmpty() ? newLines : compared) << line;
    }
    const QStringList found = differences(compared, golden.value(start));
    QVERIFY2(found.isEmpty(), qUtf8Printable(report(found)));
}

void TestGolden::everyLineIsOfAStart()
{
    for (auto lines = golden.keyBegin(); lines != golden.keyEnd(); ++lines) {
        const QString &start = *lines;
        const QString name = start.section(' ', 0, 0);
        QVERIFY2(databases.contains(name) && start.section(' ', 1).toInt() < newestVersionOf(name),
                 qUtf8Printable(start));
    }
}

void TestGolden::cleanupTestCase()
{
    if (newLines.isEmpty())
        return;
    QFile file(newFile);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::NewOnly), qUtf8Printable(newFile));
    file.write(goldenFile(newLines).toUtf8());
}

QTEST_GUILESS_MAIN(TestGolden)
#include "tst_golden.moc"
