// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace coagulation::report {

/// How much space a rehearsal takes, in bytes.
struct SpaceNeeded {
    qint64 copies = 0; ///< two of each database
    qint64 upgrade =
        0; ///< what the databases grow by, and the journal and temporary files of the largest one
};

/// \param databases paths; missing ones take no space
SpaceNeeded spaceNeededFor(const QStringList &databases);

/// \param free bytes
/// \param folder that the copies are to be in
/// \return sentences that say what is missing; empty if the space does
QString lackOfSpace(const SpaceNeeded &needed, qint64 free, const QString &folder);

} // namespace coagulation::report
