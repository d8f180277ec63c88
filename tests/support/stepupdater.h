// SPDX-License-Identifier: MIT
#pragma once

#include "coagulation/vardo/updatebase.h"

/// An updater with one step, whose body the test gives and which may use every operation.
class StepUpdater : public coagulation::UpdateBase {
    Q_OBJECT

public:
    StepUpdater(const QString &path, std::function<bool(StepUpdater &)> stepBody)
        : UpdateBase(path)
        , body(std::move(stepBody))
    {
    }

    using UpdateBase::columnsOf;
    using UpdateBase::copyTable;
    using UpdateBase::countRows;
    using UpdateBase::exec;
    using UpdateBase::execAll;
    using UpdateBase::keepUnmoved;
    using UpdateBase::logSqlError;
    using UpdateBase::logUnlessContentError;
    using UpdateBase::readRows;
    using UpdateBase::rebuildTable;
    using UpdateBase::removeDecimals;
    using UpdateBase::renameTable;
    using UpdateBase::reportLeftValues;
    using UpdateBase::setVersion;
    using UpdateBase::tryAll;
    using UpdateBase::updateOrInsert;
    using UpdateBase::version;

public slots:
    bool update_v1() { return body(*this); }

private:
    std::function<bool(StepUpdater &)> body;
};
