// SPDX-License-Identifier: MIT
#include "coagulation/report/space.h"

#include "coagulation/report/snapshot.h"

#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace coagulation::report {

namespace {

QString size(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

#ifdef Q_OS_WIN
constexpr const char *temporaryFolder = "TMP";
#else
constexpr const char *temporaryFolder = "TMPDIR";
#endif

} // namespace

SpaceNeeded spaceNeededFor(const QStringList &databases)
{
    qint64 all = 0;
    qint64 largest = 0;
    for (const QString &database : databases) {
        const qint64 bytes = bytesOf(database);
        all += bytes;
        largest = std::max(largest, bytes);
    }
    // An upgrade makes a large database grow by 0.8 times its size. It needs a journal as large as the file, and
    // temporary files of 0.45 times that.
    return {2 * all, all * 4 / 5 + largest * 3 / 2};
}

std::optional<qint64> freeSpaceIn(const QString &folder)
{
    // Not QStorageInfo, which finds no disk where the system's list of mounts cannot be read.
    std::error_code error;
    const auto space = std::filesystem::space(QFileInfo(folder).filesystemFilePath(), error);
    if (error)
        return std::nullopt;
    return static_cast<qint64>(space.available);
}

QString lackOfSpace(const SpaceNeeded &needed, std::optional<qint64> free, const QString &folder)
{
    const qint64 sum = needed.copies + needed.upgrade;
    if (!free || *free >= sum)
        return {};
    return QString(
               "The rehearsal needs %1, of which %2 for the copies and %3 for the upgrade; %4 are free in %5."
               " The variable %6 and the option --keep choose a folder on another disk.")
        .arg(size(sum), size(needed.copies), size(needed.upgrade), size(*free), folder,
             temporaryFolder);
}

} // namespace coagulation::report
