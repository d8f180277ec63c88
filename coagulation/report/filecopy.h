// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QFile;
class QIODevice;

/// Reads files from their beginning to their end, in pieces, to copy them or to compute their digests.
namespace coagulation::report {

/// Called with the number of bytes since the last call; false stops the reading.
using BytesRead = std::function<bool(qint64)>;

/// A part of a file that is read at once.
struct Piece {
    qint64 bytes = 0;     ///< none at the end of the file
    bool readable = true; ///< otherwise zeros stand for its bytes
};

/// SQLite locks bytes at 1 GiB, which hold no data: it never uses the page that they are in. On Windows nobody
/// else can read them meanwhile.
/// \param size of the file
/// \param lockedBytesAreReadable as on other systems
Piece nextPiece(qint64 position, qint64 size, bool lockedBytesAreReadable);

enum class CopyState { Copied, NotRead, NotWritten, Stopped };

struct CopyResult {
    CopyState state = CopyState::Copied;
    QString error{}; ///< the system's words
    qint64 bytes = 0;
};

/// Writes until nothing is left or the device takes no more. A disk that becomes full takes a part of some bytes,
/// and says why only when it gets the rest.
/// \return false if the device took not all; it has the cause
bool writeAll(QIODevice &device, const QByteArray &bytes);

/// Copies a file that is open for reading into a new one, which only the user may read and write. What has
/// been written is removed when the copy fails.
CopyResult copyFile(QFile &source, const QString &target, const BytesRead &progress);

/// \param file which is open for reading
/// \return SHA-256 in hexadecimal digits; empty if the file cannot be read, or if `progress` returned false
QByteArray digestOf(QFile &file, const BytesRead &progress);

} // namespace coagulation::report
