// SPDX-License-Identifier: MIT
#include "platform.h"

#include <QLocale>
#include <QRegularExpression>

#ifdef Q_OS_WIN
#include <qt_windows.h>

QByteArray lineEnd()
{
    return "\r\n";
}

bool appendsInOneStep()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr;
}

bool canBeFileName(const QString &name)
{
    static const QRegularExpression impossible(R"([<>:"/\\|?*]|[ .]$)");
    return !impossible.match(name).hasMatch();
}

bool canHaveLocale(const QString &locale)
{
    return locale.section('.', 0, 0) == usableLocale();
}

QString usableLocale()
{
    return QLocale::system().uiLanguages().value(0).replace('-', '_');
}

#else

QByteArray lineEnd()
{
    return "\n";
}

bool appendsInOneStep()
{
    return true;
}

bool canBeFileName(const QString & /*name*/)
{
    return true;
}

bool canHaveLocale(const QString & /*locale*/)
{
    return true;
}

QString usableLocale()
{
    return "fr_FR";
}

#endif

QByteArray withPlainLineEnds(QByteArray text)
{
    return text.replace(lineEnd(), "\n");
}
