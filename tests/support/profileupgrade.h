// SPDX-License-Identifier: MIT
#pragma once

#include "testdatabase.h"

#include "coagulation/vardo/updateprofile.h"

#include <QMap>
#include <QTranslator>

using ProfileStep = bool (coagulation::UpdateProfile::*)();

/// Runs one step alone on a database whose file is named "profile.db", in a transaction of its own. The
/// step reads the version in the file as the stored version; it is not changed.
/// \return whether the step passed; if not, the file is as it was
bool runProfileStep(const TestDatabase &database, ProfileStep step);

/// A translation of the texts of one context, installed as long as it lives.
class Translation : public QTranslator {
    Q_OBJECT

public:
    /// \param translatedContext for example "coagulation::UpdateProfile"
    Translation(QByteArray translatedContext, QMap<QString, QString> textsBySource);
    ~Translation() override;
    Q_DISABLE_COPY_MOVE(Translation)

    QString translate(const char *context, const char *sourceText, const char *disambiguation,
                      int n) const override;
    bool isEmpty() const override { return false; }

private:
    QByteArray context;
    QMap<QString, QString> texts;
};
