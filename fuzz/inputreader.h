// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// Makes values of the bytes of a fuzzer's input, from the first to the last. Behind them everything is 0 or
/// empty, so that a shorter input is a simpler one.
class InputReader {
public:
    explicit InputReader(QByteArray bytes)
        : input(std::move(bytes))
    {
    }

    bool atEnd() const { return position >= input.size(); }

    quint8 byte();
    bool flag() { return byte() % 2 == 1; }

    /// \return 0 to below the bound, which is 256 at most
    int below(int bound) { return byte() % bound; }

    qint32 integer();

    /// \return a number as people write it, a special one such as infinity, or any eight bytes
    double number();

    /// \return a short text: letters, what means something in markup or SQL, or any code units
    QString text();

private:
    quint64 bytes(int count);

    QByteArray input;
    qsizetype position = 0;
};
