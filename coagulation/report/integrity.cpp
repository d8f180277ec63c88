// SPDX-License-Identifier: MIT
#include "coagulation/report/integrity.h"

#include "coagulation/report/databasepair.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QVariant>

namespace coagulation::report {

bool isSound(const QString &finding)
{
    static const QRegularExpression aboutAValue(R"(^(CHECK constraint failed in |\S+ value in ))");
    return finding == "ok" || aboutAValue.match(finding).hasMatch();
}

QString integrityOf(const QSqlDatabase &connection, const QString &schema)
{
    Questions questions(connection);
    QString finding;
    const auto check = [&](int most) {
        questions.ask(
            QString(R"(pragma "%1".integrity_check(%2))").arg(schema, QString::number(most)), {},
            [&finding](const QSqlQuery &row) {
                const QString text = row.value(0).toString();
                if (finding.isEmpty() || !isSound(text))
                    finding = text;
                return isSound(finding);
            });
    };
    check(1);
    if (finding != "ok" && isSound(finding))
        check(2147483647); // a later one may be damage
    return questions.failed() ? "The file " + questions.predicate() : finding;
}

} // namespace coagulation::report
