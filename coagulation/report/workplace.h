// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QTemporaryDir>

#include <optional>

namespace coagulation::report {

/// The folder that copies go to, which only the user may enter. It is removed at the end, unless the user has
/// named it.
class Workplace {
public:
    /// \param keep path of the folder that stays: new or empty; empty for a temporary one
    explicit Workplace(const QString &keep);

    QString path() const { return folder; }
    QString problem() const { return text; } ///< a sentence, if there is no such folder; else empty

private:
    void makeTemporary();
    void makeKept(const QString &keep);

    std::optional<QTemporaryDir> temporary{};
    QString folder{};
    QString text{};
};

} // namespace coagulation::report
