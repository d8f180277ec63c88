// SPDX-License-Identifier: MIT
#include "profileupgrade.h"

#include <QCoreApplication>
#include <QSqlDatabase>

using coagulation::UpdateProfile;

bool runProfileStep(const TestDatabase &database, ProfileStep step)
{
    coagulation::fileNameAffixes() = {database.folderPath() + '/', ""};
    UpdateProfile updater;
    QSqlDatabase connection = QSqlDatabase::database();
    if (!connection.transaction())
        qFatal("no transaction");
    const bool passed = (updater.*step)();
    if (passed ? !connection.commit() : !connection.rollback())
        qFatal("the transaction did not end");
    return passed;
}

Translation::Translation(QByteArray translatedContext, QMap<QString, QString> textsBySource)
    : context(std::move(translatedContext))
    , texts(std::move(textsBySource))
{
    QCoreApplication::installTranslator(this);
}

Translation::~Translation()
{
    QCoreApplication::removeTranslator(this);
}

QString Translation::translate(const char *translatedContext, const char *sourceText,
                               const char * /*disambiguation*/, int /*n*/) const
{
    return context == translatedContext ? texts.value(sourceText) : QString();
}
