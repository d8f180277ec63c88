#pragma once

#include "coagulation/vardo/updatebase.h"

#include <QMap>
#include <QMultiMap>
#include <QSet>

namespace coagulation {

/// Upgrades the profile database: settings, users, reagents, assays, calibrations and standard curves.
class UpdateProfile : public UpdateBase {
    Q_OBJECT

public:
    explicit UpdateProfile(QObject *parent = nullptr);

public slots:
    bool update_v10(); ///< any older layout: item ranges, current curves, unique reagent ids

private:
    struct RefitQueries;

    // update_v10: its sections, layouts and conversions
    [[nodiscard]] bool bringToVersion10();
    [[nodiscard]] bool addCurveInfo();
    [[nodiscard]] bool addCurrentCurve();
    [[nodiscard]] bool addItemRanges();
    [[nodiscard]] bool rebuildCalibrations();
    [[nodiscard]] bool makeReagentIdsUnique();
    [[nodiscard]] bool renumberReagents(const QMap<qint64, QString> &duplicates,
                                        QSet<QString> taken);
    void correctItems();
    [[nodiscard]] bool fillVariables();
    [[nodiscard]] bool refitStandardCurves();
    [[nodiscard]] bool refitStandardCurve(const QSqlQuery &row, RefitQueries &queries);
    [[nodiscard]] bool moveLimitsToItems();
    [[nodiscard]] bool addDisplayNames();
    [[nodiscard]] bool renameReagents();
    [[nodiscard]] bool renameReagent(const QString &from, const QString &to);

    // update_v10: factory rows, in updateprofile_v10.cpp
    [[nodiscard]] bool writeFirstDefaults();
    void setCalibrationAxes();
    [[nodiscard]] bool addPatientLabels();
    void correctNames();
    void addProteinAndLupusAssays();
    [[nodiscard]] bool addPatientTimeLabels();
    [[nodiscard]] bool writeChineseCodes();
    [[nodiscard]] bool assignReagentIds();
    [[nodiscard]] bool setReportLimits();
    void checkResults();
    void addClottingTimes();
    [[nodiscard]] bool setNormalRanges();
    void addAntiXa();
    [[nodiscard]] bool writeChineseAntiXaCodes();

    /// The keys of the table profile whose value is a reagent's name, by that name.
    QMultiMap<QString, QString> keysByReagent;
};

/// \return a text as it stands between the apostrophes of an SQL literal
QString escaped(QString text);

} // namespace coagulation
