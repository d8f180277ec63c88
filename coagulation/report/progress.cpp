// SPDX-License-Identifier: MIT
#include "coagulation/report/progress.h"

#include "coagulation/vardo/consolelog.h"

#include <QLocale>

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <unistd.h>
#endif

namespace coagulation::report {

namespace {

bool standardErrorIsATerminal()
{
#ifdef Q_OS_WIN
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

QString bar(qint64 done, qint64 total)
{
    constexpr int width = 30;
    const qint64 filled = total > 0 ? done * width / total : width;
    return '[' + QString("#").repeated(filled) + QString(" ").repeated(width - filled) + ']';
}

QString size(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

/// \return what a terminal shows in one line, and as it stands: a table's name can hold anything
QString plain(const QString &text)
{
    constexpr int width = 79;
    QString line = text.left(width);
    for (QChar &letter : line) {
        if (!letter.isPrint())
            letter = '?';
    }
    return line;
}

} // namespace

Progress::Style Progress::styleOfStandardError()
{
    return standardErrorIsATerminal() ? Style::Terminal : Style::Lines;
}

Progress::Progress(Style styleToUse)
    : style(styleToUse)
{
}

Progress::~Progress()
{
    endLine();
}

void Progress::beginBytes(const QString &what, qint64 totalBytes)
{
    step(what);
    total = totalBytes;
    done = 0;
    sinceShown.invalidate();
    addBytes(0);
}

void Progress::addBytes(qint64 bytes)
{
    constexpr int pause = 100; // ms between two pictures, which nobody could tell apart
    done = qMin(done + bytes, total);
    if (sinceShown.isValid() && sinceShown.elapsed() < pause && done < total)
        return;
    sinceShown.start();
    show(QString("%1 %2 %3 of %4").arg(stage, bar(done, total), size(done), size(total)));
}

void Progress::step(const QString &what, const QString &part)
{
    if (what != stage) {
        endLine();
        stage = what;
        if (style == Style::Lines)
            printError(stage + " …\n");
    }
    show(part.isEmpty() ? stage : stage + ": " + part);
}

void Progress::endLine()
{
    if (style == Style::Terminal && shown > 0)
        printError("\n");
    shown = 0;
}

void Progress::show(const QString &text)
{
    if (style != Style::Terminal)
        return;
    const QString line = plain(text);
    printError('\r' + line.leftJustified(shown)); // blanks hide what is left of a longer line
    shown = line.size();
}

} // namespace coagulation::report
