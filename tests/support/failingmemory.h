// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QtGlobal>

/// Lets a request of SQLite for memory fail, in this process. A test that uses it is linked to SQLite and compiles
/// the file itself.
namespace failingmemory {

/// Takes the place of SQLite's allocator. Nothing may have used SQLite before.
/// \return whether SQLite took it
bool install();

/// \param fulfilled how many requests are fulfilled from now on before one is not
void failAfter(int fulfilled);

/// Fulfils all requests from now on.
/// \return whether one was refused since failAfter()
bool stop();

/// As long as it lives, one request may fail between the beginning and the end of a statement on a connection that is
/// opened meanwhile. There may be one at a time.
class DuringStatement {
public:
    /// \param begin of the text of the statement, whose first run counts
    /// \param fulfilled how many requests are fulfilled before one is not
    DuringStatement(const QByteArray &begin, int fulfilled);
    ~DuringStatement();
    Q_DISABLE_COPY_MOVE(DuringStatement)

    bool hasEnded() const;
    /// \return whether a request was refused before the statement ended
    bool wasRefused() const;
};

} // namespace failingmemory
