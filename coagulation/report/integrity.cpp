// SPDX-License-Identifier: MIT
#include "coagulation/report/integrity.h"

#include "coagulation/report/databasepair.h"
#include "coagulation/vardo/connection.h"

#include <QRegularExpression>
#include <QSqlQuery>
#include <QVariant>

namespace coagulation::report {

namespace {

/// As when a table sorts in a way that only another program knows: that is no damage.
const char *const notChecked = "not checked: ";

QString check(const QString &path, const QString &name)
{
    DatabasePair database(name);
    if (QString problem = database.openBefore(path); !problem.isEmpty())
        return problem;
    Questions questions(database.connection());
    QString finding;
    const auto ask = [&](int most) {
        questions.ask(QString("pragma main.integrity_check(%1)").arg(most), {},
                      [&finding](const QSqlQuery &row) {
                          const QString text = row.value(0).toString();
                          if (finding.isEmpty() || !isSound(text))
                              finding = text;
                          return isSound(finding);
                      });
    };
    ask(1);
    if (finding != "ok" && isSound(finding))
        ask(2147483647); // a later one may be damage
    if (questions.failed() && !isEnvironmentError(questions.error()))
        return notChecked + questions.error().databaseText();
    return questions.failed() ? "The file " + questions.predicate() : finding;
}

} // namespace

bool isSound(const QString &finding)
{
    static const QRegularExpression aboutAValue(R"(^(CHECK constraint failed in |\S+ value in ))");
    return finding == "ok" || finding.startsWith(notChecked)
        || aboutAValue.match(finding).hasMatch();
}

IntegrityCheck::IntegrityCheck(const QString &path, const QString &name)
    : thread(QThread::create([this, path, name] { result = check(path, name); }))
{
    thread->start();
}

IntegrityCheck::~IntegrityCheck()
{
    thread->wait();
}

QString IntegrityCheck::finding()
{
    thread->wait();
    return result;
}

} // namespace coagulation::report
