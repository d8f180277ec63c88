// SPDX-License-Identifier: MIT
/// The operating manual explains every line that the sources can log, and no other. It has each command for
/// Debian and for Windows.

#include <QDir>
#include <QFile>
#include <QRegularExpression>
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

QTEST_GUILESS_MAIN(TestManual)
#include "tst_manual.moc"
