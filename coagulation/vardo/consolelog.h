// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// The tool's log. Every report is an ordinary Qt message. It goes to standard error, or to the file that the
/// user names, one line for each message. The text is UTF-8 on every system; the ends of lines are the system's
/// own.
namespace coagulation {

/// Writes to standard error, readable in a Windows console of any code page.
void printError(const QString &text);

/// Makes the log independent of the machine's variables and logging rules: they could switch the tool's
/// lines off or Qt's own debug lines on, change the layout of a line, or turn a warning into an abort.
/// Messages go to standard error even if that is no console, as in a service.
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

/// Closes the log file, if one is open. Messages go to standard error again.
void closeLog();

} // namespace coagulation
