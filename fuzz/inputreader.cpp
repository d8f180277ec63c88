// SPDX-License-Identifier: MIT
#include "inputreader.h"

#include <QStringList>

#include <array>
#include <bit>
#include <limits>

namespace {

using Limits = std::numeric_limits<double>;

constexpr std::array specialNumbers{
    0.0,
    -0.0,
    1.0,
    -1.0,
    1e-300,
    1e300,
    Limits::infinity(),
    -Limits::infinity(),
    Limits::quiet_NaN(),
    Limits::denorm_min(),
    Limits::min(),
    Limits::max(),
    Limits::lowest(),
    Limits::epsilon(),
    1e9,
    1e-9,
};

const QStringList &specialTexts()
{
    static const QStringList texts{
        "",
        "</td><script>",
        "]]>",
        "<!--",
        "&amp;&#0;",
        "\"'`",
        "NULL",
        "X'00ff'",
        "'it''s'",
        "id = 3",
        "update_v12()",
        "profile",
        "reagent",
        "variable",
        "value",
        "currentCurve",
        "version",
        "name",
        "reagentId",
        "t_unmoved2",
        "view",
        "index",
        "result_index",
        "ok",
        QString(2'100, 'w'),
        QString(QChar(0x202e)) + QChar(0x5d0) + QChar(0x301) + QString::fromUcs4(U"\U0001F9EA"),
        QString(QChar(0)) + QChar(0xd83e) + QChar(0xffff) + QChar(0x9b),
    };
    return texts;
}

} // namespace

quint8 InputReader::byte()
{
    return atEnd() ? quint8(0) : quint8(input.at(position++));
}

quint64 InputReader::bytes(int count)
{
    quint64 value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | byte();
    return value;
}

qint32 InputReader::integer()
{
    return flag() ? qint32(bytes(4)) : qint32(byte());
}

double InputReader::number()
{
    switch (below(5)) {
    case 0:
        return byte();
    case 1:
        return double(bytes(2)) / 100.0;
    case 2:
        return -double(byte()) / 16.0;
    case 3:
        return specialNumbers.at(std::size_t(below(int(specialNumbers.size()))));
    default:
        return std::bit_cast<double>(bytes(8));
    }
}

QString InputReader::text()
{
    QString text;
    switch (below(3)) {
    case 0:
        return specialTexts().at(below(int(specialTexts().size())));
    case 1:
        for (int left = below(16); left > 0; --left)
            text += QChar(byte());
        return text;
    default:
        for (int left = below(16); left > 0; --left)
            text += QChar(quint16(bytes(2)));
        return text;
    }
}
