// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

/// Takes every Qt message of its lifetime out of the test's output and keeps it as "Warning: text".
/// One at a time.
class MessageRecorder {
public:
    MessageRecorder();
    ~MessageRecorder();
    Q_DISABLE_COPY_MOVE(MessageRecorder)

    /// \return the messages so far, oldest first, with every "( 123 )" written as "( line )"
    QStringList messages() const;

    /// \return the messages so far, as they came
    QStringList rawMessages() const;

private:
    QtMessageHandler before;
};
