// SPDX-License-Identifier: MIT
#include "coagulation/report/numbertext.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace coagulation::report {

namespace {

QString superscript(int number)
{
    const QString digits = "⁰¹²³⁴⁵⁶⁷⁸⁹";
    QString text = number < 0 ? "⁻" : "";
    const QString plain = QString::number(std::abs(number));
    for (const QChar digit : plain)
        text += digits.at(digit.digitValue());
    return text;
}

bool needsPower(double number)
{
    return number != 0.0 && (std::abs(number) >= 1e6 || std::abs(number) < 1e-4);
}

/// \return "1.5×10⁷"; "10⁷" without a mantissa of 1
QString withPower(double number, int digits)
{
    if (number == 0.0)
        return "0";
    const QString text = QString::number(number, 'e', digits - 1);
    const qsizetype e = text.indexOf('e');
    QString mantissa = text.left(e);
    while (mantissa.contains('.') && (mantissa.endsWith('0') || mantissa.endsWith('.')))
        mantissa.chop(1);
    QString power = "10" + superscript(QStringView(text).mid(e + 1).toInt());
    if (mantissa == "1")
        return power;
    return mantissa + "×" + power;
}

} // namespace

QString countText(qint64 count)
{
    return QLocale(QLocale::English).toString(count);
}

QString countText(qint64 count, const QString &one, const QString &many)
{
    return countText(count) + ' ' + (count == 1 ? one : many);
}

QString sizeText(qint64 bytes)
{
    const QLocale english(QLocale::English);
    if (bytes < 1000)
        return countText(bytes, "byte", "bytes");
    return english.formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

QString durationText(qint64 milliseconds)
{
    if (milliseconds < 1000)
        return QString("%1 ms").arg(milliseconds);
    if (milliseconds < 60'000)
        return QString("%1 s").arg(double(milliseconds) / 1000.0, 0, 'f', 1);
    const qint64 seconds = (milliseconds + 500) / 1000;
    if (seconds < 3600)
        return QString("%1 min %2 s").arg(seconds / 60).arg(seconds % 60);
    return QString("%1 h %2 min").arg(countText(seconds / 3600)).arg(seconds % 3600 / 60);
}

QString numberText(double number)
{
    if (!std::isfinite(number))
        return std::isnan(number) ? "not a number" : number > 0.0 ? "infinite" : "-infinite";
    return needsPower(number) ? withPower(number, 8) : QString::number(number, 'g', 8);
}

QString percentText(double percent)
{
    if (percent > 1000.0)
        return "more than 1,000 %";
    if (percent > 0.0 && percent < 0.001)
        return "less than 0.001 %";
    if (percent >= 10.0)
        return QString::number(percent, 'f', 0) + " %";
    return QString::number(percent, 'g', 2) + " %";
}

QString tickLabel(double value, double step)
{
    if (needsPower(value) || needsPower(step)) {
        const double places = value == 0.0 ? 0.0 : std::log10(std::abs(value) / step);
        return withPower(value, std::clamp(int(std::ceil(places)) + 1, 1, 12));
    }
    const int decimals = std::max(0, int(-std::floor(std::log10(step) + 1e-9)));
    return QString::number(value, 'f', decimals);
}

} // namespace coagulation::report
