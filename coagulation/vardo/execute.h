// SPDX-License-Identifier: MIT
#pragma once

#include <QSqlQuery>
#include <QString>

namespace coagulation {

/// Executes a prepared query. Every statement of the tool goes through here or through the function below.
bool execute(QSqlQuery &query);

/// Prepares a statement without values and executes it.
bool execute(QSqlQuery &query, const QString &sql);

/// Marks the upper halves of the vector registers as unused. Does nothing on a processor without AVX.
///
/// Qt's hash functions, which run when values are bound, leave these halves in use. As long as they are,
/// processors with AVX-512 are slow at the SSE instructions that SQLite is made of: without this call, a
/// large upgrade takes a tenth longer.
/// Source: Intel 64 and IA-32 Architectures Optimization Reference Manual, "Mixing AVX Code with SSE Code".
void clearUpperVectorHalves();

} // namespace coagulation
