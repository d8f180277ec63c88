// SPDX-License-Identifier: MIT
#include "coagulation/report/literals.h"

#include "coagulation/report/numbertext.h"

#include <QLocale>
#include <QSqlQuery>
#include <QStringDecoder>
#include <QVariant>

#include <algorithm>
#include <cmath>

namespace coagulation::report {

namespace {

QString ending(qint64 size, const QString &unit)
{
    return QString("… (%1 %2)").arg(countText(size), unit);
}

/// \return the first characters of a text, none of them cut in half
QString beginning(const QString &text)
{
    qsizetype end = 0;
    for (int count = 0; count < shownCharacters && end < text.size(); ++count)
        end += text.at(end).isHighSurrogate() && end + 1 < text.size() ? 2 : 1;
    return text.left(end);
}

QString realLiteral(double number)
{
    if (std::isinf(number)) // as the sqlite3 shell writes it
        return number > 0 ? "9.0e+999" : "-9.0e+999";
    constexpr double mostPlainDigits = 1e15;
    if (std::trunc(number) == number && std::abs(number) < mostPlainDigits)
        return QString::number(number, 'f', 1);
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

QString blobLiteral(const QByteArray &bytes, qint64 size)
{
    const QString literal = "X'" + QString::fromLatin1(bytes.left(shownBytes).toHex()) + '\'';
    return size > shownBytes ? literal + ending(size, "bytes") : literal;
}

} // namespace

QString literalTerms(const QString &value)
{
    // A text comes as bytes, since functions for texts stop at a zero, and the driver would decode all of it
    // at a time. Four bytes are enough for a character. A text with a zero has its size in bytes, below zero.
    return QString(
               "typeof(%1), case typeof(%1) when 'text' then substr(cast(%1 as blob), 1, %2)"
               " when 'blob' then substr(%1, 1, %3) else %1 end, case typeof(%1)"
               " when 'text' then iif(instr(%1, char(0)) > 0, -length(cast(%1 as blob)), length(%1))"
               " when 'blob' then length(%1) end")
        .arg(value, QString::number(4 * (shownCharacters + 1)), QString::number(shownBytes));
}

QString Literals::read(const QSqlQuery &row, int column) const
{
    const QString type = row.value(column).toString();
    const QVariant value = row.value(column + 1);
    const qint64 size = row.value(column + 2).toLongLong();
    if (type == "text")
        return textLiteral(value.toByteArray(), size);
    if (type == "blob")
        return blobLiteral(value.toByteArray(), size);
    if (type == "real")
        return realLiteral(value.toDouble());
    return type == "integer" ? QString::number(value.toLongLong()) : "NULL";
}

QString Literals::textLiteral(const QByteArray &bytes, qint64 size) const
{
    QStringDecoder decode(encoding, QStringConverter::Flag::ConvertInitialBom);
    const QString text = decode(bytes);
    const QString shown = beginning(text);
    QString literal = '\'' + QString(shown).replace('\'', "''") + '\'';
    const bool complete = shown.size() == text.size() && std::abs(size) <= bytes.size();
    if (complete)
        return literal;
    return literal + (size < 0 ? ending(-size, "bytes") : ending(size, "characters"));
}

} // namespace coagulation::report
