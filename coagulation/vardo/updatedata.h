// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/vardo/updatebase.h"

namespace coagulation {

/// Upgrades the data database: patients, their results, curves, details and lookup lists.
class UpdateData : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateData(QObject *parent = nullptr);

public slots:
    bool update_v8();  ///< any older layout: lookup lists, result versions, memo, report times
    bool update_v9();  ///< whole-second times
    bool update_v10(); ///< patient.instrId
    bool update_v11(); ///< soft deletion of results, curves and details
    bool update_v12(); ///< table sampleAssayRequest

private:
    // the parts of update_v8, one for each version up to 8
    [[nodiscard]] bool rebuildLookupLists();
    [[nodiscard]] bool replaceDeleteTrigger();
    [[nodiscard]] bool splitResultsIntoVersions();
    [[nodiscard]] bool tryMove(const Statement &insert, const QString &from, const QString &to,
                               bool isNew);
    [[nodiscard]] bool dropOrKeep(const Statement &drop, const QString &table, bool arrived,
                                  const QStringList &copied);
    void showCheckedResults();
    [[nodiscard]] bool addMemo();
    [[nodiscard]] bool addReportTimes();
    [[nodiscard]] bool addDepartments();
    [[nodiscard]] bool addSampleTimes();
};

} // namespace coagulation
