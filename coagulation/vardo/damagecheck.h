// SPDX-License-Identifier: MIT
#pragma once

#include <QSqlQuery>
#include <QString>

#include <optional>

class QSqlDatabase;
class QSqlError;

namespace coagulation {

/// The result of a damage check.
struct DamageReport {
    /// A query of the check that failed, with its place in the source.
    struct Failure {
        QSqlQuery query;
        const char *sourceFile;
        int line;
    };

    QString damage; ///< the first finding that is damage; empty when there is none
    bool hasOddValues =
        false; ///< some values break a constraint or are not of their columns' types
    std::optional<Failure> failure{}; ///< the check could not be carried out
};

/// Looks for damage in the main database of a connection, by SQLite's own check and by the names in
/// its schema. Values that break a constraint or are not of their columns' types are not damage.
/// Nothing is logged or written.
DamageReport checkForDamage(const QSqlDatabase &connection);

/// \return true when the error means that the file is damaged
bool isDamage(const QSqlError &error);

} // namespace coagulation
