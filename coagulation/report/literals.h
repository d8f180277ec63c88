// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringConverter>

class QSqlQuery;

/// Values of a database as literals of SQL. A long value is shortened before it leaves SQLite.
namespace coagulation::report {

/// How many characters of a text and bytes of a blob are shown.
constexpr int shownCharacters = 200;
constexpr int shownBytes = 32;

/// \param value an expression
/// \return the terms of a select list that Literals::read() takes
QString literalTerms(const QString &value);

/// How many terms those are.
constexpr int literalTermCount = 3;

class Literals {
public:
    /// \param encoding of the database's texts
    explicit Literals(QStringConverter::Encoding textEncoding)
        : encoding(textEncoding)
    {
    }

    /// \param column of the row's first term
    QString read(const QSqlQuery &row, int column) const;

private:
    QString textLiteral(const QByteArray &bytes, qint64 size) const;

    QStringConverter::Encoding encoding;
};

} // namespace coagulation::report
