// SPDX-License-Identifier: MIT
#include "parsedpage.h"

#include "coagulation/report/page.h"

#include <QBuffer>
#include <QXmlStreamReader>

#include <algorithm>

using namespace coagulation::report;

namespace {

bool isOfKind(const ParsedPage::Element &element, const QString &kind)
{
    return kind.isEmpty() || element.attributes.value("class").split(' ').contains(kind);
}

} // namespace

ParsedPage::ParsedPage(const QByteArray &page)
{
    QXmlStreamReader reader(page);
    QList<qsizetype> open;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            Element element{reader.name().toString(), {}, {}};
            for (const QXmlStreamAttribute &attribute : reader.attributes())
                element.attributes[attribute.name().toString()] = attribute.value().toString();
            open << all.size();
            all << element;
        } else if (reader.isCharacters()) {
            for (const qsizetype index : open)
                all[index].text += reader.text();
        } else if (reader.isEndElement()) {
            Element &element = all[open.takeLast()];
            element.text = element.text.simplified();
            element.end = all.size();
        }
    }
    if (reader.hasError())
        qFatal("line %lld: %s", reader.lineNumber(), qUtf8Printable(reader.errorString()));
}

ParsedPage::ParsedPage(const Report &report)
    : ParsedPage(pageOf(report))
{
}

qsizetype ParsedPage::indexOf(const QString &id) const
{
    const auto found = std::find_if(all.begin(), all.end(), [&id](const Element &element) {
        return element.attributes.value("id") == id;
    });
    return found == all.end() ? -1 : found - all.begin();
}

bool ParsedPage::hasId(const QString &id) const
{
    return indexOf(id) >= 0;
}

const ParsedPage::Element &ParsedPage::withId(const QString &id) const
{
    const qsizetype index = indexOf(id);
    if (index < 0)
        qFatal("The page has no %s", qUtf8Printable(id));
    return all.at(index);
}

QList<ParsedPage::Element> ParsedPage::within(const QString &id, const QString &name,
                                              const QString &kind) const
{
    QList<Element> found;
    for (qsizetype i = indexOf(id) + 1; i < withId(id).end; ++i) {
        if (all.at(i).name == name && isOfKind(all.at(i), kind))
            found << all.at(i);
    }
    return found;
}

QStringList ParsedPage::textsWithin(const QString &id, const QString &name,
                                    const QString &kind) const
{
    QStringList texts;
    for (const Element &element : within(id, name, kind))
        texts << element.text;
    return texts;
}

QStringList ParsedPage::rowsWithin(const QString &id) const
{
    QStringList rows;
    QStringList cells;
    for (qsizetype i = indexOf(id) + 1; i < withId(id).end; ++i) {
        const QString &name = all.at(i).name;
        if (name == "tr" && !cells.isEmpty())
            rows << cells.join(" | ");
        if (name == "tr")
            cells.clear();
        else if (name == "td" || name == "th")
            cells << all.at(i).text;
    }
    return rows << cells.join(" | ");
}

QStringList ParsedPage::values(const QString &attribute) const
{
    QStringList found;
    for (const Element &element : all) {
        if (element.attributes.contains(attribute))
            found << element.attributes.value(attribute);
    }
    return found;
}

QByteArray pageOf(const Report &report)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!writePage(buffer, report))
        qFatal("The page could not be written");
    return buffer.data();
}
