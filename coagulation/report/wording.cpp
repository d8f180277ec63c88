// SPDX-License-Identifier: MIT
#include "coagulation/report/wording.h"

#include "coagulation/report/numbertext.h"

namespace coagulation::report {

QString timeInWords(qint64 milliseconds)
{
    if (milliseconds < 1000)
        return "less than a second";
    const qint64 seconds = (milliseconds + 500) / 1000;
    if (seconds < 120)
        return countText(seconds, "second", "seconds");
    return countText((seconds + 30) / 60, "minute", "minutes");
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
