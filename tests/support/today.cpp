// SPDX-License-Identifier: MIT
#include "today.h"

#include <QDate>

namespace {

const QDate firstDay = QDate::currentDate(); // of the test program

void replaceDay(QStringList &rows, const QDate &day, const QString &name)
{
    const QString text = day.toString(Qt::ISODate);
    rows.replaceInStrings(text, name).replaceInStrings(text.toLatin1().toHex().toUpper(), name);
}

} // namespace

QStringList withToday(QStringList rows)
{
    const QDate lastDay = QDate::currentDate();
    for (QDate day = firstDay; day <= lastDay; day = day.addDays(1)) {
        replaceDay(rows, day, "today");
        replaceDay(rows, day.addYears(20), "in 20 years");
    }
    return rows;
}
