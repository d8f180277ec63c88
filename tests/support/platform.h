// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

/// What differs between the systems that the tests run on.

/// \return what the tool ends its lines with: "\n", or on Windows "\r\n"
QByteArray lineEnd();

/// \return a text of the tool, with "\n" in place of the system's own line ends
QByteArray withPlainLineEnds(QByteArray text);

/// \return true if what a process appends to a file never overwrites what another one appends at the same moment;
///         false under Wine, which looks for the end of the file first and then writes there
bool appendsInOneStep();

/// \return false for a name that Windows gives no file, on Windows: it holds a reserved character, or a
///         blank or a dot stands at its end
bool canBeFileName(const QString &name);

/// \return true if environmentWithLocale() gives a process this locale, for example "fr_FR.UTF-8"; on
///         Windows a process always has the languages of the user's settings
bool canHaveLocale(const QString &locale);

/// \return a locale that a process can have: "fr_FR", or on Windows the user's own
QString usableLocale();
