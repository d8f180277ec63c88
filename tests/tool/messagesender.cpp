// SPDX-License-Identifier: MIT
/// messagesender LOGFILE [MESSAGE …]: opens the log as the tool does and sends the messages named
/// "debug", "info", "warning", "critical", "fatal" and "unknown" (of no known type), each with the
/// text "<name>: 凝血"; "context" sends a warning with source context, "flush" hands the log over to the
/// system, "close" closes it, "wait" waits for the end of standard input, and "vanish" ends the process
/// without an orderly exit.

#include "coagulation/vardo/consolelog.h"

#include <QCoreApplication>
#include <QDebug>

#include <cstdio>
#include <cstdlib>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#endif

namespace {

/// Straight to the handler, since Qt itself holds back what it does not know.
void sendUnknown(const QByteArray &text)
{
    const QtMessageHandler handler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(handler);
    handler(static_cast<QtMsgType>(7), QMessageLogContext(), QString::fromUtf8(text));
}

[[noreturn]] void vanish()
{
#ifdef Q_OS_WIN
    TerminateProcess(GetCurrentProcess(), 0); // std::_Exit lets the C library write what it holds
#endif
    std::_Exit(0);
}

void send(const QString &name)
{
    const QByteArray text = name.toUtf8() + ": 凝血";
    if (name == "debug")
        qDebug("%s", text.constData());
    else if (name == "info")
        qInfo("%s", text.constData());
    else if (name == "warning")
        qWarning("%s", text.constData());
    else if (name == "critical")
        qCritical("%s", text.constData());
    else if (name == "fatal")
        qFatal("%s", text.constData());
    else if (name == "unknown")
        sendUnknown(text);
    else if (name == "context")
        QMessageLogger("assay.cpp", 12, "void run()").warning("%s", text.constData());
    else if (name == "flush")
        coagulation::flushLog();
    else if (name == "close")
        coagulation::closeLog();
    else if (name == "wait")
        while (std::getchar() != EOF) { }
    else if (name == "vanish")
        vanish();
}

} // namespace

int main(int argc, char *argv[])
{
    coagulation::shieldLogFromEnvironment();
    const QCoreApplication application(argc, argv);

    coagulation::openLog(QCoreApplication::arguments().value(1));
    for (const QString &name : QCoreApplication::arguments().mid(2))
        send(name);
    return 0;
}
