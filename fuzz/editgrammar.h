// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>

#include <random>

/// The random numbers of a fuzzer, which are the same for the same seed.
class Random {
public:
    explicit Random(unsigned int seed)
        : generator(seed)
    {
    }

    /// \return 0 to below the bound, which is above 0
    qsizetype below(qsizetype bound) { return qsizetype(generator()) % bound; }

    bool oneIn(qsizetype bound) { return below(bound) == 0; }

    template <typename Value> Value oneOf(const QList<Value> &values)
    {
        return values.isEmpty() ? Value() : values.at(below(values.size()));
    }

private:
    std::minstd_rand generator;
};

/// Makes lines of an EditScript at random: statements about the tables and columns that a sample has and that an
/// upgrade makes, with values that are in them.
class EditGrammar {
public:
    /// \param name of the database: "profile", "data", "qc" or "syslog"
    /// \param version of the sample, or more
    EditGrammar(const QString &name, int version);

    QByteArray line(Random &random) const;

    /// \return a value as it stands in a statement
    QByteArray value(Random &random) const;

    /// \return the name of a table, a column or another object
    QByteArray anyName(Random &random) const;

private:
    struct Table {
        QByteArray name;
        QByteArrayList columns;
    };

    void collect(const QByteArray &bytes);
    QByteArray tableName(Random &random) const;
    QByteArray newName(Random &random) const;
    QByteArray condition(Random &random) const;

    QByteArray update(Random &random) const;
    QByteArray remove(Random &random) const;
    QByteArray insert(Random &random) const;
    QByteArray drop(Random &random) const;
    QByteArray alter(Random &random) const;
    QByteArray create(Random &random) const;
    QByteArray createTrigger(Random &random) const;
    QByteArray schemaChange(Random &random) const;
    QByteArray setting(Random &random) const;
    QByteArray directive(Random &random) const;

    QString database;
    QList<Table> tables;    ///< views, too
    QByteArrayList objects; ///< with their types: "index curve_index"
    QByteArrayList values;  ///< that the database holds, as literals
};
