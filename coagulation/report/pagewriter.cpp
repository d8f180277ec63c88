// SPDX-License-Identifier: MIT
#include "coagulation/report/pagewriter.h"

#include "coagulation/report/visibletext.h"

#include <QSet>

namespace coagulation::report {

PageWriter::PageWriter(QIODevice &device)
    : writer(&device)
{
}

void PageWriter::beginDocument()
{
    writer.writeDTD("<!DOCTYPE html>");
}

namespace {

/// \return whether white space before an element changes nothing
bool startsLine(const QString &name)
{
    static const QSet<QString> inLine{"a", "bdi", "code", "span", "strong", "svg"};
    return !inLine.contains(name);
}

} // namespace

void PageWriter::begin(const QString &name, Attributes attributes)
{
    if (startsLine(name))
        writer.writeCharacters("\n");
    writer.writeStartElement(name);
    writeAttributes(attributes);
    writer.writeCharacters({});
}

void PageWriter::end()
{
    writer.writeEndElement();
}

void PageWriter::element(const QString &name, const QString &text, Attributes attributes)
{
    begin(name, attributes);
    writer.writeCharacters(text);
    end();
}

void PageWriter::voidElement(const QString &name, Attributes attributes)
{
    writer.writeCharacters("\n");
    writer.writeEmptyElement(name);
    writeAttributes(attributes);
}

void PageWriter::writeAttributes(Attributes attributes)
{
    for (const Attribute &attribute : attributes) {
        if (!attribute.value.isEmpty())
            writer.writeAttribute(attribute.name, attribute.value);
    }
}

void PageWriter::text(const QString &text)
{
    writer.writeCharacters(text);
}

void PageWriter::foreign(const QString &text)
{
    // SQLite allows names of no length.
    element("bdi", text.isEmpty() ? "(empty)" : visibleText(text));
}

void PageWriter::foreignElement(const QString &name, const QString &text, Attributes attributes)
{
    begin(name, attributes);
    foreign(text);
    end();
}

} // namespace coagulation::report
