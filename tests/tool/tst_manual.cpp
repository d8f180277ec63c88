// SPDX-License-Identifier: MIT
/// The operating manual explains every line that the sources can log, and no other. It has each command for
/// Debian and for Windows, and those that copy databases and put them back do so.

#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

/// A message of the sources: the texts in it, in their order. What stands between them differs from run
/// to run.
struct Message {
    QString source;
    QStringList texts;
};

QString read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    return QString::fromUtf8(file.readAll());
}

/// \return the text before the semicolon that ends a statement
QString untilSemicolon(const QString &text)
{
    static const QRegularExpression statement(R"rx(^(?:"(?:\\.|[^"\\])*"|[^";])*)rx");
    return statement.match(text).captured();
}

/// \return the texts of a statement that logs; those next to each other in the source are one
QStringList textsOf(QString statement)
{
    static const QRegularExpression seam(R"rx("\s+")rx");
    static const QRegularExpression literal(R"rx("((?:\\.|[^"\\])*)")rx");
    static const QRegularExpression placeholder(R"(%-?\d*(?:lld|[sdu]))");

    QStringList texts;
    if (statement.contains("<< query.lastError();"))
        texts << "QSqlError(";
    statement.replace(seam, QString());
    auto match = literal.globalMatch(statement);
    while (match.hasNext()) {
        for (const QString &text : match.next().captured(1).split(placeholder)) {
            if (!text.trimmed().isEmpty())
                texts << text.trimmed();
        }
    }
    return texts;
}

/// \return what the sources of the tool can log
QList<Message> messagesOfSources()
{
    static const QRegularExpression call(
        R"((?:\bq(?:Debug|Info|Warning|Critical|Fatal)|(?<!QDebug )\bdebugFrom)\()");
    static const QRegularExpression comment(R"(//[^\n]*)");
    static const QRegularExpression choice(R"rx(\?\s*("[^"]*")\s*:\s*("[^"]*"))rx");

    QList<Message> messages;
    for (const QString &name : QDir(SOURCES).entryList({"*.cpp"})) {
        const QString source = read(QString(SOURCES) + '/' + name).remove(comment);
        auto match = call.globalMatch(source);
        while (match.hasNext()) {
            const QString statement =
                untilSemicolon(source.mid(match.next().capturedStart())) + ';';
            const auto either = choice.match(statement);
            if (!either.hasMatch()) {
                messages << Message{name, textsOf(statement)};
                continue;
            }
            for (const int side : {1, 2})
                messages << Message{
                    name,
                    textsOf(QString(statement).replace(either.captured(), either.captured(side)))};
        }
    }
    return messages;
}

/// \return the lines of a log that the manual's tables explain
QStringList linesOfManual()
{
    static const QRegularExpression row(R"(^\| (`.+?`) \|)", QRegularExpression::MultilineOption);

    const QString manual = read(MANUAL);
    const qsizetype begin = manual.indexOf("\n## The lines of the log\n");
    const qsizetype end = manual.indexOf("\n| the cause begins with |", begin);
    QStringList lines;
    auto match = row.globalMatch(manual.mid(begin, end - begin));
    while (match.hasNext())
        lines << match.next().captured(1);
    return lines;
}

/// A block of the manual's commands for Debian.
struct Commands {
    QString text;
    QString next; ///< the language of the block right after it; empty if something else follows
};

QList<Commands> commandsForDebian()
{
    static const QRegularExpression block(R"(```sh\n(.*?)\n *```\n(?:\n *```(\w+)\n)?)",
                                          QRegularExpression::DotMatchesEverythingOption);

    QList<Commands> commands;
    auto match = block.globalMatch(read(MANUAL));
    while (match.hasNext()) {
        const auto found = match.next();
        commands << Commands{found.captured(1), found.captured(2)};
    }
    return commands;
}

#ifdef Q_OS_UNIX
/// Runs the commands for Debian that hold a text, with another folder in place of /lab.
/// \return the exit code
int runCommands(const QString &text, const QString &folder)
{
    QStringList chosen;
    for (const Commands &commands : commandsForDebian()) {
        if (commands.text.contains(text))
            chosen << QString(commands.text).replace("/lab", folder);
    }
    if (chosen.size() != 1)
        qFatal("not one block of commands alone holds %s", qUtf8Printable(text));
    return QProcess::execute("sh", {"-c", chosen.constFirst()});
}
#endif

bool shows(const QString &line, const Message &message)
{
    qsizetype from = 0;
    return std::all_of(message.texts.begin(), message.texts.end(), [&](const QString &text) {
        const qsizetype found = line.indexOf(text, from);
        from = found + text.size();
        return found >= 0;
    });
}

} // namespace

class TestManual : public QObject {
    Q_OBJECT

private slots:
    void explainsEveryMessage_data();
    void explainsEveryMessage();
    void explainsNoMessageThatIsNotThere_data();
    void explainsNoMessageThatIsNotThere();
    void showsEachCommandForWindowsToo_data();
    void showsEachCommandForWindowsToo();
    void putsTheCopiesBack();
    void keepsTheDatabasesThatCannotBeMovedAside();
};

void TestManual::explainsEveryMessage_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QStringList>("texts");

    for (const Message &message : messagesOfSources()) {
        const QString name = message.source + ": " + message.texts.join(" … ");
        QTest::newRow(qUtf8Printable(name)) << message.source << message.texts;
    }
}

/// Shows: PLT-8
void TestManual::explainsEveryMessage()
{
    QFETCH(QString, source);
    QFETCH(QStringList, texts);
    const Message message{source, texts};
    QVERIFY(!texts.isEmpty());

    const QStringList lines = linesOfManual();

    QVERIFY(std::any_of(lines.begin(), lines.end(),
                        [&](const QString &line) { return shows(line, message); }));
}

void TestManual::explainsNoMessageThatIsNotThere_data()
{
    QTest::addColumn<QString>("line");

    for (const QString &line : linesOfManual())
        QTest::newRow(qUtf8Printable(line)) << line;
}

/// Shows: PLT-8
void TestManual::explainsNoMessageThatIsNotThere()
{
    QFETCH(QString, line);

    const QList<Message> messages = messagesOfSources();

    QVERIFY(std::any_of(messages.begin(), messages.end(),
                        [&](const Message &message) { return shows(line, message); }));
}

void TestManual::showsEachCommandForWindowsToo_data()
{
    QTest::addColumn<QString>("next");

    for (const Commands &commands : commandsForDebian())
        QTest::newRow(qUtf8Printable(commands.text)) << commands.next;
}

/// Shows: PLT-8
void TestManual::showsEachCommandForWindowsToo()
{
    QFETCH(QString, next);

    QCOMPARE(next, "powershell");
}

/// With a journal of the copies, a log of the upgraded database, and a database that the laboratory does not have.
void TestManual::putsTheCopiesBack()
{
#ifdef Q_OS_UNIX
    const QTemporaryDir lab;
    writeFile(lab.filePath("profile.db"), "old settings");
    writeFile(lab.filePath("profile.db-journal"), "old journal");
    writeFile(lab.filePath("data.db"), "old results");
    writeFile(lab.filePath("notes.txt"), "a file of others");
    runCommands("cp -aL", lab.path());
    writeFile(lab.filePath("profile.db"), "new settings");
    QVERIFY(QFile::remove(lab.filePath("profile.db-journal")));
    writeFile(lab.filePath("profile.db-wal"), "new log");
    writeFile(lab.filePath("data.db"), "new results");

    QCOMPARE(runCommands("mkdir after", lab.path()), 0);

    QCOMPARE(QDir(lab.path()).entryList(QDir::Files),
             (QStringList{"data.db", "notes.txt", "profile.db", "profile.db-journal"}));
    QCOMPARE(fileBytes(lab.filePath("profile.db")), QByteArray("old settings"));
    QCOMPARE(fileBytes(lab.filePath("profile.db-journal")), QByteArray("old journal"));
    QCOMPARE(fileBytes(lab.filePath("data.db")), QByteArray("old results"));
    QCOMPARE(QDir(lab.filePath("after")).entryList(QDir::Files),
             (QStringList{"data.db", "profile.db", "profile.db-wal"}));
    QCOMPARE(fileBytes(lab.filePath("after/data.db")), QByteArray("new results"));
    QCOMPARE(fileBytes(lab.filePath("after/profile.db-wal")), QByteArray("new log"));
#else
    QSKIP("there is no shell for Debian's commands: they are NOT tested");
#endif
}

void TestManual::keepsTheDatabasesThatCannotBeMovedAside()
{
#ifdef Q_OS_UNIX
    const QTemporaryDir lab;
    writeFile(lab.filePath("data.db"), "old results");
    runCommands("cp -aL", lab.path());
    writeFile(lab.filePath("data.db"), "new results");
    writeFile(lab.filePath("mv"), "#!/bin/sh\nexit 1\n"); // as on a disk that fails
    QVERIFY(QFile::setPermissions(lab.filePath("mv"), QFile::ReadOwner | QFile::ExeOwner));
    const QByteArray path = qgetenv("PATH");

    qputenv("PATH", lab.path().toLocal8Bit() + ':' + path);
    const int exitCode = runCommands("mkdir after", lab.path());
    qputenv("PATH", path);

    QVERIFY(exitCode != 0);
    QCOMPARE(fileBytes(lab.filePath("data.db")), QByteArray("new results"));
#else
    QSKIP("there is no shell for Debian's commands: they are NOT tested");
#endif
}

QTEST_GUILESS_MAIN(TestManual)
#include "tst_manual.moc"
