// SPDX-License-Identifier: MIT
#include "messagerecorder.h"

#include "drivertexts.h"

#include <QRegularExpression>

namespace {

QStringList &recorded()
{
    static QStringList messages;
    return messages;
}

void record(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    const char *label = type == QtDebugMsg ? "Debug" : type == QtWarningMsg ? "Warning" : "Other";
    recorded() << QString("%1: %2").arg(label, message);
}

} // namespace

MessageRecorder::MessageRecorder()
    : before(qInstallMessageHandler(record))
{
    recorded().clear();
}

MessageRecorder::~MessageRecorder()
{
    qInstallMessageHandler(before);
}

QStringList MessageRecorder::messages() const
{
    static const QRegularExpression lineNumber(R"(\( \d+ \))");
    QStringList messages = numberedMessages();
    return messages.replaceInStrings(lineNumber, "( line )");
}

QStringList MessageRecorder::numberedMessages() const
{
    QStringList messages = recorded();
    for (QString &message : messages)
        message = withoutDriverTexts(message);
    return messages;
}
