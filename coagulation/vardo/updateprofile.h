// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/vardo/updatebase.h"

#include <QMap>
#include <QMultiMap>
#include <QSet>

namespace coagulation {

class StandardCurve;

/// Upgrades the profile database: settings, users, reagents, assays, calibrations and standard curves.
class UpdateProfile : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateProfile(QObject *parent = nullptr);

public slots:
    bool update_v10(); ///< any older layout: item ranges, current curves, unique reagent ids
    bool update_v11(); ///< axes of a calibration
    bool update_v12(); ///< ratios of the lupus anticoagulant tests
    bool update_v13(); ///< anti-Xa activity
    bool update_v14(); ///< ten further assays
    bool update_v15(); ///< current curves of each instrument
    bool update_v16(); ///< measuring ranges
    bool update_v17(); ///< further programs of PT, mixing studies of APTT
    bool update_v18(); ///< time dependency of the APTT mixing studies
    bool update_v19(); ///< order of the programs of version 17
    bool update_v20(); ///< rivaroxaban
    bool update_v21(); ///< default re-dilutions
    bool update_v22(); ///< label of patient.instrId
    bool update_v23(); ///< expiry of curves
    bool update_v24(); ///< settings of programs by reagent
    bool update_v25(); ///< reagent ids of the lupus anticoagulant tests
    bool update_v26(); ///< dPT, screening and confirm
    bool update_v27(); ///< expression of a dPT ratio
    bool update_v28(); ///< factory setting of the ATIII incubation
    bool update_v29(); ///< reagent ids of anti-Xa
    bool update_v30(); ///< reagents and settings of vWF and plasminogen

private:
    struct RefitQueries;

    // update_v10: its three phases
    [[nodiscard]] bool changeLayouts();
    [[nodiscard]] bool convertValues();
    [[nodiscard]] bool completeAssays();

    // update_v10: in updateprofile_v10_layouts.cpp
    [[nodiscard]] bool addCurveInfo();
    [[nodiscard]] bool addCurrentCurve();
    [[nodiscard]] bool addItemRanges();
    [[nodiscard]] bool rebuildCalibrations();
    [[nodiscard]] bool makeReagentIdsUnique();
    [[nodiscard]] bool renumberReagents(const QMap<qint64, QString> &duplicates,
                                        QSet<QString> taken);
    [[nodiscard]] bool addDisplayNames();

    // update_v10: in updateprofile_v10_conversions.cpp
    void correctItemsAndThresholds();
    [[nodiscard]] bool fillVariables();
    [[nodiscard]] bool moveLimitsToItems();
    [[nodiscard]] bool renameReagents();
    [[nodiscard]] bool renameReagent(const QString &from, const QString &to);

    // update_v10: in updateprofile_v10_curves.cpp
    [[nodiscard]] bool refitStandardCurves();
    [[nodiscard]] bool refitStandardCurve(const QSqlQuery &row, RefitQueries &queries);
    [[nodiscard]] bool storeCurve(const StandardCurve &curve, qint64 id, const QVariantList &rowids,
                                  RefitQueries &queries);

    // update_v10: factory rows, in updateprofile_v10_rows.cpp
    [[nodiscard]] bool writeFirstDefaults();
    void setCalibrationAxes();
    [[nodiscard]] bool addPatientLabels();
    void correctNames();
    void addProteinAndLupusAssays();
    [[nodiscard]] bool addPatientTimeLabels();
    [[nodiscard]] bool writeChineseCodes();
    [[nodiscard]] bool assignReagentIds();
    [[nodiscard]] bool setReportLimits();
    void writeResultChecks();
    void addClottingTimes();
    [[nodiscard]] bool setNormalRanges();
    void addAntiXa();
    [[nodiscard]] bool writeChineseAntiXaCodes();

    /// The keys of the table profile whose value is a reagent's name, by that name.
    QMultiMap<QString, QString> keysByReagent;
};

/// \return a text as it stands between the apostrophes of an SQL literal
QString escaped(QString text);

/// \param language code of a language, for example "zh" or "zh_CN"
bool isChinese(const QString &language);

} // namespace coagulation
