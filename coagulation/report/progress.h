// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QString>

namespace coagulation::report {

/// Tells on standard error how far the work is: a bar with bytes, a step, a table. In a terminal one line is
/// written again and again; elsewhere each stage gets a plain line.
class Progress {
public:
    enum class Style { Quiet, Lines, Terminal };

    /// \return Terminal if standard error is one, else Lines
    static Style styleOfStandardError();

    explicit Progress(Style style);
    ~Progress();
    Q_DISABLE_COPY_MOVE(Progress)

    /// Begins a stage whose size is known.
    /// \param what is done, for example "Copying the databases"
    /// \param total bytes
    void beginBytes(const QString &what, qint64 total);
    void addBytes(qint64 bytes);

    /// Begins a stage, or goes on to the next part of one.
    /// \param what is done, for example "Upgrading"
    /// \param part for example "update_v12()"; shown in a terminal only
    void step(const QString &what, const QString &part = {});

    /// Ends the line of a terminal, so that others can write.
    void endLine();

private:
    void show(const QString &text);

    Style style;
    QString stage{};
    qint64 total = 0;
    qint64 done = 0;
    qsizetype shown = 0; ///< letters of the line in the terminal
    QElapsedTimer sinceShown{};
};

} // namespace coagulation::report
