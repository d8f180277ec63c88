// SPDX-License-Identifier: MIT
#include "coagulation/report/outputs.h"

#include "coagulation/report/filecopy.h"
#include "coagulation/report/json.h"
#include "coagulation/report/page.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace coagulation::report {

namespace {

QStringList outputsOf(const CommandLine &command)
{
    QStringList outputs{command.page};
    if (!command.json.isEmpty())
        outputs << command.json;
    return outputs;
}

/// \return the database and what SQLite may have beside it
QStringList withCompanions(const QString &database)
{
    QStringList files;
    for (const char *ending : {"", "-journal", "-wal", "-shm"})
        files << database + ending;
    return files;
}

/// \return what the program reads, and must not write
QStringList inputsOf(const CommandLine &command)
{
    const QStringList folders = command.use == Use::Rehearsal
        ? QStringList{command.folder}
        : QStringList{command.before + '/', command.after + '/'};
    QStringList inputs{command.log};
    for (const QString &folder : folders) {
        for (const QString &name : databases()) {
            const QString database = folder + command.names.fileName(name);
            inputs << withCompanions(database);
            // The companions of a linked database stand beside the file, not beside the link.
            if (const QFileInfo info(database); info.isSymLink() && info.exists())
                inputs << withCompanions(info.canonicalFilePath());
        }
    }
    return inputs;
}

bool isSameFile(const QString &first, const QString &second)
{
    const QFileInfo one(first);
    const QFileInfo other(second);
    if (one.exists() && other.exists())
        return one == other;
    return QDir::cleanPath(one.absoluteFilePath()) == QDir::cleanPath(other.absoluteFilePath());
}

/// \return whether a file begins as each database of SQLite does
bool isDatabase(const QString &path)
{
    constexpr char header[] = "SQLite format 3"; // with the zero at its end
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly)
        && file.read(sizeof header) == QByteArray(header, sizeof header);
}

QString notWritten(const QFileDevice &file)
{
    return QString("%1 cannot be written: %2.").arg(file.fileName(), file.errorString());
}

/// \param holdsPatients whether nobody but the user may read it
/// \param write puts the content into the file; false if it takes no more
/// \return what is wrong; empty if nothing is
QString save(const QString &path, bool holdsPatients, const std::function<bool(QIODevice &)> &write)
{
    QSaveFile file(path);
    bool saved = file.open(QIODevice::WriteOnly);
    if (saved && holdsPatients) // where the disk knows rights
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    saved = saved && write(file) && file.flush() && file.commit();
    if (!saved)
        file.flush(); // the rest of what the disk took in part; see writeAll()
    return saved ? QString() : notWritten(file);
}

} // namespace

QString problemOfOutputs(const CommandLine &command)
{
    const QStringList inputs = inputsOf(command);
    for (const QString &output : outputsOf(command)) {
        for (const QString &input : inputs) {
            if (!input.isEmpty() && isSameFile(output, input))
                return QString("%1 would be overwritten.").arg(input);
        }
        if (isDatabase(output))
            return QString("%1 is a database, and would be overwritten.").arg(output);
        QSaveFile file(output);
        if (!file.open(QIODevice::WriteOnly))
            return notWritten(file);
        file.cancelWriting();
    }
    if (!command.json.isEmpty() && isSameFile(command.page, command.json))
        return "The page and the file for programs have the same name.";
    return {};
}

QString writeOutputs(const CommandLine &command, const Report &report)
{
    QString problem = save(command.page, report.examplesOfPatients,
                           [&](QIODevice &file) { return writePage(file, report); });
    if (problem.isEmpty() && !command.json.isEmpty()) {
        problem = save(command.json, report.examplesOfPatients,
                       [&](QIODevice &file) { return writeAll(file, toJson(report)); });
    }
    return problem;
}

bool printOutput(const QString &text)
{
#ifdef Q_OS_WIN
    // A console would take bytes for letters of its own code page.
    auto *const console = GetStdHandle(STD_OUTPUT_HANDLE);
    if (DWORD mode = 0; GetConsoleMode(console, &mode) != 0) {
        return WriteConsoleW(console, text.utf16(), static_cast<DWORD>(text.size()), nullptr,
                             nullptr)
            != 0;
    }
#endif
    return std::fputs(text.toUtf8().constData(), stdout) >= 0 && std::fflush(stdout) == 0;
}

} // namespace coagulation::report
