// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The tool's log. Every report is an ordinary Qt message. Qt writes it to standard error, or the handler
/// in here writes it to the file that the user names, one line for each message.
namespace coagulation {

/// Makes the log independent of the machine's variables and logging rules: they could switch the tool's
/// lines off or Qt's own debug lines on, change the layout of a line, or turn a warning into an abort.
/// Call this first of all, before the application object exists.
void shieldLogFromEnvironment();

/// Opens the log file for appending and sends every message to it. If the file cannot be opened,
/// this is not reported, and messages keep going to standard error.
/// Lines reach the file when they are flushed, when the log is closed, at process exit, and before a
/// fatal message aborts.
/// \param fileName path of the log file; empty if there is none
void openLog(const QString &fileName);

/// Hands the lines so far over to the system, so that they outlive a process that is killed.
void flushLog();

/// Gives messages back to Qt and closes the log file, if one is open.
void closeLog();

} // namespace coagulation
