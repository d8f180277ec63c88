// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// What the targets that upgrade databases have in common.

/// Lets Qt find its driver, and drops all messages.
void prepareProcess();

/// \return a folder of the process, which holds nothing but earlier databases
QString workFolder();

/// Upgrades a database in this process, as the tool would.
/// \return what the updater returns
bool upgradedIn(const QString &folder, const QString &name);
