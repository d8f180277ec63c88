// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QStringList>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <vector>

namespace coagulation::report {

/// Computes digests of files in the background, several at a time: for large databases that takes as long as the
/// upgrade.
class Digests {
public:
    /// Opens the files and begins. They stay open as long as this lives, since a file that is closed would give
    /// up the locks that SQLite holds on it in this process.
    explicit Digests(const QStringList &paths);
    /// Stops what is not done yet.
    ~Digests();
    Q_DISABLE_COPY_MOVE(Digests)

    /// Waits for the end, or for the user's wish to stop.
    /// \return SHA-256 in hexadecimal digits for each path; empty for a file that cannot be read
    QHash<QString, QByteArray> result();

private:
    struct File {
        explicit File(const QString &path)
            : file(path)
        {
        }
        QFile file;
        QByteArray digest{};
    };

    std::vector<std::unique_ptr<File>> files{};
    std::atomic<bool> stopped = false;
    QThreadPool threads{};
};

/// \param digests of the paths of these files
void setDigests(QList<FileFacts> &files, const QHash<QString, QByteArray> &digests);

} // namespace coagulation::report
