// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/report/facts.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// The elements of a page that is well-formed XML; another one ends the test program.
class ParsedPage {
public:
    struct Element {
        QString name;
        QMap<QString, QString> attributes;
        QString text;      ///< of the element and all within it, with single blanks
        qsizetype end = 0; ///< index of the first element that is not within it
    };

    explicit ParsedPage(const QByteArray &page);
    explicit ParsedPage(const coagulation::report::Report &report);

    const QList<Element> &elements() const { return all; }

    /// \return the element with an identifier; without one it ends the test program
    const Element &withId(const QString &id) const;
    bool hasId(const QString &id) const;

    /// \param id of the element that they stand in
    /// \param name of the elements
    /// \param kind one of their classes; empty for any
    QList<Element> within(const QString &id, const QString &name, const QString &kind = {}) const;
    QStringList textsWithin(const QString &id, const QString &name, const QString &kind = {}) const;

    /// \return the rows of all tables within an element, their cells joined by " | "
    QStringList rowsWithin(const QString &id) const;

    /// \return the values of an attribute in the whole page
    QStringList values(const QString &attribute) const;

private:
    qsizetype indexOf(const QString &id) const;

    QList<Element> all;
};

/// \return the page of a report
QByteArray pageOf(const coagulation::report::Report &report);
