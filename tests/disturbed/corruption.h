// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

class QRandomGenerator;

/// A way to damage a file.
struct Corruption {
    const char *name;
    /// \param file at least one page long
    void (*apply)(QByteArray &file, int pageSize, QRandomGenerator &random);
};

/// \return the ways to damage a sound SQLite database
const QList<Corruption> &corruptionsOfDatabase();

/// \return what damages the journal or write-ahead log that a crashed program left beside its database
const Corruption &corruptionOfLeftover();
