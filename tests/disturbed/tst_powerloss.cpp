// SPDX-License-Identifier: MIT
/// Loss of power during an upgrade: of what the tool wrote since a file was last synced any part may be
/// on the disk. The database is the old one or the new one.

#include "disturbedupgrade.h"
#include "faultyfiles.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QTest>

#include <cstring>
#include <vector>

using faultyfiles::Call;

namespace {

struct Operation {
    Call call = Call::Sync;
    QString file; ///< its name; empty for the folder
    qint64 offset = 0;
    QByteArray data;
};

QList<Operation> readTrace(const QString &fileName, const QString &folder)
{
    QFile trace(fileName);
    if (!trace.open(QIODevice::ReadOnly))
        qFatal("no trace");
    QList<Operation> operations;
    while (!trace.atEnd()) {
        faultyfiles::TraceHead head{};
        std::memcpy(&head, trace.read(sizeof(head)).constData(), sizeof(head));
        const QString path = QString::fromUtf8(trace.read(head.pathSize));
        operations.append(
            {head.call, path.mid(folder.size() + 1), head.offset, trace.read(head.dataSize)});
    }
    return operations;
}

QByteArray randomBytes(QRandomGenerator &random, qsizetype size)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = static_cast<char>(random.bounded(256));
    return bytes;
}

void write(QByteArray &content, qint64 offset, const QByteArray &data)
{
    if (content.size() < offset)
        content.append(offset - content.size(), '\0');
    content.replace(offset, data.size(), data);
}

/// A disk that does at once what it is told, but forgets at a loss of power what was not synced: any of
/// it, in whole or in part. So also a new file's name, or that a name was removed.
class Disk {
public:
    explicit Disk(const DisturbedUpgrade::Files &initial);

    void apply(const Operation &operation);
    /// \return what is there as long as the power is
    DisturbedUpgrade::Files current() const;
    /// \return what may be left after a loss of power
    DisturbedUpgrade::Files afterPowerLoss(QRandomGenerator &random) const;

private:
    struct File {
        QByteArray durable;
        QList<Operation> pending;
    };
    using Folder = QMap<QString, size_t>; ///< the index of each name's file
    struct Change {                       ///< of the folder
        Call call;                        ///< Create or Unlink
        QString name;
        size_t file;
    };

    static QByteArray contentOf(const File &file);
    static QByteArray leftOf(const File &file, QRandomGenerator &random);
    static void lose(QByteArray &content, const Operation &operation, QRandomGenerator &random);
    static void apply(const Change &change, Folder &folder);

    std::vector<File> files;
    Folder folder; ///< as the running process sees it
    Folder durable;
    QList<Change> pending;
};

Disk::Disk(const DisturbedUpgrade::Files &initial)
{
    for (auto file = initial.begin(); file != initial.end(); ++file) {
        folder.insert(file.key(), files.size());
        files.push_back({file.value(), {}});
    }
    durable = folder;
}

void Disk::apply(const Change &change, Folder &folder)
{
    if (change.call == Call::Create)
        folder.insert(change.name, change.file);
    else
        folder.remove(change.name);
}

void Disk::apply(const Operation &operation)
{
    switch (operation.call) {
    case Call::Create:
        files.emplace_back();
        [[fallthrough]];
    case Call::Unlink:
        pending.append({operation.call, operation.file, files.size() - 1});
        apply(pending.constLast(), folder);
        break;
    case Call::Write:
    case Call::Truncate:
        files.at(folder.value(operation.file)).pending.append(operation);
        break;
    case Call::Sync:
        if (operation.file.isEmpty()) {
            durable = folder;
            pending.clear();
        } else {
            File &file = files.at(folder.value(operation.file));
            file.durable = contentOf(file);
            file.pending.clear();
        }
        break;
    }
}

QByteArray Disk::contentOf(const File &file)
{
    QByteArray content = file.durable;
    for (const Operation &operation : file.pending) {
        if (operation.call == Call::Truncate)
            content.resize(operation.offset);
        else
            write(content, operation.offset, operation.data);
    }
    return content;
}

DisturbedUpgrade::Files Disk::current() const
{
    DisturbedUpgrade::Files contents;
    for (auto file = folder.begin(); file != folder.end(); ++file)
        contents.insert(file.key(), contentOf(files.at(file.value())));
    return contents;
}

/// Keeps a part of a write: its begin, its end, or some of its sectors. Of a write behind the end of the
/// file the file may have got the length, and the sectors what had been there before.
void Disk::lose(QByteArray &content, const Operation &operation, QRandomGenerator &random)
{
    constexpr qsizetype sector = 512;
    const qsizetype size = operation.data.size();
    const qsizetype cut = random.bounded(static_cast<int>(size) + 1);

    switch (random.bounded(5)) {
    case 0: // nothing is left
        break;
    case 1:
        write(content, operation.offset, operation.data.first(cut));
        break;
    case 2:
        write(content, operation.offset + cut, operation.data.sliced(cut));
        break;
    case 3:
        for (qsizetype start = 0; start < size; start += sector) {
            if (random.bounded(2) == 0)
                write(content, operation.offset + start, operation.data.mid(start, sector));
        }
        break;
    default:
        if (operation.offset >= content.size())
            write(content, operation.offset, randomBytes(random, size));
        break;
    }
}

QByteArray Disk::leftOf(const File &file, QRandomGenerator &random)
{
    const int kept = random.bounded(101); // of 100 operations, the same for all of an image
    QByteArray content = file.durable;
    for (const Operation &operation : file.pending) {
        const bool isKept = random.bounded(100) < kept;
        if (operation.call == Call::Write && isKept)
            write(content, operation.offset, operation.data);
        else if (operation.call == Call::Write)
            lose(content, operation, random);
        else if (isKept)
            content.resize(operation.offset);
    }
    return content;
}

DisturbedUpgrade::Files Disk::afterPowerLoss(QRandomGenerator &random) const
{
    Folder names = durable;
    for (const Change &change : pending) {
        if (random.bounded(2) == 0)
            apply(change, names);
    }
    DisturbedUpgrade::Files left;
    for (auto file = names.begin(); file != names.end(); ++file) {
        if (!file.key().endsWith("-shm")) // which is memory, and made again
            left.insert(file.key(), leftOf(files.at(file.value()), random));
    }
    return left;
}

int number(const char *variable, int ordinary)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : ordinary;
}

} // namespace

class TestPowerLoss : public QObject {
    Q_OBJECT

private slots:
    void init();

    void profile_data() { addWays(); }
    /// Shows: REL-3
    void profile() { makeImages("profile"); }
    void data_data() { addWays(); }
    /// Shows: REL-3
    void data() { makeImages("data"); }
    void qc_data() { addWays(); }
    /// Shows: REL-3
    void qc() { makeImages("qc"); }
    void syslog_data() { addWays(); }
    /// Shows: REL-3
    void syslog() { makeImages("syslog"); }

private:
    static void addWays();
    static QList<Operation> record(DisturbedUpgrade &upgrade);
    static void makeImages(const QString &database);
};

void TestPowerLoss::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void TestPowerLoss::addWays()
{
    QTest::addColumn<Writing>("writing");

    QTest::newRow("journal") << Writing::AtCommit;
    QTest::newRow("journal and full cache") << Writing::Spilling;
    QTest::newRow("write-ahead log") << Writing::Ahead;
}

/// \return what an undisturbed upgrade does to the files
QList<Operation> TestPowerLoss::record(DisturbedUpgrade &upgrade)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", FAULTYFILES);
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0"); // it wants to be loaded first
    environment.insert(faultyfiles::folderVariable, upgrade.folder());
    environment.insert(faultyfiles::traceVariable, upgrade.aside("trace"));
    upgrade.setFiles(upgrade.oldFiles());
    if (const ToolRun run = upgrade.run(environment); run.exitCode != 0)
        qFatal("%s%s", qUtf8Printable(run.log.join('\n')), run.errors.constData());
    return readTrace(upgrade.aside("trace"), upgrade.folder());
}

void TestPowerLoss::makeImages(const QString &database)
{
    QFETCH(Writing, writing);
    const int seed = number("VARDO_SEED", 1);
    const int images = number("VARDO_IMAGES", DisturbedUpgrade::isSanitized() ? 20 : 100);
    DisturbedUpgrade upgrade(database, writing, VARDO);
    const QList<Operation> operations = record(upgrade);

    Disk whole(upgrade.oldFiles());
    for (const Operation &operation : operations)
        whole.apply(operation);
    QCOMPARE(whole.current(), upgrade.files()); // no write was missed

    int left = 0;
    for (int image = 0; image < images; ++image) {
        QRandomGenerator random(static_cast<quint32>(seed) * 1'000'003U
                                + static_cast<quint32>(image));
        const qsizetype done = random.bounded(static_cast<int>(operations.size()) + 1);
        Disk disk(upgrade.oldFiles());
        for (const Operation &operation : operations.first(done))
            disk.apply(operation);
        const DisturbedUpgrade::Files files = disk.afterPowerLoss(random);
        upgrade.setFiles(files);

        const QString outcome = upgrade.outcome();
        const QString about = QString("seed %1, image %2, after %3 of %4 operations: %5")
                                  .arg(seed)
                                  .arg(image)
                                  .arg(done)
                                  .arg(operations.size())
                                  .arg(outcome);
        QVERIFY2(outcome == "old" || outcome == "new", qPrintable(about));
        upgrade.setFiles(files);
        QVERIFY2(upgrade.outcomeOfAnotherRun() == "new", qPrintable(about));
        left += outcome == "old" ? 1 : 0;
    }
    qInfo("%d images: %d old, %d new", images, left, images - left);
}

QTEST_GUILESS_MAIN(TestPowerLoss)
#include "tst_powerloss.moc"
