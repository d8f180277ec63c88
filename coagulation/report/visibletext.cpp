// SPDX-License-Identifier: MIT
#include "coagulation/report/visibletext.h"

#include "coagulation/report/numbertext.h"

#include <QList>

namespace coagulation::report {

namespace {

/// \param letter one code point, perhaps half of a surrogate pair
char32_t visibleLetter(char32_t letter)
{
    constexpr char32_t pictures =
        0x2400; // "␀", of the control character 0, and those of the next ones
    if (letter < 0x20)
        return pictures + letter;
    if (letter == 0x7f)
        return 0x2421; // "␡"
    const bool isControl = letter >= 0x80 && letter < 0xa0;
    // In a sentence or beside a number these would turn round what is not theirs.
    const bool turnsText =
        (letter >= 0x202a && letter <= 0x202e) || (letter >= 0x2066 && letter <= 0x2069);
    if (isControl || turnsText || QChar::isSurrogate(letter) || QChar::isNonCharacter(letter))
        return QChar::ReplacementCharacter;
    return letter;
}

/// \return the beginning of a text, which ends between two letters
QString beginningOf(const QString &text, qsizetype length)
{
    const bool cutsPair = text.at(length - 1).isHighSurrogate() && text.at(length).isLowSurrogate();
    return text.left(cutsPair ? length - 1 : length);
}

} // namespace

QString visibleText(const QString &text)
{
    const bool isShortened = text.size() > mostLetters;
    const QList<uint> letters = (isShortened ? beginningOf(text, mostLetters) : text).toUcs4();
    QString visible;
    visible.reserve(letters.size());
    for (const uint letter : letters)
        visible += QChar::fromUcs4(visibleLetter(letter));
    if (isShortened)
        visible += QString(" … (%1 letters)").arg(countText(text.size()));
    return visible;
}

} // namespace coagulation::report
