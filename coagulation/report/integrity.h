// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QThread>

#include <memory>

namespace coagulation::report {

/// SQLite's own check of a file. It reads all of it, which takes about as long as the comparison:
/// so it runs beside it, on a connection of its own.
class IntegrityCheck {
public:
    /// Starts it.
    /// \param path of the database
    /// \param name of the check, which no other one has at that time
    IntegrityCheck(const QString &path, const QString &name);
    ~IntegrityCheck();
    Q_DISABLE_COPY_MOVE(IntegrityCheck)

    /// Waits for the end. A finding that is damage goes before one about a value.
    /// \return "ok", or a finding, or why there is none
    QString finding();

private:
    QString result{};
    std::unique_ptr<QThread> thread;
};

/// \return whether a finding is none, or is about a value which breaks a constraint or is not of its column's
///         type: older software wrote such values, and the file itself is sound
bool isSound(const QString &finding);

} // namespace coagulation::report
