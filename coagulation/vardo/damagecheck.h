// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
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

    /// The first finding that is damage; empty when there is none.
    QString damage;
    /// Some values break a constraint or are not of their columns' types.
    bool hasOddValues = false;
    /// Tables of which a step may spoil an index, each with a clause that says why. There may be an index on a name in
    /// double quotes: SQLite takes such a name for a text while no column has it, and a new column of this name would
    /// change what the index is about, but not what it holds. Or the table could not be checked, and holds values in an
    /// index that are not of their columns' types.
    QMap<QString, QString> endangered{};
    /// Tables that SQLite could not check, with its reason, for example a collation of another program's.
    QMap<QString, QString> unchecked{};
    /// Set when the check of everything could not be carried out.
    std::optional<Failure> failure{};
};

/// Looks for damage in the main database of a connection, by SQLite's own check and by the names in
/// its schema. Values that break a constraint or are not of their columns' types are not damage.
/// Nothing is logged. What is written within the connection's transaction, which has to be there, is taken back.
DamageReport checkForDamage(const QSqlDatabase &connection);

/// \return true when the error means that the file is damaged
bool isDamage(const QSqlError &error);

} // namespace coagulation
