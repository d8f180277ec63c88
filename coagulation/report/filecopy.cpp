// SPDX-License-Identifier: MIT
#include "coagulation/report/filecopy.h"

#include "coagulation/report/sha256.h"

#include <QFile>

#include <algorithm>

namespace coagulation::report {

namespace {

constexpr qint64 largestPiece = 0x100000;
constexpr qint64 lockedBytes = 0x40000000; ///< where they begin, in every database
constexpr qint64 endOfLockedBytes = lockedBytes + 512;

#ifdef Q_OS_WIN
constexpr bool readsLockedBytes = false;
#else
constexpr bool readsLockedBytes = true;
#endif

/// Reads a file and hands on what it holds.
/// \param take called with each piece; false ends the reading
/// \return false if the file cannot be read
bool readThrough(QFile &file, const std::function<bool(const QByteArray &)> &take)
{
    const qint64 size = file.size();
    QByteArray bytes;
    for (qint64 position = 0; position < size; position += bytes.size()) {
        const Piece piece = nextPiece(position, size, readsLockedBytes);
        if (piece.readable) {
            bytes.resize(piece.bytes);
            if (!file.seek(position))
                return false;
            const qint64 read = file.read(bytes.data(), piece.bytes);
            if (read < 0)
                return false;
            bytes.resize(read);
        } else {
            bytes.fill('\0', piece.bytes);
        }
        if (bytes.isEmpty() || !take(bytes)) // empty where the file has become shorter
            return true;
    }
    return true;
}

} // namespace

Piece nextPiece(qint64 position, qint64 size, bool lockedBytesAreReadable)
{
    const qint64 end = std::min(size, position + largestPiece);
    if (lockedBytesAreReadable || end <= lockedBytes || position >= endOfLockedBytes)
        return {end - position};
    if (position < lockedBytes)
        return {lockedBytes - position};
    return {std::min(end, endOfLockedBytes) - position, false};
}

bool writeAll(QIODevice &device, const QByteArray &bytes)
{
    QByteArrayView rest = bytes;
    while (!rest.isEmpty()) {
        const qint64 written = device.write(rest.data(), rest.size());
        if (written <= 0)
            return false;
        rest = rest.sliced(written);
    }
    return true;
}

CopyResult copyFile(QFile &source, const QString &target, const BytesRead &progress)
{
    QFile copy(target);
    if (!copy.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered,
                   QFile::ReadOwner | QFile::WriteOwner))
        return {CopyState::NotWritten, copy.errorString()};

    CopyResult result;
    const bool read = readThrough(source, [&](const QByteArray &bytes) {
        if (!writeAll(copy, bytes))
            result = {CopyState::NotWritten, copy.errorString()};
        else if (!progress(bytes.size()))
            result = {CopyState::Stopped};
        else
            result.bytes += bytes.size();
        return result.state == CopyState::Copied;
    });
    if (!read)
        result = {CopyState::NotRead, source.errorString()};
    if (result.state != CopyState::Copied)
        copy.remove();
    return result;
}

QByteArray digestOf(QFile &file, const BytesRead &progress)
{
    Sha256 hash;
    bool complete = true;
    const bool read = readThrough(file, [&](const QByteArray &bytes) {
        hash.add(bytes);
        complete = progress(bytes.size());
        return complete;
    });
    return read && complete ? hash.result() : QByteArray();
}

} // namespace coagulation::report
