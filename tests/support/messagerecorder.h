// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Takes every Qt message of its lifetime out of the test's output and keeps it as "Warning: text", without
/// the words that Qt's driver adds to an error of SQLite's (see withoutDriverTexts()). One at a time.
class MessageRecorder {
public:
    MessageRecorder();
    ~MessageRecorder();
    Q_DISABLE_COPY_MOVE(MessageRecorder)

    /// \return the messages so far, oldest first, with every "( 123 )" written as "( line )"
    QStringList messages() const;

    /// \return the messages so far with their line numbers
    QStringList numberedMessages() const;

private:
    QtMessageHandler before;
};
