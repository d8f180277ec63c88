// SPDX-License-Identifier: MIT
#include "coagulation/report/wording.h"

#include <QLocale>

namespace coagulation::report {

QString counted(qint64 number)
{
    return QLocale::c().toString(number);
}

QString countedRows(qint64 number)
{
    return number == 1 ? QString("1 row") : counted(number) + " rows";
}

QString spokenDuration(qint64 milliseconds)
{
    if (milliseconds < 1000)
        return "less than a second";
    const qint64 seconds = (milliseconds + 500) / 1000;
    if (seconds < 120)
        return seconds == 1 ? QString("1 second") : QString("%1 seconds").arg(seconds);
    return QString("%1 minutes").arg((seconds + 30) / 60);
}

QString withoutKind(const QString &line)
{
    const QString kind = "Warning: ";
    return line.startsWith(kind) ? line.mid(kind.size()) : line;
}

QString asClause(QString sentence)
{
    if (!sentence.isEmpty())
        sentence[0] = sentence.at(0).toLower();
    return sentence;
}

} // namespace coagulation::report
