// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace coagulation::report {

/// How much space a rehearsal takes, in bytes.
struct SpaceNeeded {
    qint64 copies = 0; ///< two of each database
    /// What the databases grow by, and the journal and temporary files of the largest one.
    qint64 upgrade = 0;
};

/// \param databases paths; missing ones take no space
SpaceNeeded spaceNeededFor(const QStringList &databases);

/// \return how many bytes the user may still write to a folder's disk; none if the system does not say
std::optional<qint64> freeSpaceIn(const QString &folder);

/// \param free bytes, if they are known: then the copying shows whether they do
/// \param folder that the copies are to be in
/// \return sentences that say what is missing; empty if the space does
QString lackOfSpace(const SpaceNeeded &needed, std::optional<qint64> free, const QString &folder);

} // namespace coagulation::report
