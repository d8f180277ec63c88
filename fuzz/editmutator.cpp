// SPDX-License-Identifier: MIT
#include "editmutator.h"

#include "editgrammar.h"
#include "editscript.h"

#include "expectedsteps.h"

#include <QMap>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace {

QByteArrayList linesOf(const QByteArray &script)
{
    QByteArrayList lines = script.split('\n');
    lines.removeIf([](const QByteArray &line) { return line.trimmed().isEmpty(); });
    return lines;
}

/// \return as many of the lines as there is room for
QByteArray joined(const QByteArrayList &lines, qsizetype most)
{
    QByteArray script;
    for (const QByteArray &line : lines) {
        if (script.size() + line.size() + 1 <= most)
            script += line + '\n';
    }
    return script;
}

const EditGrammar &grammarOf(const QString &name, int version)
{
    static QMap<int, EditGrammar> grammars;
    auto found = grammars.find(version);
    if (found == grammars.end())
        found = grammars.insert(version, EditGrammar(name, version));
    return *found;
}

/// Puts another word of the same kind in the place of one of a line: a name, a number or a text.
void changeWord(QByteArray &line, const EditGrammar &grammar, Random &random)
{
    static const QRegularExpression word(R"('(?:[^']|'')*'|[A-Za-z_]\w*|\d[\d.]*)");
    const QString text = QString::fromLatin1(line); // a letter for each byte
    QList<std::pair<qsizetype, qsizetype>> words;
    auto match = word.globalMatch(text);
    while (match.hasNext()) {
        const QRegularExpressionMatch found = match.next();
        words << std::pair(found.capturedStart(), found.capturedLength());
    }
    if (words.isEmpty())
        return;
    const auto [start, length] = random.oneOf(words);
    const char first = line.at(start);
    const bool isName = first != '\'' && (first < '0' || first > '9');
    QByteArray other = grammar.value(random);
    if (isName)
        other = grammar.anyName(random);
    else if (first != '\'' && line.startsWith("--")) // what may stand in such a line
        other = QByteArray::number(random.below(5000));
    line.replace(start, length, other);
}

void changeByte(QByteArray &line, Random &random)
{
    if (line.isEmpty())
        return;
    const qsizetype place = random.below(line.size());
    switch (random.below(3)) {
    case 0:
        line.remove(place, 1);
        break;
    case 1:
        line.insert(place, char(random.below(256)));
        break;
    default:
        line[place] = char(line.at(place) ^ (1 << random.below(8)));
        break;
    }
}

void mutate(QByteArrayList &lines, const EditGrammar &grammar, Random &random)
{
    const qsizetype place = random.below(lines.size() + 1);
    if (lines.isEmpty() || place == lines.size() || random.oneIn(3)) {
        lines.insert(place, grammar.line(random));
        return;
    }
    switch (random.below(8)) {
    case 0:
    case 1:
        lines.removeAt(place);
        break;
    case 2:
        lines.move(place, random.below(lines.size()));
        break;
    case 3:
        changeByte(lines[place], random);
        break;
    case 4:
        lines[place] = grammar.line(random);
        break;
    default:
        changeWord(lines[place], grammar, random);
        break;
    }
}

} // namespace

QByteArray mutatedScript(const QString &name, const QByteArray &script, qsizetype most,
                         unsigned int seed)
{
    constexpr qsizetype mostMutations = 4;
    Random random(seed);
    const EditGrammar &grammar =
        grammarOf(name, EditScript::read(script, newestVersionOf(name)).version);
    QByteArrayList lines = linesOf(script);
    for (qsizetype left = 1 + random.below(mostMutations); left > 0; --left)
        mutate(lines, grammar, random);
    return joined(lines, most);
}

QByteArray crossedScripts(const QByteArray &first, const QByteArray &second, qsizetype most,
                          unsigned int seed)
{
    Random random(seed);
    const QByteArrayList beginning = linesOf(first);
    const QByteArrayList end = linesOf(second);
    return joined(beginning.mid(0, random.below(beginning.size() + 1))
                      + end.mid(random.below(end.size() + 1)),
                  most);
}
