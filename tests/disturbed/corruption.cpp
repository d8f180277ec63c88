// SPDX-License-Identifier: MIT
#include "corruption.h"

#include <QRandomGenerator>
#include <QtEndian>

#include <array>
#include <utility>

// https://www.sqlite.org/fileformat2.html

namespace {

constexpr int headerSize = 100;

/// \return a number from 0 to below the bound
qsizetype below(qsizetype bound, QRandomGenerator &random)
{
    return qsizetype(random.bounded(quint32(bound)));
}

char anyByte(QRandomGenerator &random)
{
    return char(below(256, random));
}

QByteArray garbage(qsizetype size, QRandomGenerator &random)
{
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = anyByte(random);
    return bytes;
}

void flipBit(QByteArray &file, qsizetype offset, QRandomGenerator &random)
{
    if (offset < file.size())
        file[offset] = char(file.at(offset) ^ (1 << below(8, random)));
}

/// \return where some page begins
qsizetype anyPage(const QByteArray &file, int pageSize, QRandomGenerator &random)
{
    return below(file.size() / pageSize, random) * pageSize;
}

/// A page of a table or an index.
struct TreePage {
    qsizetype start = 0;
    qsizetype header = 0; ///< behind the file's own on the first page
    qsizetype cellPointers = 0;
    int cells = 0;
};

int numberAt(const QByteArray &file, qsizetype offset)
{
    return uchar(file.at(offset)) << 8 | uchar(file.at(offset + 1));
}

qsizetype longNumberAt(const QByteArray &file, qsizetype offset)
{
    return qFromBigEndian<quint32>(file.sliced(offset, 4).constData());
}

/// \return some page with cells; freed pages that still look like one are as good
TreePage anyTreePage(const QByteArray &file, int pageSize, QRandomGenerator &random)
{
    for (;;) { // ends, since a sound database has at least its first page
        TreePage page;
        page.start = anyPage(file, pageSize, random);
        page.header = page.start == 0 ? headerSize : page.start;
        const char type = file.at(page.header);
        const bool interior = type == 2 || type == 5;
        page.cellPointers = page.header + (interior ? 12 : 8);
        page.cells = numberAt(file, page.header + 3);
        const bool fits = page.cellPointers + qsizetype(2) * page.cells <= page.start + pageSize;
        if ((interior || type == 10 || type == 13) && page.cells > 0 && fits)
            return page;
    }
}

void flipBits(QByteArray &file, int, QRandomGenerator &random)
{
    for (qsizetype left = 1 + below(8, random); left > 0; --left)
        flipBit(file, below(file.size(), random), random);
}

void zeroPage(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    file.replace(anyPage(file, pageSize, random), pageSize, QByteArray(pageSize, '\0'));
}

void randomPage(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    file.replace(anyPage(file, pageSize, random), pageSize, garbage(pageSize, random));
}

void copyPage(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    const QByteArray page = file.mid(anyPage(file, pageSize, random), pageSize);
    file.replace(anyPage(file, pageSize, random), pageSize, page);
}

void swapPages(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    const qsizetype first = anyPage(file, pageSize, random);
    const qsizetype second = anyPage(file, pageSize, random);
    const QByteArray page = file.mid(first, pageSize);
    file.replace(first, pageSize, file.mid(second, pageSize));
    file.replace(second, pageSize, page);
}

void truncateAtPage(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    file.truncate(anyPage(file, pageSize, random));
}

void truncateAnywhere(QByteArray &file, int, QRandomGenerator &random)
{
    const bool toHeader = below(4, random) == 0;
    file.truncate(below(toHeader ? headerSize + 1 : file.size(), random));
}

void garbleHeader(QByteArray &file, int, QRandomGenerator &random)
{
    static constexpr auto fields = std::to_array<std::pair<int, int>>({
        {0, 16}, {16, 2}, {18, 1}, {19, 1}, {20, 1},  {21, 1}, {22, 1}, {23, 1},
        {24, 4}, {28, 4}, {32, 4}, {36, 4}, {40, 4},  {44, 4}, {48, 4}, {52, 4},
        {56, 4}, {60, 4}, {64, 4}, {68, 4}, {72, 20}, {92, 4}, {96, 4},
    });
    const auto [offset, size] = fields.at(std::size_t(below(qsizetype(fields.size()), random)));
    QByteArray value = garbage(size, random);
    if (below(2, random) == 0) { // a small number, which may be a legal one
        value.fill('\0');
        value.back() = char(below(8, random));
    }
    file.replace(offset, size, value);
}

void garblePageHeader(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    const TreePage page = anyTreePage(file, pageSize, random);
    file[page.header + below(page.cellPointers - page.header, random)] = anyByte(random);
}

void garbleCellPointer(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    const TreePage page = anyTreePage(file, pageSize, random);
    const qsizetype target = below(below(4, random) == 0 ? 0x10000 : pageSize, random);
    const qsizetype pointer = page.cellPointers + 2 * below(page.cells, random);
    file[pointer] = char(target >> 8);
    file[pointer + 1] = char(target);
}

void garbleCell(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    const TreePage page = anyTreePage(file, pageSize, random);
    const int cell = numberAt(file, page.cellPointers + 2 * below(page.cells, random));
    flipBit(file, page.start + cell + below(16, random), random); // sizes, key and types
}

/// \return where the text of some statement of the schema begins
qsizetype anySchemaText(const QByteArray &file, QRandomGenerator &random)
{
    QList<qsizetype> texts;
    const QByteArray lower = file.toLower();
    for (qsizetype at = lower.indexOf("create "); at >= 0; at = lower.indexOf("create ", at + 1))
        texts << at;
    return texts.at(below(texts.size(), random));
}

void flipSchemaText(QByteArray &file, int, QRandomGenerator &random)
{
    const qsizetype text = anySchemaText(file, random);
    if (below(2, random) == 0)
        flipBit(file, text + below(150, random), random);
    else
        file[qMin(text + below(150, random), file.size() - 1)] = anyByte(random);
}

/// Damages the columns before the text: type, name, table and first page.
void flipSchemaColumns(QByteArray &file, int, QRandomGenerator &random)
{
    flipBit(file, anySchemaText(file, random) - 1 - below(40, random), random);
}

/// Gives a table or an index another first page, often that of another one.
void redirectSchemaEntry(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    const qsizetype text = anySchemaText(file, random);
    if (below(2, random) == 0)
        file[text - 1] = file.at(anySchemaText(file, random) - 1);
    else
        file[text - 1] = char(1 + below(qMin<qsizetype>(255, file.size() / pageSize), random));
}

/// Puts any page into the list of free pages, often one that a table uses.
void redirectFreePage(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    const qsizetype list = (longNumberAt(file, 32) - 1) * pageSize;
    const qsizetype pages = list < 0 ? 0 : longNumberAt(file, list + 4);
    const qsizetype place = pages == 0 ? 32 : list + 8 + 4 * below(pages, random);
    QByteArray page(4, '\0');
    qToBigEndian(quint32(1 + below(file.size() / pageSize, random)), page.data());
    file.replace(place, page.size(), page);
}

void garbleLeftover(QByteArray &file, int pageSize, QRandomGenerator &random)
{
    switch (below(5, random)) {
    case 0:
        file.truncate(below(file.size(), random));
        break;
    case 1:
        file.replace(below(file.size(), random) / pageSize * pageSize, pageSize,
                     garbage(pageSize, random));
        break;
    case 2:
        flipBit(file, below(32, random), random); // its header
        break;
    default:
        flipBits(file, pageSize, random);
        break;
    }
}

} // namespace

const QList<Corruption> &corruptionsOfDatabase()
{
    static const QList<Corruption> corruptions{
        {"bit flips", flipBits},
        {"page of zeros", zeroPage},
        {"page of garbage", randomPage},
        {"page overwritten with another", copyPage},
        {"pages swapped", swapPages},
        {"cut at a page's end", truncateAtPage},
        {"cut anywhere", truncateAnywhere},
        {"file header", garbleHeader},
        {"page header", garblePageHeader},
        {"cell pointer", garbleCellPointer},
        {"cell", garbleCell},
        {"schema: text", flipSchemaText},
        {"schema: type, names", flipSchemaColumns},
        {"schema: first page", redirectSchemaEntry},
        {"list of free pages", redirectFreePage},
    };
    return corruptions;
}

const Corruption &corruptionOfLeftover()
{
    static const Corruption corruption{"journal or log", garbleLeftover};
    return corruption;
}
