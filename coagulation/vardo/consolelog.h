// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The tool's log: every report is an ordinary Qt message, written either by Qt to standard error or,
/// when the user names a log file, by the handler in here to that file, one line a message.
namespace coagulation {

/// Makes the log independent of the environment: no variable and no logging rule of the machine
/// switches the tool's lines off, Qt's own debug lines on, changes the layout of a line or turns a
/// warning into an abort. Call it first of all, before the application object exists.
void shieldLogFromEnvironment();

/// Opens the log file for appending and, if that works, sends every message to it. If it does not,
/// nothing is reported and messages keep going to standard error.
/// Lines are flushed when the log is closed, at process exit, and before a fatal message aborts.
/// \param fileName path of the log file; an empty one is no log file
void openLog(const QString &fileName);

/// Gives messages back to Qt and closes the log file, if one is open.
void closeLog();

} // namespace coagulation
