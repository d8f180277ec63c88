// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What a target that upgrades databases needs as long as the program runs.

/// Makes Qt's application and drops all messages, on the first call.
/// \return a folder that holds nothing but earlier databases
QString workFolder();

/// Upgrades a database in this process, as the tool would.
/// \return what the updater returns
bool upgradedIn(const QString &folder, const QString &name);
