// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QXmlStreamWriter>

#include <initializer_list>

class QIODevice;

/// HTML that is well-formed XML at the same time, written as it grows.
namespace coagulation::report {

struct Attribute {
    QString name;
    QString value; ///< empty: it is left out
};

class PageWriter {
public:
    using Attributes = std::initializer_list<Attribute>;

    explicit PageWriter(QIODevice &device);

    void beginDocument();

    /// Writes an element that holds a text of our own. It is closed by an end tag whatever it holds, since HTML
    /// takes `<td/>` for a beginning.
    void element(const QString &name, const QString &text, Attributes attributes = {});

    /// Writes an element that never holds anything, such as meta.
    void voidElement(const QString &name, Attributes attributes);

    /// Writes a text of our own.
    void text(const QString &text);

    /// Writes a text of a database, a log or a path: made visible, shortened, and apart from the text around it,
    /// whatever direction its letters have.
    void foreign(const QString &text);

    /// Writes an element that holds nothing but such a text.
    void foreignElement(const QString &name, const QString &text, Attributes attributes = {});

    QXmlStreamWriter &xml() { return writer; }
    bool failed() const { return writer.hasError(); }

private:
    friend class Element;
    void begin(const QString &name, Attributes attributes);
    void end();
    void writeAttributes(Attributes attributes);

    QXmlStreamWriter writer;
};

/// An element whose content is written as long as it lives.
class Element {
public:
    Element(PageWriter &pageWriter, const QString &name, PageWriter::Attributes attributes = {})
        : page(pageWriter)
    {
        page.begin(name, attributes);
    }
    ~Element() { page.end(); }
    Q_DISABLE_COPY_MOVE(Element)

private:
    PageWriter &page;
};

} // namespace coagulation::report
